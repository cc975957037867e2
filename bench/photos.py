#!/usr/bin/env python3
"""Times the tool on photos beside programs that many people use for the same work: a colour matrix (sepia).

usage: photos.py TOOL SAMPLE.jpg FOLDER

Prints a Markdown table: CPU and elapsed time and the most memory of one photo, medians of runs in turn. The
floor is djpeg | cjpeg, which decodes and encodes without any work between. The photo is the sample at 12
million pixels. A program that is not installed is left out with a line.
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import time

RUNS = 9
QUALITY = 92
# Rows of the result's red, green and blue, of the photo's.
MATRIX = [[f"{weight / 2048:.6f}" for weight in row] for row in ((805, 1575, 387), (715, 1405, 344), (557, 1094, 268))]


def commands(tool: str, photo: pathlib.Path, out: str) -> dict[str, list[str]]:
    matrix = photo.with_name("sepia.mat")
    matrix.write_text("3 3\n" + "\n".join(" ".join(row) for row in MATRIX) + "\n")
    flat = " ".join(" ".join(row) for row in MATRIX)
    return {
        "camera-effects": [tool, "apply", "sepia", "--quality", str(QUALITY), str(photo), out],
        "djpeg, cjpeg (no effect)": ["sh", "-c", f"djpeg '{photo}' | cjpeg -quality {QUALITY} -outfile '{out}'"],
        "vips": ["vips", "recomb", str(photo), f"{out}[Q={QUALITY}]", str(matrix)],
        "ImageMagick": ["convert-im6.q16", str(photo), "-color-matrix", flat, "-quality", str(QUALITY), out],
        "GraphicsMagick": ["gm", "convert", str(photo), "-recolor", flat, "-quality", str(QUALITY), out],
    }


def run(command: list[str], memory: pathlib.Path) -> tuple[float, float, float]:
    """CPU seconds, elapsed seconds, megabytes. Of a child of Python's, Python's own memory would count."""
    start = time.monotonic()
    child = subprocess.Popen(["/usr/bin/time", "-f", "%M", "-o", memory, *command])
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{' '.join(command)}: exit code {child.returncode}")
    return usage.ru_utime + usage.ru_stime, time.monotonic() - start, int(memory.read_text()) / 1000


def main() -> None:
    tool, sample, folder = sys.argv[1:]
    photo = pathlib.Path(folder) / "photo.jpg"
    photo.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([tool, "resize", "--size", "4000x3000", "--quality", "95", sample, photo], check=True)
    all_commands = commands(os.path.abspath(tool), photo.resolve(), str(photo.with_name("out.jpg").resolve()))
    for name, command in list(all_commands.items()):
        program = "djpeg" if command[0] == "sh" else command[0]
        if shutil.which(program) is None:
            print(f"photos: {program} is not installed; its row is left out", file=sys.stderr)
            del all_commands[name]
    results = {name: [] for name in all_commands}
    for i in range(RUNS + 1):
        for name, command in all_commands.items():
            measured = run(command, photo.with_name("memory"))
            if i > 0:  # the first one reads programs from the disk
                results[name].append(measured)
    medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in results.items()}
    floor = medians.get("djpeg, cjpeg (no effect)")
    print("| Program | CPU, ms | of the floor | Elapsed, ms | Memory, MB |\n|---|---:|---:|---:|---:|")
    for name, (cpu, elapsed, memory) in medians.items():
        ratio = f"{cpu / floor[0]:.2f}" if floor else ""
        print(f"| {name} | {cpu * 1000:.0f} | {ratio} | {elapsed * 1000:.0f} | {memory:.0f} |")
    made = photo.with_name("out.jpg").stat().st_size / 1e6
    print(f"\nA sepia matrix over one photo of 4000 x 3000 pixels, {photo.stat().st_size / 1e6:.1f} MB, to {made:.1f} MB at quality {QUALITY}: "
          f"medians of {RUNS} runs in turn; memory of the largest process.")


main()
