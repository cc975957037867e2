"""What becomes of whole photos, their metadata and their formats: photos_test.py TOOL ENGINE"""
import json
import os
import random
import struct
import subprocess
import unittest
from pathlib import Path

from tool_case import ToolCase
from tool_test import segments, tag, with_segments

XMP = b"http://ns.adobe.com/xap/1.0/\0"


def long_tag(number, kind, count, at):
    return struct.pack("<HHII", number, kind, count, at)


def rich_exif():
    """First directory, Exif with a Canon maker note that has offsets of its own, GPS, thumbnail; and entries of no
    type in each."""
    maker_at, gps_at, first_at, exif_at = 300, 420, 8, 140
    none = tag(0xeeee, 0, 0, 0)
    block = bytearray(600)
    def put(at, *parts):
        data = b"".join(parts)
        block[at:at + len(data)] = data
    put(0, b"II*\0", struct.pack("<I", first_at))
    put(first_at, struct.pack("<H", 7), none, long_tag(0x10f, 2, 6, 110), long_tag(0x110, 2, 10, 116),
        tag(0x112, 3, 6), none, tag(0x8769, 4, exif_at), tag(0x8825, 4, gps_at), struct.pack("<I", 500))
    put(110, b"Canon\0", b"Canon TX1\0")
    put(exif_at, struct.pack("<H", 5), none, long_tag(0x9003, 2, 20, 230), long_tag(0x927c, 7, 80, maker_at),
        tag(0xa002, 4, 640), tag(0xa003, 4, 480), bytes(4))
    put(230, b"2024:05:06 07:08:09\0")
    put(maker_at, struct.pack("<H", 2), long_tag(6, 2, 12, maker_at + 50), long_tag(9, 2, 8, maker_at + 62), bytes(4))
    put(maker_at + 50, b"IMG:TX1 JPEG", b"Somebody")
    put(gps_at, struct.pack("<H", 3), tag(1, 2, ord("N"), 2), none, long_tag(2, 5, 3, 462), bytes(4))
    put(462, struct.pack("<6I", 48, 1, 8, 1, 15, 1))
    put(500, struct.pack("<H", 3), tag(0x103, 3, 6), tag(0x201, 4, 560), tag(0x202, 4, 40), bytes(4))
    put(560, b"\xff\xd8\xff\xfe\0\x07THUMB", bytes(27), b"\xff\xd9")
    return b"Exif\0\0" + bytes(block)


def resource(number, data):
    return b"8BIM" + struct.pack(">HHI", number, 0, len(data)) + data + bytes(len(data) % 2)


def xmp(attributes, body=b""):
    return (XMP + b'<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?><x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF '
            b'xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description rdf:about="" ' + attributes +
            b'>' + body + b'</rdf:Description></rdf:RDF></x:xmpmeta>' + b" " * 200 + b'<?xpacket end="w"?>')


