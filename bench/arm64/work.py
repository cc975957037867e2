"""work.py PLUGIN PROGRAM [--filter REGEX] [--check | --record | --peers]: counts what PROGRAM, built for 64-bit
Arm, executes in each span that it marks, and prints it per pixel. --check compares with the record, --record
writes it, --peers prints a Markdown table of ours beside the peers."""

import argparse
import collections
import math
import os
import pathlib
import subprocess
import sys
import tempfile

import cycles

RECORD = pathlib.Path(__file__).parents[1] / "arm64_work.txt"
PIXELS = 1920 * 1080
SMALLER = {"preview ": 640 * 480}  # rows whose names begin so
ALLOWED = 0.02  # more or less than the record


class Span:
    """What ran between two marks: how often each run of instructions between two branches did."""

    def __init__(self, name: str):
        self.name = name
        self.pixels = next((size for start, size in SMALLER.items() if name.startswith(start)), PIXELS)
        self.blocks: collections.Counter[tuple[int, str]] = collections.Counter()

    def per_pixel(self, weight) -> float:
        return sum(runs * weight(code) for (_, code), runs in self.blocks.items()) / self.pixels

    @property
    def instructions(self) -> float:
        return self.per_pixel(lambda code: len(code) // 8)

    @property
    def memory(self) -> float:
        return self.per_pixel(loads_and_stores)


def loads_and_stores(code: str) -> int:
    """By the encoding's top level: bits 27 and 25 are 1 and 0."""
    return sum(int(code[i:i + 8], 16) & 0x0A000000 == 0x08000000 for i in range(0, len(code), 8))


def count(plugin: str, program: str, only: str) -> list[Span]:
    core = str(min(os.sched_getaffinity(0)))
    with tempfile.NamedTemporaryFile("r") as counts:
        # One core and no environment: the same figures each time.
        names = subprocess.run(
            ["taskset", "-c", core, "env", "-i", "qemu-aarch64", "-plugin", f"{plugin},out={counts.name}",
             "-cpu", "cortex-a76", program, only], stdout=subprocess.PIPE, text=True, check=True).stdout
        spans = {int(number, 16): Span(name) for number, name in
                 (line.split(" ", 1) for line in names.splitlines())}
        for line in counts:
            what, *fields = line.split()
            if what == "span":
                span = spans[int(fields[0], 16)]
            else:
                span.blocks[int(fields[1], 16), fields[2]] += int(fields[0], 16)
    return list(spans.values())


def recorded() -> dict[str, tuple[float, float]]:
    lines = (line.split(maxsplit=2) for line in RECORD.read_text().splitlines() if not line.startswith("#"))
    return {name: (float(instructions), float(memory)) for instructions, memory, name in lines}


def record(spans: list[Span]) -> None:
    RECORD.write_text("# Executed instructions, and loads and stores among them, per pixel, of each row at 1920 x 1080,\n"
                      "# built by clang for 64-bit Arm; written by scripts/bench --arm64 --record.\n"
                      + "".join(f"{s.instructions:#8.3g} {s.memory:#8.3g}  {s.name}\n" for s in spans))


def check(spans: list[Span]) -> int:
    """Says what differs from the record by more than is allowed; returns 1 if anything does."""
    known, bad = recorded(), []
    for span in spans:
        if span.name not in known:
            bad.append(f"{span.name} is not recorded")
            continue
        for unit, before, now in zip(("instructions", "loads and stores"), known.pop(span.name),
                                     (span.instructions, span.memory)):
            if now > before * (1 + ALLOWED):
                bad.append(f"{span.name} takes more: {before:.3f} -> {now:.3f} {unit} a pixel")
            elif now < before * (1 - ALLOWED):
                bad.append(f"{span.name} takes less, which wants a new record: {before:.3f} -> {now:.3f} {unit} a pixel")
    bad += [f"{name} is recorded, but does not run" for name in known]
    for line in bad:
        print(line, file=sys.stderr)
    if bad:
        print("scripts/bench --arm64 --record writes bench/arm64_work.txt anew.", file=sys.stderr)
    return 1 if bad else 0


def show(spans: list[Span]) -> None:
    modelled = cycles.model([span.blocks for span in spans])
    print("instructions    memory" + "".join(f"{core:>9}" for core in modelled[0])
          + "  (per pixel; cycles are modelled)")
    for span, cores in zip(spans, modelled):
        print(f"{span.instructions:12.3f} {span.memory:9.3f}"
              + "".join(f"{c / span.pixels:9.3f}" for c in cores.values()) + f"  {span.name}")


def compare(spans: list[Span]) -> None:
    """Of several peers of a row, the one of the fewest cycles on the first core counts."""
    costs: dict[str, dict[str, list[float]]] = {}
    for span, cores in zip(spans, cycles.model([span.blocks for span in spans])):
        work, who = span.name.split("\t")
        if who.startswith("ours with"):  # one effect beside another
            del costs[work]
            continue
        costs.setdefault(work, {})[who] = [span.instructions, span.memory] + [
            c / span.pixels for c in cores.values()]
    heads = [f"{unit}: {column}" for unit in ("Instructions", "Loads, stores") for column in ("ours", "peer")]
    heads += [f"{core}: {column}" for core in cycles.CORES for column in ("ours", "peer / ours")]
    print("| Work | Peer | " + " | ".join(heads) + " |\n|---|---|" + "---:|" * len(heads))
    fewer = []
    for work, row in costs.items():
        ours = row.pop("ours")
        peer = min(row, key=lambda name: row[name][2])
        fewer.append(row[peer][0] / ours[0])
        shown = [f"{figure:.2f}" for pair in list(zip(ours, row[peer]))[:2] for figure in pair]
        for mine, theirs in list(zip(ours, row[peer]))[2:]:
            ratio = round(theirs / mine, 2)
            shown += [f"{mine:.2f}", f"{ratio:.2f}" if ratio >= 1 else f"**{ratio:.2f}**"]
        print(f"| {work} | {peer} | " + " | ".join(shown) + " |")
    mean = math.exp(sum(map(math.log, fewer)) / len(fewer))
    print(f"\nPer pixel, at 1920 x 1080 (previews: 640 x 480): executed instructions, loads and stores "
          f"among them, as counted in emulation, and {cycles.SAYS} Peers execute {mean:.2f} times our "
          "instructions (geometric mean); rows that the model finds slower than a peer are bold. Ours is "
          "built by clang 16, peers are Debian 12's packages for arm64: libyuv, OpenCV 4.6, libjpeg-turbo.")


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("plugin")
    parser.add_argument("program")
    parser.add_argument("--filter", default="")
    what = parser.add_mutually_exclusive_group()
    for name in ("check", "record", "peers"):
        what.add_argument(f"--{name}", action="store_true")
    asked = parser.parse_args()
    if asked.filter and (asked.check or asked.record):
        parser.error("the record has all rows")
    spans = count(asked.plugin, asked.program, asked.filter)
    if asked.check:
        return check(spans)
    (record if asked.record else compare if asked.peers else show)(spans)
    return 0


if __name__ == "__main__":
    sys.exit(main())
