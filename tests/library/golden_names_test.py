"""Every exported image routine has a recorded checksum."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
NO_IMAGES = {"JNI entries", "Thread pool", "Effect pipeline"}
ARITHMETIC = {"max", "maxf"}
exports = (ROOT / "cmake/libAlgorithm.map").read_text(encoding="utf-8")
sums = (ROOT / "tests/unit/golden_sums.txt").read_text(encoding="utf-8")

sections = re.findall(r"^    /\* (.*) \*/\n((?:    .*\n)+?)(?=    /\*|  local)", exports, re.MULTILINE)
routines = {name for title, names in sections if title not in NO_IMAGES
            for name in re.findall(r'^ *"?([\w:]+)[^"]*"?;$', names, re.MULTILINE)}
missing = routines - ARITHMETIC - {line.split()[0] for line in sums.splitlines()}
if len(sections) != 7 or missing:
    sys.exit(f"{len(sections)} lists of exported names; without a checksum: {sorted(missing)}")
