"""Runs the recipes of docs/many-photos.md under bad luck: recipes_test.py TOOL ENGINE"""
import hashlib
import json
import os
import random
import re
import signal
import subprocess
import threading
import time
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase

PAGE = (Path(__file__).resolve().parents[2] / "docs/many-photos.md").read_text(encoding="utf-8")
ENVIRONMENT = os.environ | {"PATH": f"{os.path.dirname(TOOL)}:{os.environ['PATH']}"}
COUNT = 60


def blocks(title):
    section = re.search(rf"(?ms)^## {title}\n(.*?)(?=^## |\Z)", PAGE)[1]
    return re.findall(r"(?ms)^```sh\n(.*?)^```", section)


class RecipesTest(ToolCase):
    def setUp(self):
        super().setUp()
        for i in range(COUNT):
            name = f"photos/{i % 3}/{i}.jpg"
            os.makedirs(os.path.dirname(name), exist_ok=True)
            if i % 10 == 9:
                Path(name).write_bytes(random.Random(i).randbytes(5000))
            else:
                Path("raw").write_bytes(random.Random(i).randbytes(640 * 480 * 3 // 2))
                self.run_tool("convert", "--size=640x480", "--from=nv21", "--to=jpg", "raw", name)
        os.mkdir("whole")
        self.run_tool("apply", "PrettySweet", "photos", "whole/photos", "--recursive", "--quiet", code=1, says="not a JPEG")
        self.whole = self.sums("whole")
        self.assertEqual(len(self.whole), COUNT * 9 // 10)

    def sums(self, folder):
        return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
                for path in Path(folder).rglob("*") if path.is_file()}

    def start(self, script):
        return subprocess.Popen(["bash", "-ec", script], env=ENVIRONMENT, start_new_session=True,
                                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)

    def kill_workers(self, run, times):
        """Ends tools that a run has started, while it is at work."""
        killed = 0
        while run.poll() is None and killed < times:
            for stat in Path("/proc").glob("[0-9]*/stat"):
                try:
                    pid, name, rest = re.match(r"(\d+) \((.*)\) (.*)", stat.read_text()).groups()
                except (OSError, AttributeError):
                    continue
                if name == "camera-effects" and int(rest.split()[3]) == run.pid and rest[0] != "Z":
                    time.sleep(0.02)
                    os.kill(int(pid), signal.SIGKILL)
                    killed += 1
                    break
            time.sleep(0.02)
        return killed

    def check_all_done(self):
        self.assertEqual(self.sums("sweet"), self.whole)
        states = {}
        for report in Path(".").glob("part-*.jsonl"):
            for line in report.read_text().splitlines():
                states[json.loads(line)["in"]] = json.loads(line)["code"]
        self.assertEqual(len(states), COUNT)
        self.assertEqual({name for name, code in states.items() if code != 0},
                         {f"photos/{i % 3}/{i}.jpg" for i in range(9, COUNT, 10)})
        self.assertEqual({code for code in states.values()}, {0, 3})

    def test_parallel_with_killed_workers(self):
        recipe, failures = blocks("GNU parallel, over several hosts")
        Path("hosts").write_text(":\n")
        run = self.start(recipe)
        self.assertEqual(self.kill_workers(run, 2), 2)  # both perhaps of one part, which has three tries
        run.communicate()
        self.assertIn(run.returncode, range(1, 9))  # so many parts have a bad photo
        self.check_all_done()
        subprocess.run(["bash", "-ec", failures], env=ENVIRONMENT, check=True, stdout=subprocess.DEVNULL)
        self.assertEqual(len(Path("failed.jsonl").read_text().splitlines()), COUNT // 10)

    def test_parallel_on_a_full_disk(self):
        recipe = blocks("GNU parallel, over several hosts")[0]
        Path("hosts").write_text(":\n")
        Path("recipe").write_text(recipe)
        script = ("mkdir sweet; mount -t tmpfs -o size=2m none sweet || exit 42; bash -e recipe && exit 43; "
                  "cat part-*.jsonl >full; find sweet -name '.*' >left; find sweet -type f | wc -l >first; "
                  "mount -o remount,size=99m sweet; bash -e recipe && exit 44; cp -a sweet kept; umount sweet; rmdir sweet; mv kept sweet")
        result = subprocess.run(["unshare", "-rm", "bash", "-c", script], env=ENVIRONMENT, capture_output=True, text=True)
        if result.returncode == 42 or result.stderr.startswith("unshare:"):
            self.skipTest("no mounts in this container")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn('"code":75', Path("full").read_text())
        self.assertEqual(Path("left").read_text(), "")
        self.assertIn(int(Path("first").read_text()), range(1, len(self.whole)))
        self.check_all_done()

    def test_one_machine(self):
        for script in blocks("One machine"):
            run = self.start(script.replace("-newermt 2020-01-01", ""))
            self.assertEqual((run.wait(), run.communicate()[1].count("not a JPEG")), (1, COUNT // 10))
        self.assertEqual({f"photos/{name}": value for name, value in self.sums("sweet").items()}, self.whole)
        self.assertEqual(set(self.sums("faint")), {name.replace(".jpg", "-sepia+PrettyPink.jpg") for name in self.whole})


unittest.main()