class PhotosTest(ToolCase):
    def setUp(self):
        super().setUp()
        Path("raw").write_bytes(random.Random(1).randbytes(64 * 48 * 3 // 2))
        self.run_tool("convert", "--size=64x48", "--from=nv21", "--to=jpg", "raw", "photo.jpg")
        self.photo = Path("photo.jpg").read_bytes()

    def tags(self, file):
        """What exiftool reads, but for what describes the file itself."""
        text = subprocess.run(["exiftool", "-j", "-G1", "-a", "-u", "-U", file], check=True, capture_output=True).stdout
        return {name: value for name, value in json.loads(text)[0].items()
                if name.split(":")[0] not in ("SourceFile", "System", "File", "ExifTool", "Composite")}

    def test_segments_of_every_kind_are_kept(self):
        iptc = b"\x1c\2\x05\0\5title\x1c\2\x19\0\3cat"
        rest = [
            (0xe1, xmp(b'xmlns:t="http://ns.adobe.com/tiff/1.0/" t:Orientation="6" t:Software="pencil" '
                       b'xmlns:own="http://example.com/own/" own:note="a &lt; b"')),
            (0xe1, b"http://ns.adobe.com/xmp/extension/\0" + b"0" * 32 + struct.pack(">II", 4, 0) + b"<a/>"),
            (0xe1, b"FLIR\0\1\0\0" + bytes(80)), (0xe2, b"FPXR\0\0\1\0\1" + bytes(40)), (0xe5, b"RMETA\0" + bytes(20)),
            (0xea, b"AROT\0\0" + bytes(8)), (0xec, b"Ducky\0\1\0\4\0\0\0P\0\0"), (0xef, b"unheard of"),
            (0xed, b"Photoshop 3.0\0" + resource(0x404, iptc) + resource(0x40a, b"\1") + resource(0x40b, b"http://x.org")
             + resource(0x40c, bytes(28) + b"\xff\xd8PSTHUMB")),
            (0xed, b"Photoshop 3.0\0" + resource(0x404, b"\x1c\2\x19\0\3dog")), (0xfe, b"a comment")]
        Path("rich.jpg").write_bytes(with_segments(self.photo, (0xe1, rich_exif()), *rest))
        before = self.tags("rich.jpg")
        plainer = with_segments(self.photo, (0xe1, rich_exif().replace(tag(0xeeee, 0, 0, 0), tag(0xeeee, 3, 0, 1))), *rest)
        Path("sound.jpg").write_bytes(plainer)
        sound = self.tags("sound.jpg")
        self.assertEqual(sound["Canon:CanonImageType"], "IMG:TX1 JPEG")
        self.assertIn("GPS:GPSLatitude", sound)
        for command in (["apply", "sepia"], ["resize", "--size=30x20"]):
            self.run_tool(*command, "rich.jpg", "made.jpg")
            made, after = Path("made.jpg").read_bytes(), self.tags("made.jpg")
            for name, value in (sound | before).items():
                if name.startswith("IFD1:") or "Thumbnail" in name or "0xeeee" in name.lower():
                    self.assertNotIn(name, after)
                elif not any(word in name for word in ("Orientation", "ExifImage")):
                    self.assertEqual(after.get(name), value, (command, name))
            self.assertEqual((after["IFD0:Orientation"], after["XMP-tiff:Orientation"]), ("Horizontal (normal)",) * 2)
            self.assertFalse(b"THUMB" in made or b"PSTHUMB" in made)
            kept = [body for _, body in segments(made)]
            for _, body in rest[1:8] + rest[10:]:
                self.assertIn(body, kept)

    def test_damaged_photos_are_refused_or_kept_by_the_users_word(self):
        Path("argb").write_bytes(random.Random(2).randbytes(4 * 320 * 240))
        self.run_tool("convert", "--size=320x240", "--from=argb", "--to=jpg", "--quality=50", "argb", "whole.jpg")
        whole = Path("whole.jpg").read_bytes()
        middle = bytearray(whole)
        middle[len(whole) // 2:len(whole) // 2 + 400] = random.Random(3).randbytes(400)
        for name, content, says in (("cut.jpg", whole[:len(whole) // 2], r"1\d\d of 240 rows .*ends early"),
                                    ("middle.jpg", middle, ".* 240 rows")):
            Path(name).write_bytes(content)
            self.run_tool("resize", "--size=30x20", name, "none.jpg", code=3, says=f"{name}: damaged: {says}.*--damaged keep")
            self.assertFalse(Path("none.jpg").exists())
            self.run_tool("resize", "--size=30x20", name, "kept.jpg", "--damaged=keep", says=f"note: {name}: damaged: {says}")
            self.assertTrue(Path("kept.jpg").stat().st_size > 0)
            os.link(name, "same.jpg")
            for output in (name, "same.jpg"):
                self.run_tool("resize", "--size=30x20", name, output, "--damaged=keep", code=3, says=".*\n.*never replaced")
            os.remove("same.jpg")
            self.assertEqual(Path(name).read_bytes(), bytes(content))
        padded = whole[:-2] + bytes(20)  # what costs no pixel is no damage
        Path("padded.jpg").write_bytes(padded)
        self.run_tool("resize", "--size=30x20", "padded.jpg", "made.jpg")

    def test_each_refused_file_has_its_own_sentence(self):
        frame = self.photo.index(b"\xff\xc0")
        def patched(at, content):
            return self.photo[:frame + at] + content + self.photo[frame + at + len(content):]
        for content, says in (
                (b"", "empty"), (b"hello", "x: not a JPEG, PNG"), (b"GIF89a" + bytes(20), "a GIF"), (b"BM" + bytes(20), "a BMP"),
                (bytes(4) + b"ftypisom" + bytes(20), "a video"), (patched(4, b"\x0c"), "12 bits a sample"),
                (patched(5, b"\xff" * 4), "65535x65535 pixels; at most 65535"), (patched(1, b"\xc3"), "lossless"),
                (patched(1, b"\xc5"), "hierarchical"), (self.photo[:frame], "no part of the picture")):
            Path("x").write_bytes(content)
            self.run_tool("resize", "--size=30x20", "x", "none.jpg", code=3, says=f"x: .*{says}" if "x:" not in says else says)
            self.assertFalse(Path("none.jpg").exists())
        self.run_tool("resize", "--size=30x20", "photo.jpg", "none.heic", code=2, says="HEIC files are only read")

    def test_quality_and_sampling_follow_the_input_or_the_option(self):
        def coding(file):
            segment = next(body for marker, body in segments(Path(file).read_bytes()) if marker == 0xc0)
            tables = b"".join(body for marker, body in segments(Path(file).read_bytes()) if marker == 0xdb)
            return {0x11: "444", 0x21: "422", 0x22: "420"}[segment[7]], tables
        for sampling in ("444", "422", "420"):
            self.run_tool("convert", "--size=64x48", "--from=nv21", "--to=jpg", "--quality=71", "raw", "in.jpg", f"--sampling={sampling}")
            self.run_tool("resize", "--size=30x20", "in.jpg", "made.jpg", "--quality=same")
            self.assertEqual(coding("made.jpg"), coding("in.jpg"))
            self.assertEqual(coding("made.jpg")[0], sampling)
        self.run_tool("resize", "--size=30x20", "in.jpg", "made.jpg", "--sampling=444")
        self.assertEqual(coding("made.jpg")[0], "444")
        self.assertNotEqual(coding("made.jpg")[1], coding("in.jpg")[1])
        for option in ("--quality=101", "--quality=sam", "--sampling=411", "--damaged=no"):
            self.run_tool("resize", "--size=30x20", "in.jpg", "none.jpg", option, code=2, says=option[:6])

    def profile(self, name):
        """One that libvips has built in."""
        subprocess.run(["vips", "icc_transform", "photo.jpg", "profiled.jpg", name], check=True)
        return subprocess.run(["exiftool", "-b", "-icc_profile", "profiled.jpg"], check=True, capture_output=True).stdout

    def pixels(self, file):
        self.run_tool("convert", "--from=jpg", "--to=argb", file, "argb")
        return Path("argb").read_bytes()

    def test_formats_come_and_go_by_their_endings(self):
        block = rich_exif().replace(tag(0xeeee, 0, 0, 0), tag(0xeeee, 3, 0, 1))
        note = xmp(b'xmlns:own="http://example.com/own/" own:note="kept"')
        profile = self.profile("p3")
        iptc = b"Photoshop 3.0\0" + resource(0x404, b"\x1c\2\x19\0\3cat")
        Path("rich.jpg").write_bytes(with_segments(self.photo, (0xe1, block), (0xe1, note), (0xfe, b"remark"), (0xed, iptc),
                                                   (0xe2, b"ICC_PROFILE\0\1\1" + profile)))
        self.run_tool("blend", "rich.jpg", "rich.jpg", "upright.jpg", "--quality=100", "--sampling=444")
        wanted, exact = self.tags("upright.jpg"), self.pixels("upright.jpg")
        for ending, kept, says in (("png", ("IFD0", "ExifIFD", "GPS", "Canon", "XMP-own", "ICC-header"), "no place for its IPTC"),
                                   ("webp", ("IFD0", "ExifIFD", "GPS", "Canon", "XMP-own", "ICC-header"), "comment, IPTC"),
                                   ("tif", ("XMP-own", "ICC-header", "IPTC"), "its Exif, comment")):
            self.run_tool("blend", "rich.jpg", "rich.jpg", f"made.{ending}", says=says)
            found = {name.replace("IPTC2", "IPTC"): value for name, value in self.tags(f"made.{ending}").items()}
            for name, value in wanted.items():
                if name.split(":")[0] in kept:
                    self.assertEqual(found.get(name), value, (ending, name))
            back = self.pixels(f"made.{ending}")
            self.assertEqual(len(back), len(exact))
            if ending != "webp":
                self.assertLessEqual(max(abs(a - b) for a, b in zip(back, exact)), 12, ending)  # the JPEG's loss
            self.run_tool("apply", "negative", f"made.{ending}", "back.jpg")
            found = self.tags("back.jpg")
            self.assertTrue(all(found.get(name) == value for name, value in wanted.items() if name.split(":")[0] in kept))
        for ending in ("heic", "avif"):
            subprocess.run(["vips", "copy", "rich.jpg", f"in.{ending}[Q=95]"], check=True)
            self.run_tool("apply", "negative", f"in.{ending}", "made.png")
            self.assertEqual(self.tags("made.png")["PNG:ImageWidth"], 48)  # turned once
            self.assertEqual(self.tags("made.png")["IFD0:Orientation"], "Horizontal (normal)")
        os.makedirs("in")
        for name in ("made.png", "made.tif", "in.heic", "rich.jpg"):
            os.link(name, f"in/{name}")
        self.run_tool("apply", "sepia", "in", "out", says="no place")
        self.assertEqual(sorted(os.listdir("out")), ["in.jpg", "made.png", "made.tif", "rich.jpg"])

    def test_pictures_beyond_a_jpegs_means(self):
        import zlib
        def png(depth, colour, rows, *chunks):
            data = zlib.compress(b"".join(b"\0" + row for row in rows))
            parts = ((b"IHDR", struct.pack(">IIBBBBB", 2, len(rows), depth, colour, 0, 0, 0)), *chunks, (b"IDAT", data), (b"IEND", b""))
            return b"\x89PNG\r\n\x1a\n" + b"".join(struct.pack(">I", len(d)) + k + d + struct.pack(">I", zlib.crc32(k + d)) for k, d in parts)
        rows = [bytes((10, 20, 30, 255, 10, 20, 30, 0)), bytes((0, 0, 0, 128, 255, 0, 0, 255))]
        for content, expected, says in (
                (png(8, 6, rows), (30, 20, 10, 255, 255, 255, 255, 255, 127, 127, 127, 255, 0, 0, 255, 255), "over white"),
                (png(16, 0, [bytes((1, 2, 250, 255))] * 2), (1, 1, 1, 255, 250, 250, 250, 255) * 2, "16 bits"),
                (png(1, 3, [b"\x40"] * 2, (b"PLTE", bytes((1, 2, 3, 4, 5, 6)))), (3, 2, 1, 255, 6, 5, 4, 255) * 2, "")):
            Path("in.png").write_bytes(content)
            self.run_tool("convert", "--from=jpg", "--to=argb", "in.png", "argb", says=says)
            self.assertEqual(Path("argb").read_bytes(), bytes(expected))
        Path("in.png").write_bytes(png(8, 6, rows)[:-20])
        self.run_tool("convert", "--from=jpg", "--to=argb", "in.png", "none", code=3, says="in.png: damaged")
        self.run_tool("resize", "--size=8x8", "photo.jpg", "made.webp")
        Path("cut.webp").write_bytes(Path("made.webp").read_bytes()[:60])
        self.run_tool("convert", "--from=jpg", "--to=argb", "cut.webp", "none", code=3, says="cut.webp: damaged")


if __name__ == "__main__":
    unittest.main()
