"""android_build_test.py CMAKE FOLDER: configures and compiles the preset android-arm64 in FOLDER, with
stand-ins for the NDK and for vcpkg, and looks at what the objects would need on a device."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = ROOT / "tests/android"
cmake, folder = sys.argv[1], pathlib.Path(sys.argv[2])

# What bionic has since API level 26 or before, as the C headers of this machine name it
# (__errno_location is bionic's __errno), the log, and the C++ runtime, which is linked in.
DEVICE_HAS = r"""
    calloc|clock_gettime|close|exit|fclose|fdopen|fopen|free|fstat|open|longjmp|malloc|memcmp|memcpy|memmove|memset|puts|_setjmp|strerror|strlen|
    snprintf|vsnprintf|exp|fma|fmaf|pow|__cxa_atexit|__dso_handle|__errno_location|__stack_chk_fail|
    pthread_(cond|mutex)_(init|destroy|lock|unlock|wait|signal|broadcast)|pthread_(create|join|exit)|
    __android_log_print|dladdr|dlopen|dlsym|dlerror|madvise|sysconf|
    _Unwind_Resume|__gxx_personality_v0|__cxa_.*|_Zn[wa]\w+|_Zd[la]\w+|_ZNK?St\w+|_ZSt\w+|_ZT[IVS]St\w+|
    jpeg_\w+|png_\w+|hwy_\w+"""


def configure(variant: str, **environment: str) -> pathlib.Path:
    build = folder / variant
    shutil.rmtree(build, ignore_errors=True)
    subprocess.run([cmake, "--preset", "android-arm64", "-B", build, "-DALGORITHM_WERROR=ON"], cwd=ROOT,
                   check=True, env=os.environ | {"ANDROID_NDK_ROOT": str(HERE / "ndk")} | environment)
    return build


def symbols(objects: list[pathlib.Path], which: str) -> set[str]:
    lines = subprocess.run(["nm", which, *objects], capture_output=True, text=True, check=True).stdout
    return {line.split()[-1] for line in lines.splitlines() if re.search(r" [A-Z] ", line)}


configure("vcpkg", VCPKG_ROOT=str(HERE / "vcpkg"))
build = configure("prefix")
subprocess.run([cmake, "--build", build, "--target", "algorithm_core", "algorithm_jni", "algorithm_jar"],
               check=True)
objects = sorted(build.rglob("*.o"))
needed = symbols(objects, "--undefined-only") - symbols(objects, "--defined-only")
known = re.compile(re.sub(r"\s", "", DEVICE_HAS))
faults = [f"{name} is not known to be on devices" for name in sorted(needed) if not known.fullmatch(name)]
faults += [f"{path.name} looks at ALGORITHM_DEVICE_ROOT" for path in objects
           if b"ALGORITHM_DEVICE_ROOT" in path.read_bytes()]
if len(needed) < 30 or not (build / "libAlgorithm.jar").exists():
    faults.append("the build is not complete")
sys.exit("\n".join(faults) or None)
