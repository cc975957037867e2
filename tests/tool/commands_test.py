"""What camera-effects plots, measures and says about itself: commands_test.py TOOL ENGINE"""
import os
import re
import shutil
import subprocess
import unittest
from xml.etree import ElementTree

from tool_case import ENGINE, TOOL, ToolCase


class CommandsTest(ToolCase):
    def curves(self, effect):
        """What becomes of each value of red, green and blue, read from the plot."""
        plot = ElementTree.fromstring(self.run_tool("curves", effect, "-"))
        curves = []
        for line in plot.iterfind(".//{http://www.w3.org/2000/svg}polyline"):
            points = [tuple(map(int, point.split(","))) for point in line.get("points").split()]
            curve = {x0 + i: 255 - (y0 + (y1 - y0) * i // (x1 - x0))
                     for (x0, y0), (x1, y1) in zip(points, points[1:]) for i in range(x1 - x0 + 1)}
            curves.append([curve[v] for v in range(256)])
        return curves

    def test_curves(self):
        def sweet(v, u, rest):  # as the filter is defined
            return min(int((int(u * 1.05 * rest + u * 255) >> 8) * 0.75 + v * 0.25), 255)

        red, green, blue = self.curves("PrettySweet")
        self.assertEqual(red, [sweet(v, (v * 225 >> 8) + 30, 225 - (v * 225 >> 8)) for v in range(256)])
        self.assertEqual(green, [sweet(v, v, 255 - v) for v in range(256)])
        self.assertEqual(blue, [sweet(v, (v * 250 >> 8) + 50, 205 - (v * 250 >> 8)) for v in range(256)])
        self.assertEqual(self.curves("negative-effect"), [list(range(255, -1, -1))] * 3)
        self.assertEqual(self.curves("ocean")[2], list(range(256)))  # "blue keeps"
        for effect, why in (("gray-scale", "its red depends on more than the red"), ("fill-light", "its red"),
                            ("PrettyPink", "it looks at a picture"), ("rotate_effect", "it passes through")):
            self.run_tool("curves", effect, "no.svg", code=1, says=f"{effect} does not consist of curves: {why}")
        self.run_tool("curves", "pink", code=2, says="NAME and OUT")
        names = self.run_tool("curves", "--list").split()
        self.assertLessEqual({"PrettySweet", "PrettyBeautiful", "lomo", "temperature"}, set(names))
        for name in names:
            self.run_tool("curves", name, f"{name}.svg")
        self.assertEqual(sorted(os.listdir()), sorted(f"{name}.svg" for name in names))

    def test_bench(self):
        table = self.run_tool("bench", "--size=2000x1000", "--filter=^pretty(blue|sweet)$|::rotateARGB90|^mix", "--seconds=0")
        rows = [row.split() for row in table.splitlines()[1:]]
        for (name, _, ms, rate, of_memcpy), moved in zip(rows, (12e6, 12e6, 16e6, 24e6), strict=True):
            self.assertAlmostEqual(float(ms) * float(rate) * 1e6 / moved, 1, delta=0.05, msg=name)
            self.assertGreater(float(of_memcpy), 0)
        self.assertEqual([row[0] for row in rows], ["PrettySweet", "PrettyBlue", "rotate-argb-90", "mix"])
        self.run_tool("bench", "--filter=(", code=2, says=".*not a regular expression")
        self.run_tool("bench", "--filter=none", code=2, says="no operation")

    def test_examples_of_every_help(self):
        os.makedirs("holiday")
        for frame in ("frame.nv21", "wide.nv21"):
            with open(frame, "wb") as file:
                file.write(bytes(range(256)) * (640 * 480 * 3 // 2 // 256))
        for photo in ("photo.jpg", "sepia.jpg", "portrait.jpg", "holiday/a.jpg"):
            self.run_tool("convert", "--size=640x480", "--from=nv21", "--to=jpg", "frame.nv21", photo)
        folder = f"{os.path.dirname(TOOL)}/share/libalgorithm/device/data/data/com.android.camera/effect"
        shutil.copy(f"{folder}/sucai3.png", "wash.png")
        shutil.copy(ENGINE, "libSFB.so")
        path = f"{os.path.dirname(TOOL)}:{os.environ['PATH']}"
        commands = re.findall(r"^  (\w+)  ", self.run_tool("--help").split("Subcommands:")[1], re.M)
        self.assertGreater(len(commands), 10)
        for command in commands:
            examples = re.findall(rf"^  (.*camera-effects {command}\b.*)", self.run_tool(command, "--help"), re.M)
            self.assertTrue(examples, command)
            for example in examples:
                result = subprocess.run(["bash", "-c", example], env=os.environ | {"PATH": path}, capture_output=True)
                self.assertEqual((result.returncode, result.stderr), (0, b""), example)


unittest.main()
