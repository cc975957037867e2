"""aar_test.py FOLDER: makes an AAR of both ABIs that android_build_test.py has left in FOLDER, uses it as
an application does, and sees whether every fault in one is found."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

from stand_ins import HERE, MACHINES

ROOT = HERE.parents[1]
sys.path.insert(0, str(ROOT / "packaging"))
import maven  # noqa: E402
import verify_aar  # noqa: E402
from maven import unzipped, zipped  # noqa: E402

folder = pathlib.Path(sys.argv[1])
builds = [folder / "android-arm64", folder / "android-x86_64"]
version = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(.*)$", (builds[0] / "CMakeCache.txt").read_text(), re.M)[1]
repository = folder / "maven"
place = maven.folder(repository, version)
AAR, POM, MODULE = (f"{maven.stem(version)}.{end}" for end in ("aar", "pom", "module"))
SDK = builds[0] / "android/stubs/android_stubs.jar"
faults = []


def expect(wanted: bool, message: str) -> None:
    if not wanted:
        faults.append(message)


def use(unpacked: pathlib.Path) -> None:
    """Compiles and links a native caller for each ABI, and a Java one."""
    headers = unpacked / "prefab/modules/Algorithm/include"
    caller = "".join(f'#include "{path.relative_to(headers)}"\n' for path in sorted(headers.rglob("*.h")))
    caller += 'int main() { CameraUtil::rotateYUV180(nullptr, nullptr, 0, 0); }\n'
    for abi, machine in MACHINES.items():
        library = unpacked / f"prefab/modules/Algorithm/libs/android.{abi}/libAlgorithm.so"
        stubs = folder / f"sysroot-{abi}/usr/lib"
        subprocess.run(["clang++-16", f"--target={machine}-linux-android26", "-std=c++20", "-stdlib=libc++",
                        "-isystem", f"/usr/include/{machine}-linux-gnu", f"-I{headers}", "-Wall", "-Werror",
                        "-fuse-ld=lld", "-nostdlib", "-Wl,--no-undefined", "-shared", "-fPIC", "-x", "c++", "-",
                        "-x", "none", library, f"-L{stubs}", "-lc", "-o", unpacked / f"caller-{abi}.so"],
                       input=caller, text=True, check=True)
    java = unpacked / "Caller.java"
    java.write_text("import com.orvik.camera.common.Native.*; class Caller { Object f = CameraFrames.allocate(4, 4);"
                    " Object call(java.nio.ByteBuffer b) { return YUVAlgorithm.YVU2ARGB(b, 4, 4); }"
                    " Object copy(android.graphics.Bitmap b) { return Bitmaps.copy(b); } }")
    classes, shrunk = unpacked / "classes.jar", unpacked / "shrunk.jar"
    subprocess.run(["javac", "--release", "11", "-Werror", "-cp", f"{classes}:{SDK}", java], check=True)
    caller_jar = unpacked / "caller.jar"
    caller_jar.write_bytes(zipped({"Caller.class": (unpacked / "Caller.class").read_bytes()}))
    subprocess.run(["proguard", "-injars", caller_jar, "-injars", classes, "-outjars", shrunk, "-dontoptimize",
                    "-dontwarn", "-dontnote", "-ignorewarnings", "-keep", "class Caller { *; }",
                    "-include", unpacked / "proguard.txt"], check=True, stdout=subprocess.DEVNULL)
    left = unzipped(shrunk.read_bytes())
    natives, bitmaps = (left.get(f"com/orvik/camera/common/Native/{name}.class", b"")
                        for name in ("YUVAlgorithm", "Bitmaps"))
    expect(b"YVU2ARGB" in natives and b"unlock" in bitmaps, "a shrinker renames what natives are found by")
    expect(b"ARGB2YVU" not in natives and b"decodeJpeg" not in bitmaps
           and not any("CodecDataAlgorithm" in name for name in left),
           f"a shrinker has to keep what is not used: {sorted(left)}")


def edited(content: bytes, name: str, old: bytes, new: bytes) -> bytes:
    """An archive in which a file has something else."""
    files = unzipped(content)
    assert old in files[name], (name, old)
    return zipped(files | {name: files[name].replace(old, new)})


def without(content: bytes, name: str) -> bytes:
    files = unzipped(content)
    del files[name]
    return zipped(files)


def expect_fault(changed: dict[str, bytes], message: str) -> None:
    """A repository in which those files are others has that fault."""
    with tempfile.TemporaryDirectory() as copy:
        maven.folder(pathlib.Path(copy), version).mkdir(parents=True)
        for name, content in (maven.tree(place) | changed).items():
            (maven.folder(pathlib.Path(copy), version) / name).write_bytes(content)
        found = list(verify_aar.verify(pathlib.Path(copy), version, {}))
        expect(any(message in fault for fault in found), f"'{message}' was not found, but {found}")


def planted() -> None:
    arm = "prefab/modules/Algorithm/libs/android.arm64-v8a/"
    metadata = "META-INF/com/android/build/gradle/aar-metadata.properties"
    native = "com/orvik/camera/common/Native/"
    aar, pom, module = ((place / name).read_bytes() for name in (AAR, POM, MODULE))
    classes = unzipped(aar)["classes.jar"]
    for name, old, new, message in (
        (f"{arm}abi.json", b'"none"', b'"c++_static"', "as a shared library it uses c++_static"),
        (f"{arm}abi.json", b'"none"', b'"c++_shared"', "callers with c++_static: as a shared library"),
        (f"{arm}abi.json", b'"api": 26', b'"api": 30', "it needs API level 30"),
        (f"{arm}libAlgorithm.so", b"ELF", b"elf", "another one than the application gets"),
        ("classes.jar", classes, without(classes, f"{native}YUVAlgorithm.class"), "lacks YUVAlgorithm.YUV2ARGB"),
        ("classes.jar", classes, edited(classes, f"{native}CameraFrames.class", b"\0\0\0\x37", b"\0\0\0\x3d"),
         "CameraFrames.class of version 61"),
        ("classes.jar", classes, without(classes, f"{native}Bitmaps.class"), "lacks Bitmaps.unlock"),
        ("proguard.txt", b"names", b"", "a shrinker may rename"),
        ("NOTICE.txt", b"Gailly", b"Somebody", "no licence text of zlib"),
    ):
        expect_fault({AAR: edited(aar, name, old, new)}, message)
    for name, message in ((f"{arm}abi.json", "has nothing for arm64-v8a"), (metadata, "the archive lacks"),
                          (f"{verify_aar.HEADERS}libalgorithm/export.h", "export.h, which is not there")):
        expect_fault({AAR: without(aar, name)}, message)
    expect_fault({AAR: aar + b"0"}, "is not what its metadata say")
    expect_fault({POM: pom.replace(b">aar<", b">jar<")}, "not that of an AAR")
    expect_fault({MODULE: module.replace(b"-sources", b"-source")}, "has not all of archive, sources")


def check_library(library: pathlib.Path, *options: str | pathlib.Path) -> str:
    return subprocess.run([sys.executable, ROOT / "scripts/check_library.py", library, "android", *options],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout


def linkers() -> None:
    """Faults that only the linker makes, and that only a link map shows."""
    scratch = folder / "linkers"
    (scratch / "CMakeFiles").mkdir(parents=True, exist_ok=True)
    library, stripped, codec, own = (scratch / name for name in ("faulty.so", "stripped.so", "c.o", "CMakeFiles/own.o"))
    for flags, message in (("common-page-size=4096", "data ends at"), ("max-page-size=4096", "is aligned to 0x1000")):
        subprocess.run(["clang++-16", "--target=aarch64-linux-android26", "-fuse-ld=lld", "-nostdlib", "-shared",
                        "-Wl,-z,max-page-size=16384", f"-Wl,-z,{flags}", "-fPIC", "-x", "c++", "-", "-o", library],
                       input="int there; int* const p = &there; extern \"C\" int* const* q() { return &p; }",
                       text=True, check=True)
        expect(message in check_library(library), f"'{message}' was not found in {check_library(library)}")

    shutil.copy(builds[0] / "libAlgorithmAndroid.so", library)  # counts as the other one now
    expect("needs libjnigraphics.so" in check_library(library), "what only one of the libraries may need")

    mark = ["aarch64-linux-gnu-objcopy", "--remove-section=.note.gnu.property"]
    good, link_map = builds[0] / "libAlgorithm.so", builds[0] / "libAlgorithm.link-map"
    subprocess.run([*mark, good, stripped], check=True)
    for copy in (codec, own):
        shutil.copy(builds[0] / "CMakeFiles/algorithm_core.dir/platform/jpeg.cpp.o", copy)
    expect("though all its objects have it" in check_library(stripped, "--map", link_map), "a lost mark")
    line = "  1  1  1  4         {}:(.text)\n"
    (scratch / "map").write_text(line.format(codec) + line.format("CMakeFiles/own.o"))
    expect("branch protection" not in check_library(good, "--map", scratch / "map"), "all are protected")
    subprocess.run([*mark, codec], check=True)
    said = check_library(good, "--map", scratch / "map")
    expect(f"since 1 objects lack it: {codec}" in said and "is made of" not in said, f"a codec's: {said}")
    subprocess.run([*mark, own], check=True)
    expect("is made of CMakeFiles/own.o" in check_library(good, "--map", scratch / "map"), "a lost flag")


def main() -> None:
    command = [sys.executable, ROOT / "packaging/assemble_aar.py", "--output", repository]
    unlicensed = folder / "unlicensed"
    shutil.rmtree(unlicensed, ignore_errors=True)
    unlicensed.mkdir()
    for name in (f"{library}.{end}" for library in ("libAlgorithm", "libAlgorithmAndroid") for end in ("so", "jar")):
        (unlicensed / name).symlink_to(builds[0] / name)
    cache = (builds[0] / "CMakeCache.txt").read_text(encoding="utf-8")
    (unlicensed / "CMakeCache.txt").write_text(re.sub("libpng=[^;]*", "libpng=X-NOTFOUND", cache))
    for unfit, message in ((builds[:1] * 2, "two builds are for arm64-v8a"), ([folder], "has no CMakeCache.txt"),
                           ([unlicensed], "text of libpng: configure it with -DALGORITHM_LICENCE_LIBPNG")):
        result = subprocess.run([*command, *unfit], capture_output=True, text=True)
        expect(result.returncode == 1 and message in result.stderr, f"'{message}': {result.stderr}")
    result = subprocess.run([*command, *builds], capture_output=True, text=True)
    print(result.stdout)
    if result.returncode or "no branch protection" in result.stdout:
        sys.exit(f"the AAR of both ABIs: {result.stderr}")
    first = maven.tree(place)
    subprocess.run([*command, *builds], check=True, stdout=subprocess.DEVNULL)
    expect(maven.tree(place) == first, "the same contents give another repository")
    with tempfile.TemporaryDirectory() as unpacked:
        zipfile.ZipFile(place / AAR).extractall(unpacked)
        use(pathlib.Path(unpacked))
    planted()
    linkers()
    sys.exit("\n".join(faults) or None)


main()
