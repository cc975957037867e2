"""Checks that includes go one way only: each folder may include itself and the folders named here."""

import pathlib
import re
import subprocess
import sys

PUBLIC = "include/libalgorithm"
ALLOWED = {
    PUBLIC: {PUBLIC},
    "base": {"base"},
    "platform": {"base", "kernels"},
    "kernels": {"base"},
    "catalogue": {"base"},
    "convert": {"base", "kernels", PUBLIC},
    "camerautil": {"base", "catalogue", "kernels", PUBLIC},
    "threadpool": {"base", "platform", PUBLIC},
    "pretty": {"base", "catalogue", "kernels", PUBLIC},
    "classic": {"base", "catalogue", "platform", "kernels", PUBLIC},
    "codec": {"base", "platform"},
    "sfb": {"base", "platform"},
    "effect": {"base", "catalogue", "platform", "kernels", "convert", "threadpool", "pretty", PUBLIC},
    "android": {PUBLIC},
    "images": {"base", "catalogue", "platform", "kernels", "convert", "camerautil", "threadpool", "pretty", "codec",
               PUBLIC},
    "jni": {"base", "platform", "catalogue", "codec", "sfb", "effect", "images", PUBLIC},
}
# The tool's folders, each of which may include itself and those before it; and everything but jni.
TOOL = ["shell", "files", "metadata", "photos", "effects", "batch", "frames", "gallery", "commands", "."]


def folder_of(path: str) -> str:
    return PUBLIC if path.startswith(("libalgorithm/", PUBLIC)) else path.split("/")[0]


def tool_level(path: str) -> int:
    parts = path.split("/")
    return TOOL.index(parts[1] if len(parts) > 2 else ".")


def main() -> int:
    files = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], capture_output=True, text=True, check=True)
    wrong = 0
    for name in files.stdout.split():
        folder = folder_of(name)
        text = pathlib.Path(name).read_text(encoding="utf-8")
        for number, line in enumerate(text.splitlines(), 1):
            include = re.match(r'#include "([^"]+)"', line)
            if not include or include[1].startswith("hwy/"):
                continue
            target = folder_of(include[1])
            # Tools, tests and benchmarks, which are not listed, may include anything but jni.
            forbidden = target not in ALLOWED[folder] if folder in ALLOWED else target == "jni"
            if target == folder == "tools":
                forbidden = tool_level(include[1]) > tool_level(name)
            elif target == folder:
                forbidden = False
            if forbidden:
                print(f"{name}:{number}: must not include {include[1]}", file=sys.stderr)
                wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
