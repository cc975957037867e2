"""Cycles that blocks of 64-bit Arm code take, as llvm-mca models them."""

import collections
import json
import re
import subprocess

LLVM = "19"  # the first with a model of the Neoverse N1
CORES = {"A76": "neoverse-n1", "A55": "cortex-a55"}  # a Cortex-A76 is the core of a Neoverse N1
SAYS = ("cycles as llvm-mca models them on a Cortex-A76 (as Neoverse N1) and a Cortex-A55. The model takes each "
        "block of code between branches as running again and again from a first-level cache that never misses: "
        "it leaves out caches, memory, prefetching and branch prediction, and charges table look-ups of four "
        "registers on the A55 too little.")
COVERED = 0.995  # of a span's instructions; the rest takes as many cycles each
REPEATED = 100  # after as many, so that filling the pipeline does not count

Blocks = collections.Counter[tuple[int, str]]


def chains(blocks: Blocks) -> collections.Counter[str]:
    """The blocks that matter, joined where one only goes on from another: the emulator cuts at pages and at
    branches that are never taken."""
    total = sum(len(code) // 8 * runs for (_, code), runs in blocks.items())
    wanted, covered = {}, 0
    for (address, code), runs in sorted(blocks.items(), key=lambda item: -item[1] * len(item[0][1])):
        if covered >= COVERED * total:
            break
        covered += len(code) // 8 * runs
        if runs > wanted.get(address, ("", 0))[1]:
            wanted[address] = code, runs
    joined: collections.Counter[str] = collections.Counter()
    while wanted:
        start = next(iter(wanted))
        runs = wanted[start][1]
        alike = {address: code for address, (code, times) in wanted.items() if abs(times - runs) <= runs / 50}
        ends = {address + len(code) // 2: address for address, code in alike.items()}
        while start in ends:
            start = ends[start]
        chain = ""
        while start in alike:
            code = alike.pop(start)
            del wanted[start]
            chain += code
            start += len(code) // 2
        joined[chain] += runs
    return joined


def instructions(chain: str) -> list[str]:
    return [chain[i:i + 8] for i in range(0, len(chain), 8)]


def disassembled(words: list[str]) -> dict[str, str]:
    given = "\n".join(" ".join(f"0x{word[i:i + 2]}" for i in (6, 4, 2, 0)) for word in words)
    text = subprocess.run([f"llvm-mc-{LLVM}", "--disassemble", "-triple=aarch64", "-mattr=+all"], input=given,
                          capture_output=True, text=True, check=True).stdout
    lines = [line.strip() for line in text.splitlines() if re.match(r"\t[a-z]", line)]
    if len(lines) != len(words):
        raise RuntimeError(f"llvm-mc knows {len(lines)} of {len(words)} instructions")
    return {word: without_call(line) for word, line in zip(words, lines)}


def without_call(line: str) -> str:
    """Of a call llvm-mca assumes 100 cycles; what is called stands among the blocks."""
    line = re.sub(r"^bl\b.*", "b #4", line)
    line = re.sub(r"^(blr|ret)a?a?\b.*", "br x30", line)
    return line


def address_apart(listing: str) -> str:
    """Stores that also move their pointer as two instructions. Cores that reorder move it at once, where llvm-mca
    lets the next round wait until what is stored has been computed."""
    def split(match: re.Match) -> str:
        store, base, step = match.groups()
        return f"{store} [{base}]\n{'sub' if step[0] == '-' else 'add'} {base}, {base}, #{step.lstrip('-')}"

    return re.sub(r"^(st[^[]*)\[(\w+)\], #(-?\d+)$", split, listing, flags=re.M)


def each_takes(core: str, listings: list[str]) -> list[float]:
    if core != "cortex-a55":
        listings = [address_apart(listing) for listing in listings]
    given = "\n".join(f"# LLVM-MCA-BEGIN r{i}\n{listing}\n# LLVM-MCA-END" for i, listing in enumerate(listings))

    def cycles(rounds: int) -> list[int]:
        made = subprocess.run([f"llvm-mca-{LLVM}", "-mtriple=aarch64", f"-mcpu={core}", "-mattr=+all", "-json",
                               "-skip-unsupported-instructions=lack-sched",  # atomics, which no kernel has
                               f"-iterations={rounds}"], input=given, capture_output=True, text=True)
        if made.returncode:
            raise RuntimeError(made.stderr)
        regions = {region["Name"]: region for region in json.loads(made.stdout)["CodeRegions"]}
        return [regions[f"r{i}"]["SummaryView"]["TotalCycles"] for i in range(len(listings))]

    return [(more - less) / REPEATED for less, more in zip(cycles(REPEATED), cycles(2 * REPEATED))]


def model(spans: list[Blocks]) -> list[dict[str, float]]:
    """For each span the cycles by core."""
    parts = [chains(blocks) for blocks in spans]
    known = sorted({chain for part in parts for chain in part})
    text = disassembled(sorted({word for chain in known for word in instructions(chain)}))
    listings = ["\n".join(text[word] for word in instructions(chain)) for chain in known]
    result: list[dict[str, float]] = [{} for _ in spans]
    for name, core in CORES.items():
        takes = dict(zip(known, each_takes(core, listings)))
        for blocks, part, costs in zip(spans, parts, result):
            every = sum(len(code) * runs for (_, code), runs in blocks.items())
            share = sum(len(chain) * runs for chain, runs in part.items()) / every
            costs[name] = sum(takes[chain] * runs for chain, runs in part.items()) / share
    return result
