"""Checks that the relative links of all tracked Markdown files lead to files, and to headings in them."""

import pathlib
import re
import subprocess
import sys

LINK = re.compile(r"\[[^]]*\]\(([^)\s]+)\)")


def prose(path: pathlib.Path) -> str:
    """The text without code blocks and code spans."""
    text = path.read_text(encoding="utf-8")
    return re.sub(r"`[^`\n]+`", "", re.sub(r"^```.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL))


def anchors(path: pathlib.Path) -> set[str]:
    """The names that headings get: lower case, words joined by hyphens, without other punctuation."""
    text = re.sub(r"^```.*?^```$", "", path.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    return {re.sub(r"[^\w -]", "", heading.lower()).strip().replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def main() -> int:
    files = subprocess.run(["git", "ls-files", "*.md"], capture_output=True, text=True, check=True)
    wrong = 0
    for name in map(pathlib.Path, files.stdout.split()):
        for link in LINK.findall(prose(name)):
            path, _, anchor = link.partition("#")
            target = name.parent / path if path else name
            if ":" in link or (target.exists() and (not anchor or anchor in anchors(target))):
                continue
            print(f"{name}: {link} leads nowhere", file=sys.stderr)
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
