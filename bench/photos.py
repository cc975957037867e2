#!/usr/bin/env python3
"""Times the tool on photos beside programs that many people use for the same work: a colour matrix (sepia).

usage: photos.py TOOL LOOP SAMPLE.jpg FOLDER

Prints two Markdown tables. The first: CPU and elapsed time and the most memory of one photo, medians of runs in
turn. The floor is LOOP (libjpeg_loop.cpp), which decodes and encodes row by row without any work between. The
photo is the sample at 12 million pixels, upright and on its side. A program that is not installed is left out
with a line. The second: how near the Pretty effects come to their curves, on the photo's pixels and by way of a
camera frame.
"""

import math
import os
import pathlib
import shutil
import statistics
import struct
import subprocess
import sys
import time

RUNS = 9
QUALITY = 92
# Rows of the result's red, green and blue, of the photo's.
MATRIX = [[f"{weight / 2048:.6f}" for weight in row] for row in ((805, 1575, 387), (715, 1405, 344), (557, 1094, 268))]


EFFECTS = ["PrettySweet", "PrettyPink", "PrettyBlue"]
FLOOR = "libjpeg, row by row (no effect)"


def commands(tool: str, loop: str, photo: pathlib.Path, turned: pathlib.Path, out: str) -> dict[str, list[str]]:
    matrix = photo.with_name("sepia.mat")
    matrix.write_text("3 3\n" + "\n".join(" ".join(row) for row in MATRIX) + "\n")
    flat = " ".join(" ".join(row) for row in MATRIX)
    return {
        "camera-effects": [tool, "apply", "sepia", "--quality", str(QUALITY), str(photo), out],
        "camera-effects, photo on its side": [tool, "apply", "sepia", "--quality", str(QUALITY), str(turned), out],
        FLOOR: [loop, str(QUALITY), str(photo), out],
        "djpeg, cjpeg (no effect)": ["sh", "-c", f"djpeg '{photo}' | cjpeg -quality {QUALITY} -outfile '{out}'"],
        "vips": ["vips", "recomb", str(photo), f"{out}[Q={QUALITY}]", str(matrix)],
        "ImageMagick": ["convert-im6.q16", str(photo), "-color-matrix", flat, "-quality", str(QUALITY), out],
        "GraphicsMagick": ["gm", "convert", str(photo), "-recolor", flat, "-quality", str(QUALITY), out],
    }


def run(command: list[str]) -> tuple[float, float]:
    """CPU and elapsed seconds."""
    start = time.monotonic()
    child = subprocess.Popen(command)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{' '.join(command)}: exit code {child.returncode}")
    return usage.ru_utime + usage.ru_stime, time.monotonic() - start


def memory_of(command: list[str], report: pathlib.Path) -> float:
    """Megabytes. Of a child of Python's, Python's own memory would count; another process between would take
    elapsed time of programs with several threads."""
    subprocess.run(["/usr/bin/time", "-f", "%M", "-o", report, *command], check=True)
    return int(report.read_text()) / 1000


def on_its_side(photo: pathlib.Path) -> pathlib.Path:
    """The same pixels, of a camera that was held upright."""
    turned = photo.with_name("turned.jpg")
    exif = b"Exif\0\0MM\0*" + struct.pack(">IHHHIHHI", 8, 1, 0x112, 3, 1, 6, 0, 0)
    content = photo.read_bytes()
    turned.write_bytes(content[:2] + struct.pack(">BBH", 0xFF, 0xE1, 2 + len(exif)) + exif + content[2:])
    return turned


def pixels(tool: str, photo: pathlib.Path) -> bytes:
    raw = photo.with_name("argb")
    subprocess.run([tool, "convert", "--from=jpg", "--to=argb", photo, raw], check=True, stdout=subprocess.DEVNULL)
    return raw.read_bytes()


def decibels(wanted: bytes, got: bytes) -> float:
    """The peak signal-to-noise ratio of colours."""
    squares = sum((a - b) ** 2 for channel in range(3) for a, b in zip(wanted[channel::4], got[channel::4]))
    return 10 * math.log10(255 ** 2 * (len(wanted) // 4 * 3) / squares)


def fidelity(tool: str, sample: str, folder: pathlib.Path) -> None:
    photo, out = folder / "small.jpg", folder / "made.jpg"
    subprocess.run([tool, "resize", "--size", "1600x1200", "--quality", "95", sample, photo], check=True)
    print("\n| Effect | On the photo's pixels, dB | kB | By way of a camera frame, dB | kB |\n|---|---:|---:|---:|---:|")
    for effect in EFFECTS:
        exact = folder / "exact.png"  # the curves, of each decoded pixel, and nothing else
        subprocess.run([tool, "apply", effect, photo, exact], check=True)
        wanted = pixels(tool, exact)
        row = f"| `{effect}` |"
        for way in ([], ["--as-frame"]):
            subprocess.run([tool, "apply", effect, *way, "--quality", str(QUALITY), photo, out], check=True)
            row += f" {decibels(wanted, pixels(tool, out)):.1f} | {out.stat().st_size / 1e3:.0f} |"
        print(row)
    print(f"\nPeak signal-to-noise ratio of the sample at 1600 x 1200 pixels and quality {QUALITY}, against the effect's "
          "curves on its decoded pixels.")


def main() -> None:
    tool, loop, sample, folder = sys.argv[1:]
    photo = pathlib.Path(folder) / "photo.jpg"
    photo.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([tool, "resize", "--size", "4000x3000", "--quality", "95", sample, photo], check=True)
    all_commands = commands(os.path.abspath(tool), os.path.abspath(loop), photo.resolve(), on_its_side(photo).resolve(),
                            str(photo.with_name("out.jpg").resolve()))
    for name, command in list(all_commands.items()):
        program = "djpeg" if command[0] == "sh" else command[0]
        if shutil.which(program) is None:
            print(f"photos: {program} is not installed; its row is left out", file=sys.stderr)
            del all_commands[name]
    memory = {name: memory_of(command, photo.with_name("memory")) for name, command in all_commands.items()}
    results = {name: [] for name in all_commands}
    for _ in range(RUNS):
        for name, command in all_commands.items():
            results[name].append(run(command))
    medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in results.items()}
    floor = medians[FLOOR]
    print("| Program | CPU, ms | of the floor | Elapsed, ms | of the floor | Memory, MB |\n|---|---:|---:|---:|---:|---:|")
    for name, (cpu, elapsed) in medians.items():
        print(f"| {name} | {cpu * 1000:.0f} | {cpu / floor[0]:.2f} | {elapsed * 1000:.0f} | {elapsed / floor[1]:.2f} | {memory[name]:.0f} |")
    made = photo.with_name("out.jpg").stat().st_size / 1e6
    print(f"\nA sepia matrix over one photo of 4000 x 3000 pixels, {photo.stat().st_size / 1e6:.1f} MB, to {made:.1f} MB at quality {QUALITY}: "
          f"medians of {RUNS} runs in turn; memory of the largest process.")
    fidelity(tool, sample, photo.parent)


main()
