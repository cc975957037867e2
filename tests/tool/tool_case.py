"""What the tests of camera-effects share: each runs as TEST.py TOOL ENGINE, in a folder of its own."""
import os
import subprocess
import sys
import tempfile
import unittest

ENGINE = os.path.abspath(sys.argv.pop(2))
TOOL = os.path.abspath(sys.argv.pop(1))


class ToolCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, "/")
        os.chdir(folder.name)

    def run_tool(self, *args, code=0, says="", **env):
        """stderr must be empty, or with `says` consist of lines of the tool's own, each once."""
        env = {k: v for k, v in os.environ.items() if k != "ALGORITHM_DEVICE_ROOT"} | env
        result = subprocess.run([TOOL, *args], env=env, capture_output=True, text=True)
        self.assertEqual(result.returncode, code, (args, result.stderr))
        self.assertRegex(result.stderr, rf"(?s)\A(?=(camera-effects: [^\n]*\n)+\Z).*{says}" if says else r"\A\Z", args)
        self.said = sorted(result.stderr.splitlines())
        self.assertEqual(len(self.said), len(set(self.said)))
        return result.stdout
