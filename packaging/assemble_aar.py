#!/usr/bin/python3
"""Assembles an AAR of the builds for Android, with all that belongs to it, and verifies it.

usage: assemble_aar.py BUILD_FOLDER... [--output FOLDER]

The build folders are those of the presets android-arm64 and android-x86_64, one or both, each with
libAlgorithm.so, libAlgorithmAndroid.so and a jar of either. What is written is a Maven repository, build/maven unless told
otherwise, that Gradle takes an archive from: the AAR, its POM and Gradle metadata, sources, API pages and
native symbols. They are the same for the same contents.
"""

import argparse
import dataclasses
import functools
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import maven
import verify_aar
from maven import zipped
from verify_aar import HEADERS, JNI, LIBRARIES, LIBRARY, METADATA, NOTICE, PACKAGE, PREFAB, ROOT, SOURCES

MANIFEST = """<?xml version="1.0" encoding="utf-8"?>
<manifest xmlns:android="http://schemas.android.com/apk/res/android" package="{package}">
    <uses-sdk android:minSdkVersion="{api}"/>
</manifest>
"""
# What shrinkers may not rename: natives are found by the names of their class and their own. What an
# application does not use may go.
CONSUMER_RULES = f"-keepclasseswithmembernames class {PACKAGE}.** {{\n    native <methods>;\n}}\n"
# Nothing is asked of the application's tools: no resources, no Java library that older devices lack.
AAR_METADATA = """aarFormatVersion=1.0
aarMetadataVersion=1.0
minCompileSdk=1
minCompileSdkExtension=0
minAndroidGradlePluginVersion=1.0.0
coreLibraryDesugaringEnabled=false
"""
JARS = [name.replace(".so", ".jar") for name in LIBRARIES]
NOTICE_HEAD = """Linked into libAlgorithm.so, each with its own licence, which follows:
{names}
"""


class Unfit(Exception):
    """A build that no archive can be made of."""


@dataclasses.dataclass(frozen=True)
class Build:
    """A build for one ABI."""
    folder: pathlib.Path

    @functools.cached_property
    def cache(self) -> dict[str, str]:
        for name in ("CMakeCache.txt", *LIBRARIES, *JARS):
            if not (self.folder / name).exists():
                raise Unfit(f"{self.folder} has no {name}")
        text = (self.folder / "CMakeCache.txt").read_text(encoding="utf-8")
        cache = dict(re.findall(r"^([\w-]+):\w+=(.*)$", text, re.MULTILINE))
        if "ALGORITHM_ANDROID_API" not in cache:
            raise Unfit(f"{self.folder} is no build of the presets android-arm64 and android-x86_64")
        return cache

    @property
    def abi(self) -> str:
        return self.cache["ALGORITHM_ANDROID_ABI"]

    @property
    def common(self) -> dict[str, str]:
        """What all ABIs of an archive must have in common."""
        return {what: self.cache[name] for what, name in (
            ("version", "CMAKE_PROJECT_VERSION"), ("API level", "ALGORITHM_ANDROID_API"),
            ("NDK", "ALGORITHM_ANDROID_NDK"))}

    def stripped(self, library: str, option: str) -> bytes:
        """What strip makes of a library."""
        with tempfile.TemporaryDirectory() as folder:
            output = pathlib.Path(folder, library)
            subprocess.run([self.cache["ALGORITHM_ANDROID_STRIP"], option, "-o", output, self.folder / library],
                           check=True)
            return output.read_bytes()

    def classes(self) -> dict[str, bytes]:
        jars = [maven.unzipped((self.folder / name).read_bytes()) for name in JARS]
        return {name: content for jar in jars for name, content in jar.items() if name.endswith(".class")}

    def notice(self) -> bytes:
        texts = dict(notice.split("=", 1) for notice in self.cache["ALGORITHM_NOTICES"].split(";"))
        for name, place in texts.items():
            if place.endswith("-NOTFOUND"):
                option = re.sub(r"\W", "_", name).upper()
                raise Unfit(f"{self.folder} has no licence text of {name}: configure it with "
                            f"-DALGORITHM_LICENCE_{option}=FILE")
        parts = [NOTICE_HEAD.format(names="\n".join(f"- {name}" for name in texts)).encode()]
        for name, place in texts.items():
            parts.append(f"\n{'=' * 78}\n{name}\n{'=' * 78}\n\n".encode() + pathlib.Path(place).read_bytes())
        return b"".join(parts)


