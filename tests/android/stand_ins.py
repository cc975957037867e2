"""What the stand-in for the NDK links with: libraries that have the names of device_names.txt and do
nothing. A device's are shared; codecs and C++ runtime are archives of what some objects call."""

import pathlib
import re
import shutil
import subprocess
from collections.abc import Iterable

HERE = pathlib.Path(__file__).resolve().parent
# Folder names of this machine's packages.
MACHINES = {"arm64-v8a": "aarch64", "x86_64": "x86_64"}
JNIGRAPHICS = HERE / "stubs/jnigraphics/android/bitmap.h"
RUNTIME = ("libc++_static.a", "libc++abi.a")
DOCUMENTS = {"libjpeg-turbo": "libjpeg62-turbo-dev", "libpng": "libpng-dev", "zlib": "zlib1g-dev",
             "highway": "libhwy-dev"}
TRIPLET = (HERE.parents[1] / "cmake/triplets/arm64-android-26.cmake").read_text(encoding="utf-8")
CODEC_FLAGS = re.findall(r"VCPKG_C_FLAGS (\S+)\)", TRIPLET)


def device_names() -> dict[str, list[str]]:
    text = re.sub(r"^#.*\n", "", (HERE / "device_names.txt").read_text(encoding="utf-8"), flags=re.MULTILINE)
    sections = re.split(r"^\[(.*)\]$", text, flags=re.MULTILINE)
    return {library: names.split() for library, names in zip(sections[1::2], sections[2::2])}


def home(name: str) -> str | None:
    """The library that a name belongs to."""
    return next((library for library, names in device_names().items()
                 if any(re.fullmatch(known, name) for known in names)), None)


class StandIns:
    """Those of one ABI, in a folder of theirs."""

    def __init__(self, folder: pathlib.Path, abi: str):
        self.abi, self.target = abi, f"{MACHINES[abi]}-linux-android26"
        self.sysroot, self.prefix = folder / f"sysroot-{abi}", folder / f"prefix-{abi}"
        for root in (self.sysroot, self.prefix):
            shutil.rmtree(root, ignore_errors=True)
        self.libraries = self.sysroot / "usr/lib"
        for header in [*pathlib.Path("/usr/include/android/android").iterdir(), JNIGRAPHICS]:
            self._link(f"usr/include/android/{header.name}", str(header), self.sysroot)
        self._link("usr/include/jni.h", "/usr/include/android/nativehelper/jni.h", self.sysroot)
        for header in ("jpeglib.h", "jmorecfg.h", "jerror.h", "png.h", "pngconf.h", "pnglibconf.h", "zlib.h",
                       "zconf.h", "hwy"):
            self._link(f"include/{header}", f"/usr/include/{header}", self.prefix)
        self._link("include/jconfig.h", f"/usr/include/{MACHINES[abi]}-linux-gnu/jconfig.h", self.prefix)
        for name, package in DOCUMENTS.items():
            self._link(f"share/{name}/copyright", f"/usr/share/doc/{package}/copyright", self.prefix)
        for library, names in device_names().items():
            if library.endswith(".so"):
                self._compile(names, self._place(library), ["-shared", f"-Wl,-soname,{library}"])
        self.archive([])
        (folder / "NOTICE").unlink(missing_ok=True)
        self._link("NOTICE", "/usr/share/doc/libc++-16-dev/copyright", folder)

    def archive(self, needed: Iterable[str], flags: list[str] | None = None) -> None:
        """Makes the archives anew, of what is needed of them; without flags with those of vcpkg's."""
        flags = CODEC_FLAGS if flags is None else flags
        for library in device_names():
            if library.endswith(".a"):
                stub = self._place(library).with_suffix(".o")
                own = [name for name in needed if home(name) == library]
                self._compile([*own, f"stub_{stub.stem.replace('+', 'x')}"], stub, ["-c"],
                              flags if self.abi == "arm64-v8a" else [])
                self._place(library).unlink(missing_ok=True)
                subprocess.run([f"{MACHINES[self.abi]}-linux-gnu-ar", "rcs", self._place(library), stub], check=True)

    def _place(self, library: str) -> pathlib.Path:
        folder = self.libraries if library.endswith(".so") or library in RUNTIME else self.prefix / "lib"
        folder.mkdir(parents=True, exist_ok=True)
        return folder / library

    def _link(self, name: str, target: str, root: pathlib.Path) -> None:
        (root / name).parent.mkdir(parents=True, exist_ok=True)
        (root / name).symlink_to(target)

    def _compile(self, names: list[str], output: pathlib.Path, what: list[str], flags: list[str] = ()) -> None:
        source = "".join(f"void {name}(void) {{}}\n" for name in names)
        subprocess.run(["clang-16", f"--target={self.target}", "-fuse-ld=lld", "-nostdlib", "-fPIC", "-w",
                        "-fno-builtin", "-ffreestanding", *flags, *what, "-x", "c", "-", "-o", output],
                       input=source, text=True, check=True)
