"""check_library_test.py FAULTY_LIBRARY STRIP: the library check has to find every fault."""

import pathlib
import subprocess
import sys

CHECK = pathlib.Path(__file__).resolve().parents[2] / "scripts/check_library.py"
FAULTS = ["exports notInTheList(), which is not in the list", "does not export g_threadpool\n",
          "is aligned to 0x800, not to", "segment at 0x", "is writable and executable",
          "has no read-only relocations", "needs libz.so.1", "calls itself libfaulty.so",
          "is not bound when it is loaded", "has relocations in its code", "has the run path /elsewhere",
          "is larger than 409600 bytes when stripped"]

result = subprocess.run([sys.executable, CHECK, sys.argv[1], "linux", "--strip", sys.argv[2]],
                        capture_output=True, text=True)
missed = [fault for fault in FAULTS if fault not in result.stderr]
if missed or result.returncode != 1:
    sys.exit(f"exit code {result.returncode}, not found: {missed}, in\n{result.stderr}")
