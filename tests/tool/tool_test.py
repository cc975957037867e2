"""Drives camera-effects from outside: tool_test.py TOOL ENGINE"""
import contextlib
import fcntl
import hashlib
import html
import json
import os
import pty
import random
import re
import signal
import struct
import subprocess
import termios
import time
import unittest
import zlib
from pathlib import Path

from tool_case import ENGINE, TOOL, ToolCase


def segments(jpeg):
    """Marker and content of each segment before the image data."""
    at, found = 2, []
    while (marker := jpeg[at + 1]) != 0xda:
        length = struct.unpack_from(">H", jpeg, at + 2)[0]
        found.append((marker, jpeg[at + 4:at + 2 + length]))
        at += 2 + length
    return found


def jpeg_size(path):
    return struct.unpack_from(">HH", dict(segments(Path(path).read_bytes()))[0xc0], 1)[::-1]


def tag(number, kind, value, count=1):
    return struct.pack("<HHII", number, kind, count, value)


def with_segments(jpeg, *contents):
    return jpeg[:2] + b"".join(struct.pack(">BBH", 0xff, marker, len(content) + 2) + content
                               for marker, content in contents) + jpeg[2:]


def exif(orientation, thumbnail=b"\xff\xd8\xff\xd9"):
    """Two directories and one below the first, at 8, 68 and 98."""
    return b"Exif\0\0II*\0" + struct.pack("<I", 8) + b"".join((
        struct.pack("<H", 4), tag(0x10f, 2, 0x0065636d, 4), tag(0x112, 3, orientation), tag(0x100, 4, 640),
        tag(0x8769, 4, 62), struct.pack("<I", 92), struct.pack("<H", 2), tag(0xa002, 4, 640), tag(0xa003, 4, 480),
        bytes(4), struct.pack("<H", 3), tag(0x103, 3, 6), tag(0x201, 4, 134), tag(0x202, 4, len(thumbnail)),
        bytes(4), thumbnail))


def png(width, height):
    """A black picture, 8 bits grey."""
    chunks = ((b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)),
              (b"IDAT", zlib.compress(bytes((width + 1) * height))), (b"IEND", b""))
    return b"\x89PNG\r\n\x1a\n" + b"".join(
        struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data)) for kind, data in chunks)


