"""install_test.py CMAKE BUILD_FOLDER WORK_FOLDER: makes the Debian package of the build, unpacks it in a folder,
uses the tool there and builds the example against it, with CMake and with pkg-config."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parents[2]
EXAMPLE = SOURCE / "examples/sepia"
COMPLETION = "share/bash-completion/completions/camera-effects"
# Arguments: the working folder, the script, and a command line whose last word is to be completed.
COMPLETE = """cd "$1"; . "$2"; shift 2; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _camera_effects
              printf "%s\\n" "${COMPREPLY[@]}" """
cmake, build, work = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
os.environ.pop("ALGORITHM_DEVICE_ROOT", None)


def run(*command, **environment) -> str:
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE,
                          env=os.environ | environment).stdout


def check(what, found, expected) -> None:
    if found != expected:
        sys.exit(f"{what}: {found}, not {expected}")


def check_package(package) -> None:
    needed = {re.match(r"\S+", name)[0] for name in run("dpkg-deb", "-f", package, "Depends").split(", ")}
    check("Depends", needed, {"android-liblog", "libc6", "libfmt9", "libgcc-s1", "libjpeg62-turbo", "liblcms2-2",
                              "libpng16-16", "libpugixml1v5", "libstdc++6"})
    modes = {name: mode for mode, name in re.findall(r"^(\S+) .* \./(\S+)$", run("dpkg-deb", "-c", package), re.M)}
    samples = SOURCE / "samples"
    expected = [
        "bin/camera-effects", "share/java/libAlgorithm.jar", "share/man/man1/camera-effects.1", COMPLETION,
        *(f"include/libalgorithm/{header.name}" for header in SOURCE.glob("include/libalgorithm/*.h")),
        *(f"{libraries}/{name}" for name in ("libAlgorithm.so", "pkgconfig/Algorithm.pc")),
        *(f"{libraries}/cmake/Algorithm/Algorithm{part}.cmake"
          for part in ("Config", "ConfigVersion", "Targets", "Targets-release")),
        *(f"share/doc/libalgorithm/{name}"
          for name in ("CHANGELOG.md", "examples/sepia/CMakeLists.txt", "examples/sepia/main.cpp")),
        *(f"share/libalgorithm/{file.relative_to(samples)}" for file in samples.rglob("*.[jp][pn]g"))]
    found = {name for name, mode in modes.items() if mode[0] != "d"}
    check("files", found ^ {f"usr/{name}" for name in expected}, set())
    check("tool's mode", modes.pop("usr/bin/camera-effects"), "-rwxr-xr-x")
    check("modes", set(modes.values()), {"drwxr-xr-x", "-rw-r--r--"})
    for binary in (tool, installed / libraries / "libAlgorithm.so"):
        check(f"symbols in {binary}", b".symtab" in binary.read_bytes(), False)


def check_tool() -> None:
    photo = installed / "share/libalgorithm/photo.jpg"
    run(tool, "apply", "PrettyJapan", photo, work / "none.jpg")  # fails without its sample picture
    commands = re.findall(r"^  (\w+)  ", run(tool, "--help").split("Subcommands:")[1], re.M)
    manual = (installed / "share/man/man1/camera-effects.1").read_text()
    check("commands in the manual", re.findall(r"^\.SS (\w+)", manual, re.M), commands)
    (work / "notes.txt").touch()
    for line, completions in (
            ("", commands), ("apply PrettyB", ["PrettyBeautiful", "PrettyBlue"]), ("curves PrettyP", []),
            ("blend --w", ["--weight"]), ("convert --from = nv", ["nv12", "nv21"]), ("apply --paper n", []),
            ("rotate --format nv12 9", ["90"]), ("resize --size = 4x4 \"n", ["none.jpg"]),
            ("resize a.jpg n", ["none.jpg", "notes.txt"]), ("convert no", ["none.jpg", "notes.txt"])):
        words = ["camera-effects", *(line.split() or [""])]
        found = run("bash", "-c", COMPLETE, "bash", work, installed / COMPLETION, *words).split()
        check(f"completions of '{line}'", sorted(found), sorted(completions))


shutil.rmtree(work, ignore_errors=True)
run(pathlib.Path(cmake).with_name("cpack"), "--config", build / "CPackConfig.cmake", "-B", work)
package, = work.glob("libalgorithm_*.deb")
run("dpkg-deb", "-x", package, work / "un packed")
installed = work / "un packed/usr"
libraries = "lib/" + run("dpkg-architecture", "-q", "DEB_HOST_MULTIARCH").strip()
tool = installed / "bin/camera-effects"
check_package(package)
check_tool()

run(cmake, "-S", EXAMPLE, "-B", work / "example", f"-DCMAKE_PREFIX_PATH={installed}")
run(cmake, "--build", work / "example")
flags = run("pkg-config", "--cflags", "--libs", "Algorithm", PKG_CONFIG_PATH=str(installed / libraries / "pkgconfig"))
run("sh", "-c", f'c++ "{EXAMPLE}/main.cpp" -o "{work}/sepia" {flags.strip()}')

(work / "white.ppm").write_bytes(b"P6\n5 3\n255\n" + bytes([255]) * 45)
for program in (work / "example/sepia", work / "sepia"):
    run(program, work / "white.ppm", work / "toned.ppm", LD_LIBRARY_PATH=str(installed / libraries))
    # Resizing turns 255 into 253, which the sepia matrix turns into 255, 255 (both limited) and 237.
    check(program, (work / "toned.ppm").read_bytes(), b"P6\n3 2\n255\n" + bytes([255, 255, 237]) * 6)
    refused = subprocess.run([program, EXAMPLE / "main.cpp", work / "none.ppm"], stderr=subprocess.PIPE,
                             env=os.environ | {"LD_LIBRARY_PATH": str(installed / libraries)})
    check(f"{program} with what is no picture", refused.returncode, 1)
