"""android_build_test.py CMAKE FOLDER: builds the library for devices and for the emulator in FOLDER, as with
an NDK, and looks at what the objects would need there."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from stand_ins import HERE, MACHINES, StandIns, home

ROOT = HERE.parents[1]
cmake, folder = sys.argv[1], pathlib.Path(sys.argv[2])
PRESETS = {"arm64-v8a": "android-arm64", "x86_64": "android-x86_64"}
SDK = folder / "android-arm64/android/stubs/android_stubs.jar"
# What is refused: options, environment, what the message says.
REFUSED = [
    (["-DANDROID_ABI=armeabi-v7a"], {}, "ANDROID_ABI is 'armeabi-v7a'"),
    (["-DANDROID_PLATFORM=android-24"], {}, "ANDROID_PLATFORM is 'android-24', but must be android-26"),
    (["-DANDROID_STL=c++_shared"], {}, "ANDROID_STL is 'c++_shared', but must be"),
    ([], {"STAND_IN_NDK_MAJOR": "26"}, "is r26, which is too old"),
    ([f"-DCMAKE_PREFIX_PATH={folder}/newer-highway;{folder}/prefix-arm64-v8a"], {}, "is 1.4.0, but 1.0.3 or newer"),
]


def configure(abi: str, build: pathlib.Path, *options: str, **environment: str) -> subprocess.CompletedProcess:
    shutil.rmtree(build, ignore_errors=True)
    return subprocess.run([cmake, "--preset", PRESETS[abi], "-B", build, "-DALGORITHM_WERROR=ON", *options],
                          cwd=ROOT, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env=os.environ | {"ANDROID_NDK_ROOT": str(HERE / "ndk"), "STAND_INS": str(folder)}
                          | environment)


def make(build: pathlib.Path, *targets: str) -> None:
    subprocess.run([cmake, "--build", build, "--target", *targets], check=True)


def symbols(objects: list[pathlib.Path], which: str) -> set[str]:
    lines = subprocess.run(["nm", which, *objects], capture_output=True, text=True, check=True).stdout
    return {line.split()[-1] for line in lines.splitlines() if re.search(r" [A-Z] ", line)}


def build_library(abi: str):
    """Builds the library and says what it would miss on a device. The codecs for devices come from vcpkg,
    the emulator's from a prefix; Android's classes are those of the first build, for the second as if they were an SDK's."""
    stand_ins, build = StandIns(folder, abi), folder / PRESETS[abi]
    vcpkg = {"VCPKG_ROOT": str(HERE / "vcpkg")} if abi == "arm64-v8a" else {}
    prefix = [] if vcpkg else [f"-DCMAKE_PREFIX_PATH={stand_ins.prefix}", f"-DALGORITHM_ANDROID_JAR={SDK}"]
    result = configure(abi, build, *prefix, **vcpkg)
    if result.returncode:
        sys.exit(result.stdout)
    make(build, "algorithm_core", "algorithm_jni", "algorithm_jar", "algorithm_android_jar")
    objects = sorted(build.rglob("*.o"))
    needed = sorted(symbols(objects, "--undefined-only") - symbols(objects, "--defined-only"))
    unknown = [name for name in needed if not home(name)]
    yield from (f"{name}, for {abi}, is not known to be on devices" for name in unknown)
    yield from (f"{path.name} looks at ALGORITHM_DEVICE_ROOT" for path in objects
                if b"ALGORITHM_DEVICE_ROOT" in path.read_bytes())
    if len(needed) < 30:
        yield f"the build for {abi} is not complete"
    if not unknown:
        stand_ins.archive(needed)
        make(build, "Algorithm", "AlgorithmAndroid")


def refusals():
    newer = folder / "newer-highway/include/hwy"
    newer.mkdir(parents=True, exist_ok=True)
    (newer / "highway.h").write_text('#include "hwy/base.h"\n')
    (newer / "base.h").write_text("#define HWY_MAJOR 1\n#define HWY_MINOR 4\n#define HWY_PATCH 0\n")
    for options, environment, message in REFUSED:
        result = configure("arm64-v8a", folder / "refused", *options, **environment)
        if result.returncode == 0 or message not in re.sub(r"\s+", " ", result.stdout):
            yield f"{options} {environment} did not end with '{message}' but with\n{result.stdout}"


faults = [fault for abi in MACHINES for fault in build_library(abi)] + list(refusals())
sys.exit("\n".join(faults) or None)
