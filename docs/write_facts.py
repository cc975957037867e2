#!/usr/bin/python3
"""Writes what documents say of the operations, from the catalogue that the tool prints:

usage: write_facts.py TOOL [--check]

In docs/effects.md, EffectAlgorithm.java and Effect.java it fills the blocks between the lines with "catalogue:" and
"end of catalogue". With --check it writes nothing, and fails when a block is not what it would write.
"""
import json
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs/effects.md"
JAVA = ROOT / "java/com/orvik/camera/common/Native"
OVERLAPS = {"apart": "must not overlap", "in place": "may be the same, but not overlap otherwise",
            "any": "may overlap in any way"}
PIXELS = {"words": "32-bit words", "ints": "one int a channel"}
WIDTH = 105


def header_of(routine: str) -> str:
    for header in sorted((ROOT / "include/libalgorithm").glob("*.h")):
        if re.search(rf"(?m)^ *(extern \"C\" )?(ALGORITHM_API|static) .*\b{routine}\(", header.read_text("utf-8")):
            return header.name
    sys.exit(f"no header declares {routine}")


def wrap(text: str, first: str = "", rest: str = "") -> str:
    lines, line = [], first
    for word in text.split():
        if len(line) + 1 + len(word) > WIDTH and line.strip():
            lines.append(line)
            line = rest + word
        else:
            line += ("" if line in (first, rest) else " ") + word
    return "\n".join([*lines, line])


def number(value: float) -> str:
    return f"{value:g}" if value < 1e6 else f"{value:,.0f}"


def option(parameter: dict) -> str:
    unit = f" {parameter['unit']}" if parameter["unit"] else ""
    return (f"`--{parameter['name']}`: {parameter['help']} ({number(parameter['least'])} to "
            f"{number(parameter['most'])}{unit}, else {number(parameter['preset'])})")


def picture(role: dict) -> str:
    files = list(dict.fromkeys(filter(None, (role["file"], role["landscapeFile"]))))
    where = f"`{files[0]}`" + (f", for landscape frames `{files[1]}`" if files[1:] else "")
    return (f"`--{role['name']}`: {role['help']}; " if role["read"] else "Looked up on the pipeline, but not read: ") + where


def facts(operation: dict) -> str:
    routine = operation["routine"]
    header = header_of(routine)
    pixels = f", {PIXELS[operation['pixels']]}" if operation["pixels"] in PIXELS else ""
    lines = [f"`{routine}` in [`{header}`](../include/libalgorithm/{header}){pixels}. "
             f"Source and destination {OVERLAPS[operation['overlap']]}."]
    if operation["pipeline"]:
        passes = "" if operation["runs"] else ", where frames pass through"
        lines.append(f"Pipeline: `{operation['pipeline']}`{passes}.")
    lines += [f"Option {option(parameter)}." for parameter in operation["parameters"]]
    lines += [f"{'Picture ' if role['read'] else ''}{picture(role)}." for role in operation["pictures"]]
    return "\n".join(wrap(line, "- ", "  ") for line in lines)


def pictures(name: str) -> str:
    text = f"![{name}: before and after](effects/{name}.jpg)\n"
    if (ROOT / f"docs/effects/{name}.svg").exists():
        text += f"![the curves of {name}](effects/{name}.svg)\n"
    return text


def section(operation: dict) -> str:
    return (f"### {operation['name']}\n\n{pictures(operation['name'])}\n"
            f"{wrap(operation['shows'] + ' ' + operation['formula'])}\n\n{facts(operation)}\n")


def sections(operations: list[dict], family: str) -> str:
    return "\n" + "\n".join(section(row) for row in operations if row["family"] == family) + "\n"


def java_table(operations: list[dict], _: str) -> str:
    by_picture: dict[str, list[str]] = {}
    for row in (row for row in operations if row["runs"]):
        files = [(role["file"], role["landscapeFile"]) for role in row["pictures"]]
        portrait, landscape = files[0] if files else (None, None)
        shown = f"{{@code {portrait}}}" if portrait else "none"
        if landscape:
            shown += f", or {{@code {landscape}}} when the frame is wider than tall"
        by_picture.setdefault(shown, []).append(f"{{@code {row['name']}}}")
    return "".join(f"   *   <tr><td>{', '.join(names[:1])}" + "".join(f",\n   *     {name}" for name in names[1:])
                   + f"</td>\n   *     <td>{shown}</td></tr>\n" for shown, names in by_picture.items())


def java_text(text: str | None) -> str:
    return "null" if text is None else json.dumps(text)


def java_list(items: list[str]) -> str:
    return "list(" + "".join(f"\n          {item}," for item in items)[:-1] + ")"


def java_constant(operation: dict) -> str:
    """An effect as a constant of Effect.java."""
    words = re.sub(r"(?<=[a-z])(?=[A-Z])|-", " ", operation["name"]).split()
    rows = {"any": "ALONE", "near": "NEAR", "whole": "ALL"}[operation["bands"]]
    parameters = [f"new Parameter({java_text(row['name'])}, {row['least']}, {row['most']}, {row['preset']}, "
                  f"{str(row['whole']).lower()}, {java_text(row['unit'])},\n              {java_text(row['help'])})"
                  for row in operation["parameters"]]
    shown = [f"new Picture({java_text(row['name'])}, Picture.SizeRule.{row['size'].replace(' ', '_').upper()},"
             f" {java_text(row['help'])})" for row in operation["pictures"] if row["read"]]
    label = " ".join(words).lower().capitalize()
    return (f"  /** {operation['shows']} */\n  {'_'.join(words).upper()}({java_text(operation['name'])}, "
            f"{java_text(label)},\n      {java_text(operation['shows'])},\n      Rows.{rows}, "
            f"{str(operation['runs']).lower()}, {java_list(parameters)}, {java_list(shown)})")


def java_constants(operations: list[dict], _: str) -> str:
    effects = [row for row in operations if row["family"] not in ("geometry", "blend")]
    return ",\n".join(map(java_constant, effects)) + ";\n"


def fill(text: str, operations: list[dict], block) -> str:
    pattern = r"(?ms)^([ */]*<!-- catalogue: (\w+) -->\n).*?(^[ */]*<!-- end of catalogue -->$)"
    return re.sub(pattern, lambda match: match[1] + block(operations, match[2]) + match[3], text)


def main() -> int:
    catalogue = json.loads(subprocess.run([sys.argv[1], "catalogue"], capture_output=True, text=True, check=True).stdout)
    wrong = []
    for path, block in ((PAGE, sections), (JAVA / "EffectAlgorithm.java", java_table),
                        (JAVA / "Effect.java", java_constants)):
        before = path.read_text(encoding="utf-8")
        after = fill(before, catalogue, block)
        if sys.argv[2:] != ["--check"]:
            path.write_text(after, encoding="utf-8")
        elif after != before:
            wrong.append(path.relative_to(ROOT))
    for path in wrong:
        print(f"{path} is not what the catalogue says; scripts/catalogue writes it", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
