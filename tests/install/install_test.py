"""install_test.py CMAKE BUILD_FOLDER WORK_FOLDER: installs the build, moves the installation, and makes
the example against it, with CMake and with pkg-config."""

import os
import pathlib
import shutil
import subprocess
import sys

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples/sepia"
cmake, build, work = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])


def run(*command, **environment) -> str:
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE,
                          env=os.environ | environment).stdout


shutil.rmtree(work, ignore_errors=True)
run(cmake, "--install", build, "--prefix", work / "first")
installed = (work / "first").rename(work / "in stalled")
library_folder = next(installed.rglob("libAlgorithm.so")).parent

run(cmake, "-S", EXAMPLE, "-B", work / "example", f"-DCMAKE_PREFIX_PATH={installed}")
run(cmake, "--build", work / "example")
flags = run("pkg-config", "--cflags", "--libs", "Algorithm", PKG_CONFIG_PATH=str(library_folder / "pkgconfig"))
run("sh", "-c", f'c++ "{EXAMPLE}/main.cpp" -o "{work}/sepia" {flags.strip()}')

(work / "white.ppm").write_bytes(b"P6\n5 3\n255\n" + bytes([255]) * 45)
for program in (work / "example/sepia", work / "sepia"):
    run(program, work / "white.ppm", work / "toned.ppm", LD_LIBRARY_PATH=str(library_folder))
    pixels = (work / "toned.ppm").read_bytes()
    # Resizing makes 253 of 255, which the sepia matrix makes 255, 255 (both limited) and 237.
    if pixels != b"P6\n3 2\n255\n" + bytes([255, 255, 237]) * 6:
        sys.exit(f"{program} wrote {pixels}")
    if subprocess.run([program, EXAMPLE / "main.cpp", work / "none.ppm"], stderr=subprocess.PIPE,
                      env=os.environ | {"LD_LIBRARY_PATH": str(library_folder)}).returncode != 1:
        sys.exit(f"{program} took what is no picture")