class ToolTest(ToolCase):
    def setUp(self):
        super().setUp()
        self.photo = self.draw("photo.jpg", 64, 48)

    def draw(self, name, width, height):
        Path("raw").write_bytes(random.Random(1).randbytes(width * height * 3 // 2))
        self.run_tool("convert", f"--size={width}x{height}", "--from=nv21", "--to=jpg", "raw", name)
        return Path(name).read_bytes()

    def made(self, *args, **options):
        self.run_tool(*args, "made.jpg", **options)
        return Path("made.jpg").read_bytes()

    def flat(self, name, red, green, blue):
        Path("argb").write_bytes(bytes((blue, green, red, 255)) * 256)
        self.run_tool("convert", "--size=16x16", "--from=argb", "--to=jpg", "--quality=100", "argb", name)
        return Path(name).read_bytes()

    def test_list_and_the_classic_effects_by_either_name(self):
        pipeline, own = ([re.split("  +", row, 4) for row in table.splitlines()[1:]]
                         for table in self.run_tool("list").split("\n\n"))
        self.assertEqual([int(row[1]) for row in pipeline], list(range(len(pipeline))))
        self.run_tool("resize", "--size=63x47", "photo.jpg", "odd.jpg")
        results = {row[0]: self.made("apply", row[0], "odd.jpg") for row in own}
        self.assertEqual(jpeg_size("made.jpg"), (63, 47))
        self.assertEqual(len(set(results.values())), len(results) - 1)  # blur is miniature on words
        self.assertNotIn(self.made("blend", "odd.jpg", "odd.jpg"), results.values())  # the photo unchanged
        self.assertEqual([row[0] for row in pipeline if row[3] == "nothing"], ["rotate_effect"])
        for name, effect in ((row[0], row[3]) for row in pipeline if row[3] in results):
            self.assertEqual(self.made("apply", name, "odd.jpg"), results[effect], name)

    def test_known_colours(self):
        red, blue = (197, 59, 121), (56, 99, 201)  # a JPEG keeps both, to the bit
        self.flat("red.jpg", *red)
        self.flat("blue.jpg", *blue)
        self.assertEqual(self.run_tool("convert", "--from=jpg", "--to=argb", "red.jpg", "made"), "16x16\n")
        self.assertEqual(Path("made").read_bytes(), bytes((121, 59, 197, 255)) * 256)
        for command, result in (
                ("apply negative red.jpg", (58, 196, 134)), ("apply gray-scale red.jpg", (107, 107, 107)),
                ("apply emboss red.jpg", (128, 128, 128)),  # above the relief, too
                ("blend red.jpg blue.jpg --weight=256", red), ("blend red.jpg blue.jpg --weight=64", (91, 89, 181)),
                ("blend red.jpg blue.jpg --mode=lighten", (197, 99, 201)),
                ("blend red.jpg blue.jpg --mode=darken", (56, 59, 121))):
            self.assertEqual(self.made(*command.split(), "--quality=100"), self.flat("expected.jpg", *result), command)

    def test_effect_options(self):
        folder = f"{os.path.dirname(TOOL)}/share/libalgorithm/device/data/data/com.android.camera/effect"
        wide, tall, square = (f"{folder}/{name}.png" for name in ("sucai0_r", "sucai0", "sucai3"))
        for effect, *options in (("fill-light", "--radius=0.4"), ("miniature-rows", "--offset=30", "--ramp=200"),
                                 ("miniature-rows", "--offset=30"), ("new-sketch", "--paper", wide),
                                 ("color-paint", "--picture", wide), ("PrettyJapan", "--overlay", wide),
                                 ("area", "--front", square, "--mask", tall)):
            changed = self.made("apply", effect, "photo.jpg", *options)
            self.assertNotEqual(changed, self.made("apply", effect, "photo.jpg"), options)
        self.made("apply", "area", "photo.jpg", "--front", tall, "--mask", square, code=1, says="720x720.*720x960")
        Path("low.png").write_bytes(png(3, 3))
        self.made("apply", "PrettyPink", "photo.jpg", "--overlay=low.png")
        self.made("apply", "PrettyPink", "photo.jpg", "--overlay=low.png", "--as-frame", code=1, says="overlay has 3 rows.* 4")
        for effect, picture in (("area", "front.png"), ("PrettyJapan", "sucai3.png")):
            self.run_tool("apply", effect, "photo.jpg", "made.jpg", "none", code=1,
                          says=f"{effect}: .*{picture}", ALGORITHM_DEVICE_ROOT="/none")
            self.assertEqual(len(self.said), 2)
        self.assertFalse(Path("none").exists() or list(Path(".").glob(".*")))

    def test_beauty_with_a_stand_in_for_the_engine(self):
        self.flat("grey.jpg", 100, 100, 100)
        for options in ("--smooth=20 --toning=1 --slimming=0 --engine", "--smooth=0 --toning=0 --slimming=0"):
            made = self.made("beauty", "grey.jpg", *options.split(), *[ENGINE] * options.endswith("engine"),
                             "--quality=100", says="" if options.endswith("engine") else "stays as it is")
            level = 122 if options.endswith("engine") else 98  # luma 85 of 100, and 20 more
            self.assertEqual(made, self.flat("expected.jpg", level, level, level))
        os.makedirs("root/system/lib64")
        os.symlink(ENGINE, "root/system/lib64/libSFB.so")
        before = sorted(Path(".").rglob("*"))
        for command, says in (("raw --engine=raw", "raw: not a JPEG"), ("photo.jpg --engine=no", "no: No such file"),
                              ("photo.jpg --engine=raw", "raw: not usable .*: "), ("photo.jpg", "libSFB.so: .*--engine"),
                              ("photo.jpg --toning=99 --engine=root/system/lib64/libSFB.so", "photo.jpg: .*code -7")):
            self.run_tool("beauty", *command.split(), "none.jpg", code=3 if says.endswith("JPEG") else 1, says=says)
        self.assertEqual(sorted(Path(".").rglob("*")), before)
        self.made("beauty", "photo.jpg", ALGORITHM_DEVICE_ROOT="root")

    def test_raw_frames_take_the_format_and_the_turn_asked_for(self):
        def check(command, content, expected):
            Path("in").write_bytes(bytes(content))
            self.run_tool(*command.split(), "in", "out")
            self.assertEqual(Path("out").read_bytes(), bytes(expected), command)

        red, decoded = [0, 0, 255, 0] * 4, [0, 0, 252, 255] * 4
        nv12, nv21 = [81] * 4 + [90, 239], [81] * 4 + [239, 90]
        for source, to, content, expected in (
                ("argb", "nv12", red, nv12), ("argb", "nv21", red, nv21), ("nv12", "argb", nv12, decoded),
                ("nv21", "argb", nv21, decoded), ("nv12", "nv21", nv12, nv21), ("argb", "argb", red, red)):
            check(f"convert --size=2x2 --from={source} --to={to}", content, expected)
        frame = [1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 20, 21]  # 4 x 2 luma, then two chroma pairs
        for degrees, luma, chroma in ((90, [4, 8, 3, 7, 2, 6, 1, 5], [20, 21, 10, 11]),
                                      (180, [8, 7, 6, 5, 4, 3, 2, 1], [20, 21, 10, 11]),
                                      (270, [5, 1, 6, 2, 7, 3, 8, 4], [10, 11, 20, 21])):
            check(f"rotate --size=4x2 --format=nv21 {degrees}", frame, luma + chroma)

    def test_apply_to_one_photo(self):
        self.run_tool("apply", "rotate_effect", "photo.jpg", "same.jpg", says="passes through")
        self.run_tool("apply", "PrettyBlue", "photo.jpg", "photo.jpg", "--quality=10")  # over its input
        self.assertLess(os.stat("photo.jpg").st_size, os.stat("same.jpg").st_size / 2)
        self.run_tool("apply", "PrettyJapan", "same.jpg", "a.jpg", "--recursive")  # finds the pictures beside the tool
        at = self.photo.index(b"\xff\xc0") + 5
        Path("odd.jpg").write_bytes(self.photo[:at] + struct.pack(">HH", 47, 63) + self.photo[at + 4:])
        self.run_tool("apply", "PrettyBlue", "odd.jpg", "b.jpg")
        self.run_tool("apply", "PrettyBlue", "odd.jpg", "even.jpg", "--as-frame", says="cropped from 63x47 to 62x46")
        self.assertEqual([jpeg_size(name) for name in ("a.jpg", "b.jpg", "even.jpg")], [(64, 48), (63, 47), (62, 46)])

    def test_photos_are_turned_upright(self):
        def draw(name, levels):
            pixels = bytes(v for row in levels for _ in range(16) for level in row for v in [level] * 64)
            Path("argb").write_bytes(pixels)
            size = f"--size={16 * len(levels[0])}x{16 * len(levels)}"
            self.run_tool("convert", size, "--from=argb", "--to=jpg", "--quality=100", "argb", name)
            return Path(name).read_bytes()

        levels = [[10, 50, 90], [130, 170, 210]]
        photo = draw("turned.jpg", levels)
        right, left = list(zip(*levels[::-1])), list(zip(*levels))[::-1]
        for orientation, expected in ((1, levels), (2, [row[::-1] for row in levels]), (4, levels[::-1]),
                                      (3, [row[::-1] for row in levels[::-1]]), (5, [row[::-1] for row in right]),
                                      (6, right), (7, [row[::-1] for row in left]), (8, left), (9, levels)):
            Path("turned.jpg").write_bytes(with_segments(photo, (0xe1, exif(orientation))))
            made = self.made("blend", "--mode=lighten", "--quality=100", "turned.jpg", "turned.jpg")
            upright = draw("expected.jpg", expected)
            self.assertEqual(made[made.index(b"\xff\xdb"):], upright[upright.index(b"\xff\xdb"):], orientation)
            self.assertTrue(tag(0x112, 3, 1) in made)
        Path("turned.jpg").write_bytes(with_segments(photo, (0xe1, exif(6))))
        self.run_tool("gallery", "turned.jpg", "page")
        self.assertEqual(jpeg_size("page/pictures/Original.jpg"), (32, 48))

    def test_metadata_are_kept(self):
        profile = bytes(16) + b"RGB " + random.Random(2).randbytes(70000)
        profile = struct.pack(">I", len(profile)) + profile[4:]
        iccs = [(0xe2, b"ICC_PROFILE\0" + bytes((i + 1, 2)) + profile[i * 60000:][:60000]) for i in range(2)]
        xmp = (b'http://ns.adobe.com/xap/1.0/\0<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF '
               b'xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description xmlns:t="http://ns.adobe.com/'
               b'tiff/1.0/" t:Orientation="6" t:Software="pencil"/></rdf:RDF></x:xmpmeta>')
        iptc = b"Photoshop 3.0\x008BIM\4\4\0\0\0\0\0\x08\x1c\2\x19\0\3cat"
        thumbnail = b"\xff\xd8\xff\xfe\0\x07THUMB\xff\xd9"
        Path("rich.jpg").write_bytes(with_segments(
            self.photo, (0xe1, exif(6, thumbnail)), (0xe1, xmp), *iccs, (0xed, iptc), (0xfe, b"a comment")))
        os.symlink(ENGINE, "engine.so")
        for command, width, height in (
                ("apply sepia rich.jpg", 48, 64), ("apply PrettyBlue rich.jpg", 48, 64), ("blend rich.jpg rich.jpg", 48, 64),
                ("resize --size=30x20 rich.jpg", 30, 20), ("beauty --engine=engine.so rich.jpg", 48, 64)):
            made = self.made(*command.split())
            self.assertEqual(jpeg_size("made.jpg"), (width, height))
            for entry in (tag(0x10f, 2, 0x0065636d, 4), tag(0x112, 3, 1), tag(0x100, 4, width), tag(0xa002, 4, width),
                          tag(0xa003, 4, height), b'Orientation="1"', b'Software="pencil"', iptc[-8:]):
                self.assertTrue(entry in made, (command, entry))
            self.assertFalse(b"THUMB" in made)
            self.assertTrue((0xfe, b"a comment") in segments(made))
            self.assertTrue(profile == b"".join(body[14:] for marker, body in segments(made) if marker == 0xe2))
        Path("xmp.jpg").write_bytes(with_segments(self.photo, (0xe1, xmp)))
        self.made("apply", "sepia", "xmp.jpg")  # turned as XMP alone says
        self.assertEqual(jpeg_size("made.jpg"), (48, 64))
        Path("large.jpg").write_bytes(with_segments(
            self.photo, (0xe1, exif(1)), (0xe1, xmp.replace(b"pencil", b"x" * (65533 - len(xmp) + 6)))))
        made = self.made("apply", "sepia", "large.jpg")  # where nothing has to grow, a full segment fits
        self.assertTrue(tag(0x10f, 2, 0x0065636d, 4) in made and b"x" * 60000 in made)
        plain = self.made("apply", "sepia", "photo.jpg")
        for says, *broken in (("not for its colours", (0xe2, iccs[0][1].replace(b"RGB ", b"GRAY")), iccs[1]),
                              ("Exif .*damaged", (0xe1, exif(6)[:20])),
                              ("Exif .*damaged", (0xe1, exif(6).replace(b"*", b"+"))), ("XMP .*damaged", (0xe1, xmp[:80])), ("damaged or", iccs[0])):
            Path("broken.jpg").write_bytes(with_segments(self.photo, *broken))
            self.assertEqual(self.made("apply", "sepia", "broken.jpg", says=f"note: broken.jpg: .*{says}"), plain)

    def test_batch(self):
        for folder in ("in/sub/deep", "in/sub/.hidden"):
            os.makedirs(folder)
        for i, name in enumerate(("a.jpg", "c.jpeg", "d.JPG", "e.jpg", "sub/a.jpg", "sub/deep/a.jpg", "sub/.hidden/x.jpg")):
            self.draw(f"in/{name}", 640 + 16 * i, 480)
        for name in ("b.JPEG", "f.jpg", "g.txt"):
            Path("in", name).write_bytes(b"none")
        for effect in ("PrettyJapan", "color-paint", "area", "prague"):
            results = []
            for out, options in (("out", ["--jobs=1"]), ("many", ["--jobs=64"]), ("in/out", ["--recursive"])):
                self.run_tool("apply", effect, "in", out, *options, code=1, says="not a JPEG.*not a JPEG")
                self.assertEqual([line.split(":")[1] for line in self.said if "JPEG," in line], [" in/b.JPEG", " in/f.jpg"])
                results.append({str(path.relative_to(out)): hashlib.sha256(path.read_bytes()).hexdigest()
                                for path in Path(out).rglob("*.*")})
            self.assertEqual(sorted(results[0]), ["a.jpg", "c.jpeg", "d.JPG", "e.jpg"])
            self.assertEqual(results[1], results[0])
            self.assertEqual(set(results[2]) - set(results[0]), {"sub/a.jpg", "sub/deep/a.jpg"})
            self.assertEqual(results[2] | results[0], results[2])

    def test_full_output(self):
        os.symlink("/proc/self/fd/1", "link")
        for code, stream, *command in (
                (1, "stderr", "apply", "sepia", "raw", "no.jpg", "out"), (75, "stdout", "list"), (75, "stdout", "--help"),
                (75, "stdout", "apply", "sepia", "photo.jpg", "-"), (75, "stdout", "apply", "sepia", "photo.jpg", "link"),
                (75, "stdout", "bench", "--filter=negative", "--size=8x8", "--seconds=0")):
            with open("/dev/full", "wb") as full:
                streams = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, stream: full}
                self.assertEqual(subprocess.run([TOOL, *command], **streams).returncode, code, command)

    def test_progress_bar(self):
        for columns, bar in ((100, r"\[=+>?\s*\] "), (50, ""), (12, None)):
            master, terminal = pty.openpty()
            fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            subprocess.run([TOOL, "apply", "PrettySweet", "photo.jpg", "raw", "out", "--jobs=1"], stderr=terminal)
            os.close(terminal)
            shown = b""
            with contextlib.suppress(OSError):  # all is read
                while True:
                    shown += os.read(master, 4096)
            lines = re.findall(r"\r(.*?)\x1b\[K", shown.decode())
            self.assertTrue(lines and all(len(line) < columns for line in lines), lines)
            if bar is not None:
                self.assertRegex("\n".join(lines), rf"(?m)^{bar}1/2  50 %  0:\d\d left  raw$")

    def test_wrong_use_is_one_line_and_leaves_nothing(self):
        os.mkdir("mine")
        Path("mine", "notes.txt").touch()
        os.mkfifo("pipe")
        self.flat("flat.jpg", 0, 0, 0)
        before = sorted(Path(".").rglob("*"))
        convert = "convert --from=nv12 --to=argb raw out --size="
        for command, code, says in (
                ("", 2, "required"), ("paint", 2, "paint"), ("apply PrettyBlue photo.jpg", 2, "FILES"),
                ("apply PretySweet photo.jpg o.jpg", 2, 'did you mean "PrettySweet"'),
                ("apply PrettyBlue raw o.jpg", 3, "not a JPEG"), ("apply PrettyBlue no.jpg o.jpg", 3, "No such file"),
                ("apply PrettyBlue photo.jpg no/o.jpg", 1, "No such file"),
                ("apply PrettyBlue photo.jpg raw raw", 2, "raw is a file"), ("apply PrettyBlue raw no.jpg o --jobs=1", 1, "raw.*\n.*no.jpg.*\n.*2 of 2 photos failed"),
                ("apply PrettyBlue photo.jpg o.jpg --quality=101", 2, "quality"),
                ("apply PrettyBlue photo.jpg o.jpg --jobs=0", 2, "jobs"), ("apply PrettyBlue photo.jpg raw .", 1, "photo.jpg would be replaced"),
                ("apply PrettyBlue photo.jpg raw flat.jpg", 2, "flat.jpg is a file"),
                ("apply sepa raw o.jpg", 2, '"sepia"'), ("apply fill-light --radius=nan raw o.jpg", 2, "radius"),
                ("apply miniature-rows raw o.jpg --ramp=4.5", 2, "--ramp 4.5: miniature-rows takes whole"),
                ("apply fill-light raw o.jpg --radius=2.1", 2, "--radius 2.1: fill-light takes 0.3 to 2"),
                ("apply PrettyBlue photo.jpg o.jpg --overlay=raw", 2, "PrettyPink, PrettyJapan, not of PrettyBlue"),
                ("apply sepia photo.jpg o.jpg --radius=1", 2, "--radius is an option of fill-light, not of sepia"),
                ("apply PrettyBlue photo.jpg o.jpg --paper=raw", 2, "--paper is an option of new-sketch"),
                ("apply new-sketch photo.jpg o.jpg --paper=raw", 3, "raw: not a PNG"),
                ("apply new-sketch photo.jpg o.jpg --paper=/dev/zero", 3, "/dev/zero: not a regular file"),
                ("apply area photo.jpg o.jpg --front=raw", 2, "--mask"),
                ("apply miniature-rows photo.jpg o.jpg --ramp=40", 3, "--ramp 40.*48 rows"),
                ("resize photo.jpg o.jpg --size=0x9", 2, "WIDTHx"), ("resize raw o.jpg --size=9x9", 3, "not a JPEG"),
                ("resize photo.jpg o.jpg --size=65501x1", 2, "65500"),
                ("blend photo.jpg flat.jpg o.jpg", 3, "64x48.*16x16"), ("blend raw raw o.jpg --weight=257", 2, "256"),
                ("blend photo.jpg photo.jpg o.jpg --mode=darken --weight=1", 2, "--weight"),
                ("convert --from=jpg --to=nv12 photo.jpg o --size=9x9", 2, "without --size"), ("convert --from=nv12 --to=jpg raw o", 2, "--size is needed"),
                (convert + "63x48", 2, "even"), (convert + "64x", 2, "WIDTHxHEIGHT"),
                (convert + "64x46", 3, "4608 bytes.*4416"), (convert + "64x50 --from=rgb", 2, "rgb"),
                ("rotate --size=64x48 --format=nv12 45 raw out", 2, "45"),
                ("gallery raw page", 3, "not a JPEG"), ("gallery photo.jpg mine", 1, "no earlier gallery")):
            self.run_tool(*command.split(), code=code, says=says)
            self.assertEqual(sorted(Path(".").rglob("*")), before, command)

    def test_gallery_files(self):
        os.rename("photo.jpg", name := 'a "<b>&{{entries}}.jpg')
        self.run_tool("gallery", name, "page")
        Path("page/pictures/old.jpg").touch()
        self.run_tool("gallery", name, "page/")  # replaces the earlier one
        os.mkdir("page/pictures/mine")
        self.run_tool("gallery", name, "page", code=1, says="or holds more")
        os.rmdir("page/pictures/mine")
        page = Path("page/index.html").read_text()
        self.assertEqual(html.unescape(re.search("<title>(.*) under", page)[1]), name)
        entries = json.loads(re.search(r'<script type="application/json"[^>]*>(.*?)</script>', page, re.S)[1])
        self.assertEqual(entries[0]["about"], name)
        files = {file for entry in entries for file in (entry["file"], entry["small"])}
        self.assertEqual({str(path.relative_to("page")) for path in Path("page").rglob("*.jpg")}, files)
        own = self.run_tool("list").split("\n\n")[1]
        shown = {row.split()[0]: row.split("  ")[-1].strip() for row in own.splitlines()[1:]}
        self.assertEqual({e["name"]: e["about"] for e in entries[1:]}, shown)
        filters = [name for name in shown if name.startswith("Pretty")]
        for group, names, alike in (("filters", filters, 0), ("classic", [n for n in shown if n not in filters], 1)):
            pictures = {e["name"]: Path("page", e["file"]).read_bytes() for e in entries if e["group"] == group}
            self.assertEqual(list(pictures), names)
            self.assertEqual(len(set(pictures.values())), len(names) - alike, group)

    def test_interrupt_removes_temporary_files(self):
        self.draw("photo.jpg", 2000, 1500)
        os.mkdir("in")
        for i in range(300):  # more than are done before the signal, however late it is
            os.link("photo.jpg", f"in/{i}.jpg")
        for command, begun in ((("gallery", "photo.jpg", "page"), ".camera-effects-*"),
                               (("apply", "sepia", "in", "out", "--jobs=3"), "out/*.jpg")):
            tool = subprocess.Popen([TOOL, *command])
            while not list(Path(".").glob(begun)):
                self.assertIsNone(tool.poll())
                time.sleep(0.001)
            tool.send_signal(signal.SIGINT)
            self.assertEqual(tool.wait(), -signal.SIGINT)
            self.assertFalse(Path("page").exists() or list(Path(".").rglob(".*")), command)
        self.assertLess(len(os.listdir("out")), 300)


if __name__ == "__main__":
    unittest.main()