def check_alike(builds: list[Build]) -> None:
    first = builds[0]
    for build in builds[1:]:
        if build.abi in {other.abi for other in builds if other is not build}:
            raise Unfit(f"two builds are for {build.abi}")
        for what, value in build.common.items():
            if value != first.common[what]:
                raise Unfit(f"{build.folder} has {what} {value}, {first.folder} has {first.common[what]}")
        if build.classes() != first.classes():
            raise Unfit(f"{build.folder} and {first.folder} have different classes")


def aar(builds: list[Build]) -> dict[str, bytes]:
    """Every file of the archive."""
    version, api, ndk = builds[0].common.values()
    texts = {
        "AndroidManifest.xml": MANIFEST.format(package=PACKAGE, api=api),
        "R.txt": "",
        METADATA: AAR_METADATA,
        "proguard.txt": CONSUMER_RULES,
        f"{PREFAB}prefab.json": json.dumps({"schema_version": 2, "name": maven.ARTIFACT, "version": version,
                                            "dependencies": []}),
        f"{PREFAB}modules/Algorithm/module.json": json.dumps({"export_libraries": []}),
    }
    files = {}
    for build in builds:
        place = f"{PREFAB}modules/Algorithm/libs/android.{build.abi}/"
        for library in LIBRARIES:
            files[f"{JNI}{build.abi}/{library}"] = build.stripped(library, "--strip-unneeded")
        files[place + LIBRARY] = files[f"{JNI}{build.abi}/{LIBRARY}"]  # the other one has nothing to call
        # The C++ runtime is linked in and hidden, so that callers may use whichever they like. Prefab
        # lets them only when it is told that there is none.
        texts[place + "abi.json"] = json.dumps(
            {"abi": build.abi, "api": int(api), "ndk": int(ndk), "stl": "none", "static": False})
    files |= {name: text.encode() for name, text in texts.items()}
    files["classes.jar"] = zipped(builds[0].classes())
    files[NOTICE] = builds[0].notice()
    for header in sorted((ROOT / "include").rglob("*.h")):
        files[HEADERS + header.relative_to(ROOT / "include").as_posix()] = header.read_bytes()
    return files


def javadoc(build: Build) -> dict[str, bytes]:
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([build.cache["Java_JAVADOC_EXECUTABLE"], "-quiet", "-notimestamp", "-encoding", "UTF-8",
                        "-d", folder, "-sourcepath", ":".join(map(str, [*SOURCES, ROOT / "java/compile_only"])),
                        "-classpath", build.cache["ALGORITHM_ANDROID_CLASSES"], PACKAGE], check=True)
        return maven.tree(pathlib.Path(folder))


def assemble(builds: list[Build], repository: pathlib.Path) -> None:
    symbols = {f"{build.abi}/{library}.dbg": build.stripped(library, "--only-keep-debug")
               for build in builds for library in LIBRARIES}
    sources = {name: text for folder in SOURCES for name, text in maven.tree(folder, "com/**/*.java").items()}
    maven.publish(repository, builds[0].cache["CMAKE_PROJECT_VERSION"], {
        ".aar": zipped(aar(builds)),
        "-sources.jar": zipped(sources),
        "-javadoc.jar": zipped(javadoc(builds[0])),
        "-native-debug-symbols.zip": zipped(symbols),
    })


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("builds", type=pathlib.Path, nargs="+", metavar="BUILD_FOLDER",
                        help="build folder of the preset android-arm64 or android-x86_64")
    parser.add_argument("--output", type=pathlib.Path, default=ROOT / "build/maven",
                        help="repository to write, build/maven by default")
    options = parser.parse_args()
    builds = [Build(folder) for folder in options.builds]
    try:
        check_alike(builds)
        assemble(builds, options.output)
    except Unfit as fault:
        print(fault, file=sys.stderr)
        return 1
    version = builds[0].cache["CMAKE_PROJECT_VERSION"]
    folders = {build.abi: build.folder for build in builds}
    faults = list(verify_aar.verify(options.output, version, folders))
    for fault in faults:
        print(f"{options.output}: {fault}", file=sys.stderr)
    if faults:
        maven.withdraw(options.output, version)
        return 1
    print(f"{maven.folder(options.output, version)}: {', '.join(folders)}, verified")
    return 0


if __name__ == "__main__":
    sys.exit(main())
