#!/usr/bin/python3
"""Checks a built library: what it exports, what it needs, how devices may map it.

usage: check_library.py LIBRARY {linux,android} [--strip COMMAND] [--map FILE]

LIBRARY is libAlgorithm.so, as which files of unknown names count, or libAlgorithmAndroid.so. It may come
from GNU's linker or from LLVM's. With the link map that the latter has written, the mark of branch protection
is checked, too.
"""

import argparse
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
NAME = "libAlgorithm.so"


@dataclasses.dataclass(frozen=True)
class Limits:
    """What a library may need, and how large it may be when stripped."""
    linux: set[str]
    android: set[str]
    largest: int


LIBRARIES = {
    # For Android the C++ runtime and the codecs are linked in; a Linux build, which has its size checked,
    # has them as libraries of their own.
    NAME: Limits({"libc.so.6", "libgcc_s.so.1", "libjpeg.so.62", "liblog.so.0", "libm.so.6",
                  "libpng16.so.16", "libstdc++.so.6"},
                 {"libc.so", "libdl.so", "liblog.so", "libm.so"}, 400 * 1024),
    "libAlgorithmAndroid.so": Limits({"libc.so.6", "libjnigraphics.so"},
                                     {"libc.so", "libdl.so", "libjnigraphics.so", "libm.so"}, 80 * 1024),
}
RUN_PATH = {"linux": r"/usr/lib/[a-z0-9_-]+/android:?", "android": ""}
PAGE = 16 * 1024  # the largest of devices and of the emulator
DESK_PAGE = 4096
PROTECTED = re.compile(r"AArch64 feature: .*BTI, PAC")


def run(*command: str, folder: pathlib.Path | None = None, strict: bool = True) -> str:
    return subprocess.run(command, capture_output=True, text=True, check=strict, cwd=folder,
                          env=os.environ | {"LC_ALL": "C"}).stdout


def name_of(library: str) -> str:
    """Which one a file counts as."""
    name = pathlib.Path(library).name
    return name if name in LIBRARIES else NAME


def listed_exports(name: str) -> set[str]:
    """The exported names: declarations of C++ ones, as the linker demangles them."""
    text = (ROOT / "cmake" / name).with_suffix(".map").read_text(encoding="utf-8")
    text = text[text.index("global:"):text.index("local:")]
    return set(re.findall(r'^ *"?(\w[^"\n]*?)"?;$', text, re.MULTILINE))


def check_exports(library: str):
    listed = listed_exports(name_of(library))
    mangled = [line.split()[2] for line in run("nm", "-D", "--defined-only", library).splitlines()]
    exported = set(run("c++filt", *mangled).splitlines())
    for name in sorted(listed - exported):
        yield f"does not export {name}"
    for name in sorted(exported - listed):
        yield f"exports {name}, which is not in the list"


def check_segments(headers: str, platform: str):
    # Linkers differ in what they say of the segments without contents, such as the stack's alignment.
    segments = re.findall(r"^  ([A-Z_]+) +0x\w+ (0x\w+) 0x\w+ 0x\w+ (0x\w+) ([R W E]{3}) (0x\w+|0)$",
                          headers, re.MULTILINE)
    kinds = [kind for kind, *_ in segments]
    if len(segments) != int(re.search(r"Number of program headers: +(\d+)", headers)[1]):
        yield f"has segments beside {kinds}, which this check can't read"
    page = PAGE if platform == "android" or "AArch64" in headers else DESK_PAGE
    if "LOAD" not in kinds:
        yield "has no LOAD segment"
    for kind, address, size, flags, alignment in segments:
        if kind == "LOAD" and (int(alignment, 0) < page or int(alignment, 0) % page):
            yield f"LOAD segment at {address} is aligned to {alignment}, not to {page} bytes"
        if "W" in flags and "E" in flags:
            yield f"{kind} segment at {address} is writable and executable"
        if kind == "GNU_RELRO" and (int(address, 0) + int(size, 0)) % page != 0:
            yield f"the relocated read-only data ends at {int(address, 0) + int(size, 0):#x}, not on a page"
    if "GNU_STACK" not in kinds:
        yield "does not say that its stack is not executable"
    if "GNU_RELRO" not in kinds:
        yield "has no read-only relocations"


