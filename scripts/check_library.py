#!/usr/bin/python3
"""Checks a built libAlgorithm.so: what it exports, what it needs, how devices may map it.

usage: check_library.py LIBRARY {linux,android} [--strip COMMAND]
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
NAME = "libAlgorithm.so"
NEEDED = {
    "linux": {"libc.so.6", "libgcc_s.so.1", "libhwy.so.1", "libjpeg.so.62", "liblog.so.0", "libm.so.6",
              "libpng16.so.16", "libstdc++.so.6"},
    # The C++ runtime and the codecs are linked in.
    "android": {"libc.so", "libdl.so", "liblog.so", "libm.so"},
}
RUN_PATH = {"linux": r"/usr/lib/[a-z0-9_-]+/android:?", "android": ""}
ARM64_PAGE = 16 * 1024
LARGEST = 400 * 1024  # our own code only: in a Linux build the codecs are separate libraries


def run(*command: str) -> str:
    return subprocess.run(command, capture_output=True, text=True, check=True,
                          env=os.environ | {"LC_ALL": "C"}).stdout


def listed_exports() -> set[str]:
    """The exported names: declarations of C++ ones, as the linker demangles them."""
    text = (ROOT / "cmake/libAlgorithm.map").read_text(encoding="utf-8")
    text = text[text.index("global:"):text.index("local:")]
    return set(re.findall(r'^ *"?(\w[^"\n]*?)"?;$', text, re.MULTILINE))


def check_exports(library: str):
    listed = listed_exports()
    mangled = [line.split()[2] for line in run("nm", "-D", "--defined-only", library).splitlines()]
    exported = set(run("c++filt", *mangled).splitlines())
    for name in sorted(listed - exported):
        yield f"does not export {name}"
    for name in sorted(exported - listed):
        yield f"exports {name}, which is not in the list"


def check_segments(headers: str):
    arm64 = "AArch64" in headers
    segments = re.findall(r"^  ([A-Z_]+) +0x\w+ 0x(\w+) 0x\w+ 0x\w+ 0x(\w+) ([R W E]{3}) 0x(\w+)$",
                          headers, re.MULTILINE)
    kinds = [kind for kind, *_ in segments]
    page = ARM64_PAGE if arm64 else 4096
    if "LOAD" not in kinds:
        yield "has no LOAD segment"
    for kind, address, size, flags, alignment in segments:
        if kind == "LOAD" and int(alignment, 16) % page != 0:
            yield f"LOAD segment at 0x{address} is aligned to 0x{alignment}, not to {page} bytes"
        if "W" in flags and "E" in flags:
            yield f"{kind} segment at 0x{address} is writable and executable"
        if kind == "GNU_RELRO" and (int(address, 16) + int(size, 16)) % page != 0:
            yield "the relocated read-only data does not end on a page"
    if "GNU_STACK" not in kinds:
        yield "does not say that its stack is not executable"
    if "GNU_RELRO" not in kinds:
        yield "has no read-only relocations"


def check_dynamic(headers: str, platform: str):
    tags = re.findall(r"^ 0x\w+ \((\w+)\) +(?:.*\[(.*)\]|(.*))$", headers, re.MULTILINE)
    values = {tag: bracketed or plain for tag, bracketed, plain in tags}
    for tag, needed, _ in tags:
        if tag == "NEEDED" and needed not in NEEDED[platform]:
            yield f"needs {needed}"
    if values.get("SONAME") != NAME:
        yield f"calls itself {values.get('SONAME')}"
    if "BIND_NOW" not in values.get("FLAGS", "") and "NOW" not in values.get("FLAGS_1", ""):
        yield "is not bound when it is loaded"
    if "TEXTREL" in values or "TEXTREL" in values.get("FLAGS", ""):
        yield "has relocations in its code"
    for tag in ("RPATH", "RUNPATH"):
        if not re.fullmatch(RUN_PATH[platform], values.get(tag, "")) and tag in values:
            yield f"has the run path {values[tag]}"


def check_size(library: str, platform: str, strip: str):
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder, NAME)
        run(strip, "-o", str(stripped), library)
        size = stripped.stat().st_size
    print(f"{library}: {size} bytes stripped")
    if platform == "linux" and size > LARGEST:
        yield f"is larger than {LARGEST} bytes when stripped"


def check(library: str, platform: str, strip: str) -> list[str]:
    """The library's faults, one line each."""
    headers = run("readelf", "-hldW", library)
    return [*check_exports(library), *check_segments(headers), *check_dynamic(headers, platform),
            *check_size(library, platform, strip)]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("platform", choices=NEEDED)
    parser.add_argument("--strip", default="strip", help="the strip command of the library's machine")
    options = parser.parse_args()
    wrong = check(options.library, options.platform, options.strip)
    for line in wrong:
        print(f"{options.library}: {line}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
