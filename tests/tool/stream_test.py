"""Photos that stream through the tool, against the whole-image way: stream_test.py TOOL ENGINE"""
import json
import os
import random
import struct
import subprocess
import sys
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase
from tool_test import exif, with_segments

MEMORY = 24 << 20  # bytes, at any size of a baseline photo
MEASURE = ("import os, sys; pid = os.posix_spawn(sys.argv[1], sys.argv[1:], os.environ); "
           "_, status, used = os.wait4(pid, 0); print(status, used.ru_maxrss)")


class StreamTest(ToolCase):
    def draw(self, name, width, height, *options):
        levels = random.Random(3).randbytes(width * 8)
        rows = (bytes(v for x in range(width) for v in (levels[8 * x + y % 8] // 3, 90 + x % 97, (x + y) % 200, 255))
                for y in range(height))
        Path("argb").write_bytes(b"".join(rows))
        self.run_tool("convert", f"--size={width}x{height}", "--from=argb", "--to=jpg", "argb", name, *options)

    def check_same(self, name, *command, code=0):
        """A photo from the standard input goes the other way."""
        with open(name, "rb") as photo:
            whole = subprocess.run([TOOL, "apply", *command, "-", "-"], stdin=photo, capture_output=True)
        self.assertEqual(whole.returncode, code, whole.stderr)
        result = subprocess.run([TOOL, "apply", *command, name, "made.jpg"], capture_output=True)
        self.assertEqual(result.returncode, code, result.stderr)
        self.assertEqual(Path("made.jpg").read_bytes() if code == 0 else b"", whole.stdout, command)
        Path("made.jpg").unlink(missing_ok=True)

    def test_same_bytes_as_whole_images(self):
        self.draw("photo.jpg", 704, 526)
        for effect in ("PrettySweet", "PrettyPink", "sepia", "lomo", "temperature", "color-paint", "area", "new-sketch",
                       "sketch", "emboss", "miniature", "prague", "fish-eye", "sepia,PrettyPink,lomo", "sepia,sketch"):
            for options in ([], ["--mix=30", "--sampling=444", "--quality=same"]):
                self.check_same("photo.jpg", effect, *options)
        self.check_same("photo.jpg", "miniature-rows", "--offset=30", "--ramp=200", "--mix=0")
        self.check_same("photo.jpg", "PrettySweet", "--sampling=422")

    def test_photos_of_any_make(self):
        self.draw("photo.jpg", 640, 400)
        photo = Path("photo.jpg").read_bytes()
        scan = photo.index(b"\xff\xda")
        half = photo[:(scan + len(photo)) // 2]
        comments = b"\xff\xfe\xff\xff" + bytes(65533)
        for name, content in (("filled", photo[:2] + 7 * comments + photo[2:]), ("followed", photo + photo),
                              ("padded", photo + bytes(300000)), ("one-byte", photo + b"\xff")):
            Path(name).write_bytes(content)
            self.check_same(name, "sepia")
        Path("half").write_bytes(half)
        self.check_same("half", "sepia", code=3)
        self.check_same("half", "sepia", "--damaged=keep")
        self.run_tool("apply", "sepia", "half", "half", "--damaged=keep", code=3, says="never replaced")
        self.assertEqual(Path("half").read_bytes(), half)
        self.run_tool("apply", "sepia", "half", "made.jpg", "--damaged=keep", "--report=report", says="the file ends early")
        self.assertRegex(json.loads(Path("report").read_text())["notes"][0], "half: damaged: [0-9]+ of 400 rows")
        self.run_tool("apply", "sepia", "photo.jpg", "photo.jpg")
        self.assertNotEqual(Path("photo.jpg").read_bytes(), photo)

    def test_photos_that_lie_on_their_side(self):
        self.draw("even.jpg", 702, 524)
        for name in ("photo.jpg", "several-scans.jpg[interlace]"):
            subprocess.run(["vips", "crop", "even.jpg", name, "0", "0", "701", "523"], check=True)
        for orientation in range(1, 9):
            for name in ("photo.jpg", "several-scans.jpg"):
                Path("turned.jpg").write_bytes(with_segments(Path(name).read_bytes(), (0xe1, exif(orientation))))
                for options in (["lomo"], ["PrettySweet,sepia", "--mix=30"], ["sketch"]):
                    self.check_same("turned.jpg", *options)
        turned = Path("turned.jpg").read_bytes()
        Path("cut.jpg").write_bytes(turned[:len(turned) // 2])
        self.check_same("cut.jpg", "sepia", "--damaged=keep")
        self.check_same("cut.jpg", "sepia", code=3)

    @unittest.skipIf(b"__asan_init" in Path(TOOL).read_bytes() or b"__tsan_init" in Path(TOOL).read_bytes(), "a sanitizer's memory")
    def test_little_memory_for_a_large_photo(self):
        Path("argb").write_bytes(bytes((128, 128, 128, 255)) * 256)
        self.run_tool("convert", "--size=16x16", "--from=argb", "--to=jpg", "argb", "grey.jpg")
        grey = Path("grey.jpg").read_bytes()
        frame, scan = grey.index(b"\xff\xc0"), grey.index(b"\xff\xda")
        blocks = scan + 2 + struct.unpack_from(">H", grey, scan + 2)[0]
        self.assertEqual(len(grey) - blocks, 4 + 2)  # of grey, each 16 x 16 pixels are the same four bytes
        size = struct.pack(">HH", 9008, 12000)  # 108 million
        Path("large.jpg").write_bytes(grey[:frame + 5] + size + grey[frame + 9:blocks] + grey[blocks:-2] * (750 * 563) + grey[-2:])
        size = struct.pack(">HH", 3008, 4000)
        Path("turned.jpg").write_bytes(with_segments(grey[:frame + 5] + size + grey[frame + 9:blocks] + grey[blocks:-2] * (250 * 188) + grey[-2:],
                                                     (0xe1, exif(6))))
        turned = Path("turned.jpg").read_bytes()
        Path("followed.jpg").write_bytes(turned + with_segments(turned, (0xe1, b"hdr-gain-map")))
        for photo, effect, most in (("large.jpg", "PrettyPink", MEMORY), ("large.jpg", "sepia,lomo", MEMORY), ("large.jpg", "sketch", MEMORY),
                                    ("turned.jpg", "lomo", 4000 * 3008 * 4), ("followed.jpg", "lomo", 4000 * 3008 * 4 + MEMORY)):
            result = subprocess.run([sys.executable, "-SEc", MEASURE, TOOL, "apply", effect, photo, "made.jpg", "--mix=50"],
                                    capture_output=True, text=True, check=True)
            status, kilobytes = map(int, result.stdout.split())
            self.assertEqual((status, result.stderr), (0, ""))
            self.assertLess(kilobytes << 10, most, effect)
            self.assertGreater(os.path.getsize("made.jpg"), 250 * 188)


unittest.main()