def linked_objects(link_map: pathlib.Path) -> dict[str, bool]:
    """What a library is made of, as a link map of LLD names it, and whether it has branch protection."""
    text = link_map.read_text(encoding="utf-8")
    linked = set(re.findall(r"^ *\w+ +\w+ +\w+ +\d+ +(/?[\w.][^\n:]*\.o\)?):\(", text, re.MULTILINE))
    files = sorted({re.sub(r"\([^)]*\)$", "", name) for name in linked})
    # With several files readelf names each object and each member of an archive.
    listing = run("readelf", "-nW", "/dev/null", *files, folder=link_map.parent, strict=False)
    notes = dict(re.findall(r"^File: (.*)\n((?:(?!File: ).*\n?)*)", listing, re.MULTILINE))
    return {name: bool(PROTECTED.search(notes.get(name, ""))) for name in linked}


def check_protection(library: str, link_map: pathlib.Path):
    """The linker keeps the mark of branch protection if all objects have it; our own must."""
    linked = linked_objects(link_map)
    lacking = sorted(name for name, protected in linked.items() if not protected)
    own = re.compile(r"(\w+/)*CMakeFiles/")
    if not any(own.match(name) for name in linked):
        yield f"is made of objects that {link_map} does not name"
    yield from (f"is made of {name}, which has no branch protection" for name in lacking if own.match(name))
    if lacking:
        print(f"{library}: no branch protection (BTI, PAC), since {len(lacking)} objects lack it: "
              f"{', '.join(lacking[:5])}")
    elif not PROTECTED.search(run("readelf", "-nW", library)):
        yield "has no mark of branch protection, though all its objects have it"


def check_dynamic(name: str, headers: str, platform: str):
    tags = re.findall(r"^ 0x\w+ \((\w+)\) +(?:.*\[(.*)\]|(.*))$", headers, re.MULTILINE)
    values = {tag: bracketed or plain for tag, bracketed, plain in tags}
    for tag, needed, _ in tags:
        if tag == "NEEDED" and needed not in getattr(LIBRARIES[name], platform):
            yield f"needs {needed}"
    if values.get("SONAME") != name:
        yield f"calls itself {values.get('SONAME')}"
    if "BIND_NOW" not in values.get("FLAGS", "") and "NOW" not in values.get("FLAGS_1", ""):
        yield "is not bound when it is loaded"
    if "TEXTREL" in values or "TEXTREL" in values.get("FLAGS", ""):
        yield "has relocations in its code"
    for tag in ("RPATH", "RUNPATH"):
        if not re.fullmatch(RUN_PATH[platform], values.get(tag, "")) and tag in values:
            yield f"has the run path {values[tag]}"


def check_size(library: str, strip: str):
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder, "stripped")
        run(strip, "-o", str(stripped), library)
        size = stripped.stat().st_size
    print(f"{library}: {size} bytes stripped")
    largest = LIBRARIES[name_of(library)].largest
    if size > largest:
        yield f"is larger than {largest} bytes when stripped"


def check(library: str, platform: str, strip: str = "strip", link_map: pathlib.Path | None = None) -> list[str]:
    """The library's faults, one line each."""
    headers = run("readelf", "-hldW", library)
    protection = check_protection(library, link_map) if link_map and "AArch64" in headers else []
    return [*check_exports(library), *check_segments(headers, platform),
            *check_dynamic(name_of(library), headers, platform),
            *(check_size(library, strip) if platform == "linux" else []), *protection]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("platform", choices=RUN_PATH)
    parser.add_argument("--strip", default="strip", help="the strip command of the library's machine")
    parser.add_argument("--map", type=pathlib.Path, help="the link map, in the folder that was linked in")
    options = parser.parse_args()
    wrong = check(options.library, options.platform, options.strip, options.map)
    for line in wrong:
        print(f"{options.library}: {line}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
