"""Streams of frames: frames_test.py TOOL ENGINE LIBRARY. Each frame must have the bytes that the library's
pipeline, called on its own, gives it."""
import contextlib
import ctypes
import os
import pty
import random
import re
import subprocess
import sys
import unittest
from pathlib import Path

PAGE = Path(__file__).resolve().parents[2] / "docs/many-photos.md"
LIBRARY = ctypes.CDLL(os.path.abspath(sys.argv.pop(3)))

from tool_case import TOOL, ToolCase  # noqa: E402  (takes the other arguments)


def pretty(name, frame, width, height):
    """An NV21 frame after the pipeline."""
    block = ctypes.create_string_buffer(frame, len(frame))
    chroma = ctypes.byref(block, width * height)
    LIBRARY.KAVRO_PrettyEffect_Function(name.encode(), None, block, chroma, height, width, width, width)
    return block.raw


def swapped(frame, width, height):
    """NV21 as NV12 and back."""
    chroma = bytearray(frame[width * height:])
    chroma[::2], chroma[1::2] = chroma[1::2], chroma[::2]
    return frame[:width * height] + bytes(chroma)


def planes(frame, width, height):
    """NV21 as luma, U and V."""
    chroma = frame[width * height:]
    return frame[:width * height] + chroma[1::2] + chroma[::2]


def pairs(frame, width, height):
    luma = width * height
    chroma = bytearray(luma // 2)
    chroma[1::2], chroma[::2] = frame[luma:luma * 5 // 4], frame[luma * 5 // 4:]
    return frame[:luma] + bytes(chroma)


class FramesTest(ToolCase):
    def through(self, data, *args, code=0, says=""):
        result = subprocess.run([TOOL, "frames", *args], input=data, capture_output=True)
        self.assertEqual(result.returncode, code, result.stderr)
        self.assertRegex(result.stderr.decode(), rf"\A(camera-effects: .*{says}.*\n)?\Z")
        self.assertEqual(bool(result.stderr), bool(says))
        return result.stdout

    def test_each_layout_and_cut_off_frames(self):
        width, height = 34, 18
        frames = [random.Random(i).randbytes(width * height * 3 // 2) for i in range(3)]
        done = [pretty("PrettySweet", frame, width, height) for frame in frames]
        head = b"YUV4MPEG2 W34 H18 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n"
        marks = [b"FRAME Ip\n", b"FRAME\n", b"FRAME\n"]
        for convert, start, before, options in (
                (lambda frame, *_: frame, b"", [b""] * 3, ("--size=34x18",)),
                (swapped, b"", [b""] * 3, ("--size=34x18", "--format=nv12")), (planes, head, marks, ())):
            came, wanted = ([line + convert(frame, width, height) for line, frame in zip(before, kind)]
                            for kind in (frames, done))
            self.assertEqual(self.through(start + b"".join(came), "PrettySweet", *options), start + b"".join(wanted))
            for kept in (1, len(before[2]) + 1, len(came[2]) - 1):  # of the last one
                result = self.through(start + b"".join(came)[:kept - len(came[2])], "PrettySweet", *options, code=3,
                                      says="last frame is cut off: .*; 2 whole frames")
                self.assertEqual(result, start + b"".join(wanted[:2]))
        # An effect that the pipeline does not run, and two in a row.
        Path("frame").write_bytes(frames[0])
        grey = self.through(frames[0] * 2, "gray-scale", "--size=34x18")
        self.assertEqual(grey[:len(grey) // 2], grey[len(grey) // 2:])
        self.assertLessEqual(set(grey[width * height:len(grey) // 2]), {127, 128})
        self.assertEqual(self.through(frames[0], "gray-scale,PrettyBlue", "--size=34x18"),
                         pretty("PrettyBlue", grey[:len(grey) // 2], width, height))

    def test_bad_input_is_one_line(self):
        head = b"YUV4MPEG2 W34 H18 "
        for data, options, code, says in (
                (b"", "", 3, "nothing came"), (b"", "--size=34x18", 3, "no frame came"), (b"P6", "", 3, "no Y4M .*--size"),
                (head + b"C420p10\n", "", 3, "420p10; .*yuv420p"), (b"YUV4MPEG2 W33 H18\n", "", 3, "33x18"),
                (b"YUV4MPEG2 H18\n", "", 3, "0x18"), (b"YUV4MPEG2 W99999999999 H2\n", "", 3, "even"),
                (head + b"x" * 9999, "", 3, "line without an end"), (head + b"\nFRANK\n", "", 3, "frame 1"),
                (head + b"\nFRAMEX\n", "", 3, "frame 1"), (head, "", 3, "header is cut off"), (head + b"\n", "", 3, "no frame came"),
                (b"YUV4MPEG2 H18 W34\tC422\n", "", 3, "a side is an even number"), (b"YUV4MPEG2 W46340 H46340\n", "", 3, "at most"),
                (b"", "--size=33x18", 2, "even"), (b"", "--format=nv12", 2, "goes with --size"),
                (b"", "--size=34x18 --format=rgb", 2, "rgb"), (b"", "--size=34", 2, "WIDTHxHEIGHT"),
                (b"", "--size=2x2 --radius=1", 2, "--radius is an option of")):
            self.assertLess(len(self.through(data, "PrettySweet", *options.split(), code=code, says=says)), 99)
        with open("/dev/full", "wb") as full:
            result = subprocess.run([TOOL, "frames", "sepia", "--size=2x2"], input=bytes(6), stdout=full, stderr=subprocess.PIPE)
        self.assertEqual((result.returncode, result.stderr.count(b"\n")), (75, 1))

    def test_rate_on_a_terminal(self):
        master, terminal = pty.openpty()
        subprocess.run([TOOL, "frames", "sepia", "--size=2x2"], input=bytes(12), stdout=subprocess.DEVNULL, stderr=terminal)
        os.close(terminal)
        shown = b""
        with contextlib.suppress(OSError):
            while True:
                shown += os.read(master, 4096)
        self.assertRegex(shown.decode(), r"\Acamera-effects: 2 frames, [\d.]+ frames a second\r\n\Z")

    def test_video_between_two_ffmpegs(self):
        width, height, count = 320, 180, 12
        source = f"ffmpeg -v error -f lavfi -i testsrc2=size={width}x{height}:rate=12 -frames:v {count} -pix_fmt yuv420p"
        recipe = re.search(r"(?s)## Video\n.*?```sh\n(.*?)```", PAGE.read_text(encoding="utf-8"))[1]
        script = (f"set -o pipefail; {source} -f rawvideo plain.yuv; {source} -c:v ffv1 in.mkv; {recipe}"
                  "ffmpeg -v error -i out.mkv -f rawvideo out.yuv")
        path = f"{os.path.dirname(TOOL)}:{os.environ['PATH']}"
        subprocess.run(["bash", "-ec", script], env=os.environ | {"PATH": path}, check=True)
        size = width * height * 3 // 2
        plain, out = Path("plain.yuv").read_bytes(), Path("out.yuv").read_bytes()
        self.assertEqual(len(out), count * size)
        for at in range(0, count * size, size):
            frame = pretty("PrettySweet", pairs(plain[at:at + size], width, height), width, height)
            self.assertEqual(out[at:at + size], planes(frame, width, height), at // size)


unittest.main()
