"""Every exported image routine has a recorded checksum."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
exports = (ROOT / "cmake/libAlgorithm.map").read_text(encoding="utf-8")
sums = (ROOT / "tests/unit/golden_sums.txt").read_text(encoding="utf-8")

sections = re.findall(r"/\* Image routines: .*\n((?:    \w+;.*\n)+)", exports)
routines = {declaration.split("(")[0] or name for name, declaration in
            re.findall(r"^    (\w+);(?: /\* (.*) \*/)?$", "".join(sections), re.MULTILINE)}
missing = routines - {line.split()[0] for line in sums.splitlines()}
if len(sections) < 3 or missing:
    sys.exit(f"{len(sections)} lists of image routines; without a checksum: {sorted(missing)}")
