#!/usr/bin/python3
"""Writes cmake/libAlgorithm.map: what the library exports is what its headers mark with ALGORITHM_API.

usage: exports.py BUILD_FOLDER [--check]

Reads the marks from the objects of a build, so that declarations are made once, in the headers. With
--check it writes nothing, and fails when the list differs from what it would write. The list is part of the
repository: a line in its diff is a name that callers gain or lose.
"""

import os
import pathlib
import re
import subprocess
import sys

MAP = pathlib.Path(__file__).resolve().parent.parent / "cmake/libAlgorithm.map"
FOLDERS = {
    "jni": "JNI entries", "convert": "Converters", "camerautil": "CameraUtil", "threadpool": "Thread pool",
    "effect": "Effect pipeline", "pretty": "Pretty filters, temperature, resize, blurs",
    "classic": "Classic effects"}
HEAD = """/* Every exported name. Written by scripts/exports.py from what the headers mark with ALGORITHM_API; a
   test compares it with the built library. */
{
  global:
"""


def run(*command: str, text: str | None = None) -> str:
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True,
                          env=os.environ | {"LC_ALL": "C"}).stdout


def marked(folder: pathlib.Path) -> set[str]:
    """Names that a folder's objects define with default visibility; inline ones belong to no folder."""
    objects = sorted(map(str, folder.glob("*.o")))
    rows = re.findall(r"^ *\d+: \w+ +\w+ +\w+ +GLOBAL +DEFAULT +\d+ (\S+)$",
                      run("readelf", "-sW", *objects) if objects else "", re.MULTILINE)
    return set(rows)


def listing(build: pathlib.Path) -> str:
    text = HEAD
    for folder, title in FOLDERS.items():
        target = "algorithm_jni" if folder == "jni" else "algorithm_core"
        names = sorted(marked(build / f"CMakeFiles/{target}.dir" / folder))
        plain = [name for name in names if not name.startswith("_Z")]
        mangled = [name for name in names if name.startswith("_Z")]
        # A constructor's variants have one declaration.
        declared = sorted(set(run("c++filt", text="\n".join(mangled)).splitlines()))
        text += f"    /* {title} */\n" + "".join(f"    {name};\n" for name in plain)
        if declared:
            text += '    extern "C++" {\n' + "".join(f'      "{name}";\n' for name in declared) + "    };\n"
    return text + "  local: *;\n};\n"


def main() -> int:
    text = listing(pathlib.Path(sys.argv[1]))
    if sys.argv[2:] != ["--check"]:
        MAP.write_text(text, encoding="utf-8")
        return 0
    if text == MAP.read_text(encoding="utf-8"):
        return 0
    print(f"{MAP.name} is not what the headers say; scripts/exports.py {sys.argv[1]} writes it", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
