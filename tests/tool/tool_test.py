"""Drives camera-effects from outside: tool_test.py TOOL"""
import html
import json
import os
import pty
import random
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

TOOL = os.path.abspath(sys.argv.pop(1))


def jpeg_size(path):
    return struct.unpack_from(">HH", data := Path(path).read_bytes(), data.index(b"\xff\xc0") + 5)[::-1]


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, "/")
        os.chdir(folder.name)
        self.photo = self.draw("photo.jpg", 64, 48)

    def draw(self, name, width, height):
        Path("raw").write_bytes(random.Random(1).randbytes(width * height * 3 // 2))
        self.run_tool("convert", f"--size={width}x{height}", "--from=nv21", "--to=jpg", "raw", name)
        return Path(name).read_bytes()

    def run_tool(self, *args, code=0, says="", **env):
        """stderr must be empty, or with `says` consist of lines of the tool's own."""
        env = {k: v for k, v in os.environ.items() if k != "ALGORITHM_DEVICE_ROOT"} | env
        result = subprocess.run([TOOL, *args], env=env, capture_output=True, text=True)
        self.assertEqual(result.returncode, code, (args, result.stderr))
        self.assertRegex(result.stderr, rf"\Acamera-effects: .*{says}.*\n\Z" if says else r"\A\Z", args)
        return result.stdout

    def test_list_shows_the_whole_table(self):
        rows = [line.split(maxsplit=4) for line in self.run_tool("list").splitlines()[1:]]
        self.assertEqual([int(row[1]) for row in rows], list(range(28)))
        self.assertEqual(rows[7], ["fish-eye", "7", "1", "no", "-"])
        self.assertEqual(rows[26], ["PrettyPink", "26", "4", "yes", "sucai0.png / sucai0_r.png"])

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
        self.run_tool("apply", "sepia", "photo.jpg", "same.jpg", says="passes through")
        self.run_tool("apply", "PrettyBlue", "photo.jpg", "photo.jpg", "--quality=10")  # over its input
        self.assertLess(os.stat("photo.jpg").st_size, os.stat("same.jpg").st_size / 2)
        self.run_tool("apply", "PrettyJapan", "same.jpg", "a.jpg")  # finds the pictures beside the tool
        self.run_tool("apply", "PrettyJapan", "same.jpg", "b.jpg", says="sucai3.png", ALGORITHM_DEVICE_ROOT="/none")
        self.assertNotEqual(Path("a.jpg").read_bytes(), Path("b.jpg").read_bytes())
        at = self.photo.index(b"\xff\xc0") + 5
        Path("odd.jpg").write_bytes(self.photo[:at] + struct.pack(">HH", 47, 63) + self.photo[at + 4:])
        self.run_tool("apply", "PrettyBlue", "odd.jpg", "even.jpg", says="cropped from 63x47 to 62x46")
        self.assertEqual((jpeg_size("a.jpg"), jpeg_size("even.jpg")), ((64, 48), (62, 46)))

    def test_batch_goes_on_after_a_bad_file(self):
        os.mkdir("in")
        for name, data in (("a.jpg", self.photo), ("b.JPEG", b"none"), ("c.jpeg", self.photo), ("d.txt", b"")):
            Path("in", name).write_bytes(data)
        self.run_tool("apply", "PrettySweet", "in", "out", code=1, says="b.JPEG: not a JPEG")
        self.assertEqual(sorted(os.listdir("out")), ["a.jpg", "c.jpeg"])
        master, terminal = pty.openpty()
        subprocess.run([TOOL, "apply", "PrettySweet", "in/a.jpg", "in/c.jpeg", "out"], stderr=terminal, check=True)
        self.assertIn(b"2/2 c.jpeg", os.read(master, 4096))

    def test_wrong_use_is_one_line_and_leaves_nothing(self):
        os.mkdir("mine")
        Path("mine", "notes.txt").touch()
        before = sorted(Path(".").rglob("*"))
        convert = "convert --from=nv12 --to=argb raw out --size="
        for command, code, says in (
                ("", 2, "required"), ("paint", 2, "paint"), ("apply PrettyBlue photo.jpg", 2, "FILES"),
                ("apply PretySweet photo.jpg o.jpg", 1, 'did you mean "PrettySweet"'),
                ("apply PrettyBlue raw o.jpg", 1, "not a JPEG"), ("apply PrettyBlue no.jpg o.jpg", 1, "No such file"),
                ("apply PrettyBlue photo.jpg no/o.jpg", 1, "No such file"),
                ("apply PrettyBlue photo.jpg /dev/null", 1, "not a regular file"),
                ("apply PrettyBlue raw raw o", 1, "two inputs"), ("apply PrettyBlue raw no.jpg o", 1, "raw.*\n.*no.jpg"),
                ("apply PrettyBlue photo.jpg o.jpg --quality=101", 2, "quality"),
                (convert + "63x48", 1, "even"), (convert + "64x", 1, "WIDTHxHEIGHT"),
                (convert + "64x46", 1, "4608 bytes.*4416"), (convert + "64x50 --from=rgb", 2, "rgb"),
                ("rotate --size=64x48 --format=nv12 45 raw out", 2, "45"),
                ("gallery raw page", 1, "not a JPEG"), ("gallery photo.jpg mine", 1, "no earlier gallery")):
            self.run_tool(*command.split(), code=code, says=says)
            self.assertEqual(sorted(Path(".").rglob("*")), before, command)

    def test_gallery_files(self):
        os.rename("photo.jpg", name := 'a "<b>&{{entries}}.jpg')
        self.run_tool("gallery", name, "page")
        Path("page/pictures/old.jpg").touch()
        self.run_tool("gallery", name, "page/")  # replaces the earlier one
        page = Path("page/index.html").read_text()
        self.assertEqual(html.unescape(re.search("<title>(.*) under", page)[1]), name)
        entries = json.loads(re.search(r'<script type="application/json"[^>]*>(.*?)</script>', page, re.S)[1])
        self.assertEqual(entries[0]["about"], name)
        files = {file for entry in entries for file in (entry["file"], entry["small"])}
        self.assertEqual({str(path.relative_to("page")) for path in Path("page").rglob("*.jpg")}, files)
        for group, count, different in (("filters", 8, 8), ("unchanged", 20, 1)):
            pictures = [Path("page", e["file"]).read_bytes() for e in entries if e["group"] == group]
            self.assertEqual((len(pictures), len(set(pictures))), (count, different), group)

    def test_interrupt_removes_temporary_files(self):
        self.draw("photo.jpg", 2000, 1500)
        tool = subprocess.Popen([TOOL, "gallery", "photo.jpg", "page"])
        while not list(Path(".").glob(".camera-effects-*")):
            self.assertIsNone(tool.poll())
            time.sleep(0.001)
        tool.send_signal(signal.SIGINT)
        self.assertEqual(tool.wait(), -signal.SIGINT)
        self.assertEqual(sorted(os.listdir(".")), ["photo.jpg", "raw"])


unittest.main()
