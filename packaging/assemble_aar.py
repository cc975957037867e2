#!/usr/bin/python3
"""Assembles an AAR with prefab metadata from a build folder, and verifies it.

usage: assemble_aar.py BUILD_FOLDER [--output FILE] [--desk]

BUILD_FOLDER is that of the preset android-arm64; it holds libAlgorithm.so and libAlgorithm.jar. The
archive, algorithm-VERSION.aar in the build folder, is the same for the same contents.
"""

import argparse
import io
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
import check_library  # noqa: E402  (it lives beside the other scripts)

ABI = "arm64-v8a"
PACKAGE = "com.orvik.camera.common.Native"
LIBRARY = check_library.NAME
LIBRARY_PLACES = (f"jni/{ABI}/{LIBRARY}", f"prefab/modules/Algorithm/libs/android.{ABI}/{LIBRARY}")
HEADERS = "prefab/modules/Algorithm/include/"

MANIFEST = """<?xml version="1.0" encoding="utf-8"?>
<manifest xmlns:android="http://schemas.android.com/apk/res/android" package="{package}">
    <uses-sdk android:minSdkVersion="{api}"/>
</manifest>
"""
# Natives are found by class and method name: neither may be renamed or dropped.
PROGUARD = f"-keep class {PACKAGE}.** {{ *; }}\n"


def read_cache(build: pathlib.Path) -> dict[str, str]:
    text = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return dict(re.findall(r"^([\w-]+):\w+=(.*)$", text, re.MULTILINE))


def contents(build: pathlib.Path, cache: dict[str, str]) -> dict[str, bytes]:
    """Every file of the archive."""
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder, LIBRARY)
        subprocess.run([cache["CMAKE_STRIP"], "--strip-unneeded", "-o", stripped, build / LIBRARY], check=True)
        library = stripped.read_bytes()
    api, ndk = int(cache["ALGORITHM_ANDROID_API"]), int(cache["ALGORITHM_ANDROID_NDK"])
    texts = {
        "AndroidManifest.xml": MANIFEST.format(package=PACKAGE, api=api),
        "R.txt": "",
        "proguard.txt": PROGUARD,
        "prefab/prefab.json": json.dumps({"schema_version": 2, "name": "algorithm",
                                          "version": cache["CMAKE_PROJECT_VERSION"], "dependencies": []}),
        "prefab/modules/Algorithm/module.json": json.dumps({"export_libraries": []}),
        f"prefab/modules/Algorithm/libs/android.{ABI}/abi.json": json.dumps(
            {"abi": ABI, "api": api, "ndk": ndk, "stl": "c++_static", "static": False}),
    }
    files = {name: text.encode() for name, text in texts.items()}
    files |= {place: library for place in LIBRARY_PLACES}
    files["classes.jar"] = (build / "libAlgorithm.jar").read_bytes()
    for header in sorted((ROOT / "include").rglob("*.h")):
        files[HEADERS + header.relative_to(ROOT / "include").as_posix()] = header.read_bytes()
    return files


def write(archive: pathlib.Path, files: dict[str, bytes]) -> None:
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED) as target:
        for name in sorted(files):
            target.writestr(zipfile.ZipInfo(name), files[name], zipfile.ZIP_DEFLATED)


def verify(archive: pathlib.Path, cache: dict[str, str], platform: str):
    """What is wrong with an archive, read as its users' tools do."""
    with zipfile.ZipFile(archive) as source:
        files = {name: source.read(name) for name in source.namelist()}
    required = {"AndroidManifest.xml", "R.txt", "classes.jar", "prefab/prefab.json", *LIBRARY_PLACES}
    if missing := required - files.keys():
        yield f"lacks {sorted(missing)}"
        return
    android = "{http://schemas.android.com/apk/res/android}"
    api = int(xml.fromstring(files["AndroidManifest.xml"]).find("uses-sdk").get(android + "minSdkVersion"))
    if json.loads(files["prefab/prefab.json"])["version"] != cache["CMAKE_PROJECT_VERSION"]:
        yield "prefab.json has another version"
    for module in {name.split("/")[2] for name in files if name.startswith("prefab/modules/")}:
        folder = f"prefab/modules/{module}"
        abi = json.loads(files[f"{folder}/libs/android.{ABI}/abi.json"])
        if (abi["abi"], abi["api"]) != (ABI, api) or abi["ndk"] < 26:
            yield f"abi.json of {module} does not fit the manifest"
        # The library is the module's name between "lib" and ".so" unless module.json says otherwise.
        if f"{folder}/libs/android.{ABI}/lib{module}.so" not in files:
            yield f"{module} has no library"
    if len({files[place] for place in LIBRARY_PLACES}) != 1:
        yield "the two libraries differ"
    for header, text in files.items():
        if header.startswith(HEADERS):
            for included in re.findall(rb'#include "(.*)"', text):
                if HEADERS + included.decode() not in files:
                    yield f"{header} includes {included.decode()}, which is not there"
    with zipfile.ZipFile(io.BytesIO(files["classes.jar"])) as jar:
        classes = {name.removesuffix(".class").rpartition("/")[2] for name in jar.namelist()
                   if name.startswith(PACKAGE.replace(".", "/"))}
    prefix = "Java_" + PACKAGE.replace(".", "_") + "_"
    for name in check_library.listed_exports():
        if name.startswith(prefix) and name.removeprefix(prefix).split("_")[0] not in classes:
            yield f"classes.jar lacks the class of {name}"
    with tempfile.TemporaryDirectory() as folder:
        library = pathlib.Path(folder, LIBRARY)
        library.write_bytes(files[LIBRARY_PLACES[0]])
        if ".debug_info" in check_library.run("readelf", "-SW", str(library)):
            yield "the library is not stripped"
        yield from check_library.check(str(library), platform, cache["CMAKE_STRIP"])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path, help="build folder of the preset android-arm64")
    parser.add_argument("--output", type=pathlib.Path, help="archive to write")
    parser.add_argument("--desk", action="store_true",
                        help="take a build for arm64 Linux (preset arm64): tries the layout, runs on no device")
    options = parser.parse_args()
    for name in ("CMakeCache.txt", LIBRARY, "libAlgorithm.jar"):
        if not (options.build / name).exists():
            print(f"{options.build} has no {name}", file=sys.stderr)
            return 1
    cache = read_cache(options.build)
    if options.desk:
        cache = {"ALGORITHM_ANDROID_API": "26", "ALGORITHM_ANDROID_NDK": "26"} | cache
    elif "ALGORITHM_ANDROID_API" not in cache:
        print(f"{options.build} is no build of the preset android-arm64", file=sys.stderr)
        return 1
    archive = options.output or options.build / f"algorithm-{cache['CMAKE_PROJECT_VERSION']}.aar"
    write(archive, contents(options.build, cache))
    faults = list(verify(archive, cache, "linux" if options.desk else "android"))
    for fault in faults:
        print(f"{archive}: {fault}", file=sys.stderr)
    if faults:
        archive.unlink()
        return 1
    print(f"{archive}: {archive.stat().st_size} bytes, verified")
    return 0


if __name__ == "__main__":
    sys.exit(main())
