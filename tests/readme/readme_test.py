"""Does what the README says, with an installed copy: readme_test.py CMAKE BUILD_FOLDER ENGINE"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, BUILD, ENGINE = sys.argv[1:]
ROOT = Path(__file__).resolve().parents[2]
README = (ROOT / "README.md").read_text(encoding="utf-8")
CATALOGUE = (ROOT / "docs/effects.md").read_text(encoding="utf-8")
HEADERS = {header.name: header.read_text() for header in ROOT.glob("include/libalgorithm/*.h")}


def section(title):
    return re.search(rf"(?ms)^## {title}\n(.*?)(?=^## |\Z)", README)[1]


def blocks(text, language):
    return re.findall(rf"(?ms)^```{language}\n(.*?)^```", text)


class ReadmeTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.usr = Path(cls.folder.name, "usr")
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", cls.usr], check=True, stdout=subprocess.DEVNULL)
        libraries = next(cls.usr.rglob("libAlgorithm.so")).parent
        cls.environment = os.environ | {
            "PATH": f"{cls.usr}/bin:{os.environ['PATH']}", "LD_LIBRARY_PATH": str(libraries),
            "PKG_CONFIG_PATH": f"{libraries}/pkgconfig"}
        cls.environment.pop("ALGORITHM_DEVICE_ROOT", None)
        cls.work = Path(cls.folder.name, "work")  # one for all, as somebody has who tries one after the other
        cls.work.mkdir()
        shutil.copy(ROOT / "samples/photo.jpg", cls.work)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def run_line(self, line):
        line = line.replace("/usr/share", f"{self.usr}/share")
        result = subprocess.run(["bash", "-ec", line], cwd=self.work, env=self.environment,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual(result.returncode, 0, line + "\n" + result.stdout)
        return result.stdout

    def run_program(self, title, language):
        """Puts a section's program into the file that is named before it, and runs its commands."""
        name, = re.findall(r"(?m)^`(\w+\.\w+)`: ", section(title))
        (self.work / name).write_text(blocks(section(title), language)[0])
        commands, = (block for block in blocks(section(title), "sh") if name in block)
        self.run_line(commands)

    def test_java_program(self):
        self.run_program("From Java", "java")
        self.run_line("camera-effects apply PrettySweet --as-frame --quality 92 photo.jpg same.jpg && cmp sweet.jpg same.jpg")

    def test_cpp_program(self):
        self.run_program(r"From C\+\+", "cpp")
        width, height = 640, 480
        luma = ([80] * (width // 2) + [120] * (width // 2)) * height  # grey, the right half lighter
        (self.work / "frame.nv21").write_bytes(bytes(luma + [128] * (width * height // 2)))
        self.run_line("./cool && camera-effects convert --size 480x640 --from nv21 --to argb upright.nv21 argb")
        pixels = (self.work / "argb").read_bytes()
        top, bottom = pixels[:4], pixels[-4:]  # blue, green, red, alpha
        self.assertGreater(bottom[1], top[1] + 20)
        self.assertTrue(top[0] > top[2] + 20 and bottom[0] > bottom[2] + 20, (top, bottom))

    def test_commands(self):
        (self.work / "photos").mkdir()
        for copy in ("a.jpg", "b.jpg"):
            shutil.copy(self.work / "photo.jpg", self.work / "photos" / copy)
        shutil.copy(ENGINE, self.work / "libSFB.so")
        shutil.copy(next(self.usr.rglob("colorpaint.png")), self.work / "wash.png")
        commands = blocks(section("On the command line"), "sh")[0].splitlines()
        self.run_line("camera-effects convert --from jpg --to nv21 photo.jpg all; head -c 460800 all >frame.nv21")
        completion, = re.findall(r"`source (<\(.*?\))`", section("On the command line"))
        for command in commands + blocks(CATALOGUE, "sh")[0].splitlines() + [f"grep complete {completion}"]:
            self.run_line(command)
        made = {match for command in commands for match in re.findall(r"[\w-]+\.\w+$|\w+/$", command.split("#")[0].strip())}
        self.assertGreater(len(made), 8)
        for name in made:
            self.assertTrue((self.work / name).exists(), name)

    def test_names(self):
        java = "".join(path.read_text() for path in ROOT.glob("java/com/**/*.java"))
        for row in re.findall(r"(?m)^\| (`.*?) \|", section("From Java")):
            for name in re.findall(r"\w+(?=`)", row):
                self.assertRegex(java, rf" {name}\(")
        found = set(re.findall(r"\w+\.h(?=`.* \|)", section(r"From C\+\+")))
        self.assertEqual(found, HEADERS.keys() - {"export.h"})
        example = (ROOT / "examples/sepia/CMakeLists.txt").read_text()  # which another test makes
        for line in re.findall(r"\w+(?:\(Algorithm .*|::\w+)", blocks(section(r"From C\+\+"), "cmake")[0]):
            self.assertIn(line, example)

    def test_curves(self):
        """The curves in the catalogue are what the tool draws today."""
        for name in re.findall(r"(?m)^### (\S+)", CATALOGUE):
            drawn = self.run_line(f"camera-effects curves {name} made.svg || true")
            plot = ROOT / f"docs/effects/{name}.svg"
            self.assertEqual("does not consist of curves" in drawn, not plot.exists(), name)
            if plot.exists():
                self.assertEqual((self.work / "made.svg").read_text(), plot.read_text())


unittest.main(argv=sys.argv[:1])
