#!/usr/bin/python3
"""Draws the pictures of docs/effects.md and of the README with the command-line tool:
draw_effects.py TOOL PHOTO WORK_FOLDER"""
import json
import re
import subprocess
import sys
from pathlib import Path

from PIL import Image, ImageDraw, ImageFont

TOOL, PHOTO, WORK = sys.argv[1], sys.argv[2], Path(sys.argv[3])
DOCS = Path(__file__).resolve().parent
PICTURES = DOCS / "effects"
SHOWN = (240, 180)  # pixels of a picture in the catalogue
TILE, COLUMNS, LABEL, GAP = (176, 132), 7, 20, 6  # of the contact sheet
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def entries() -> list[dict]:
    """What the gallery says of its pictures, the original first."""
    page = (WORK / "index.html").read_text(encoding="utf-8")
    return json.loads(re.search(r'<script type="application/json"[^>]*>(.*?)</script>', page, re.S)[1])


def picture(entry: dict, size: tuple[int, int]) -> Image.Image:
    with Image.open(WORK / entry["file"]) as image:
        return image.resize(size, Image.Resampling.LANCZOS)


def save(image: Image.Image, name: str) -> None:
    image.save(PICTURES / name, quality=78, optimize=True)


def draw_pair(before: Image.Image, entry: dict) -> None:
    pair = Image.new("RGB", (2 * SHOWN[0] + GAP, SHOWN[1]), "white")
    pair.paste(before, (0, 0))
    pair.paste(picture(entry, SHOWN), (SHOWN[0] + GAP, 0))
    save(pair, f"{entry['name']}.jpg")


def draw_sheet(shown: list[dict]) -> None:
    font = ImageFont.truetype(FONT, 12)
    rows = -(-len(shown) // COLUMNS)
    across, down = TILE[0] + GAP, TILE[1] + LABEL
    sheet = Image.new("RGB", (COLUMNS * across + GAP, rows * down + GAP), "white")
    pen = ImageDraw.Draw(sheet)
    for index, entry in enumerate(shown):
        x, y = GAP + index % COLUMNS * across, GAP + index // COLUMNS * down
        sheet.paste(picture(entry, TILE), (x, y))
        pen.text((x + TILE[0] / 2, y + TILE[1] + LABEL / 2 - 1), entry["name"], "#333", font, "mm")
    save(sheet, "contact-sheet.jpg")


def plot_curves(name: str) -> None:
    """Draws the curves of an effect that consists of them."""
    plot = subprocess.run([TOOL, "curves", name, PICTURES / f"{name}.svg"], capture_output=True, text=True)
    if plot.returncode != 0 and "does not consist of curves" not in plot.stderr:
        sys.exit(plot.stderr)


PICTURES.mkdir(exist_ok=True)
subprocess.run([TOOL, "gallery", PHOTO, WORK, "--quality=95"], check=True)
original, *effects = entries()
before_any = picture(original, SHOWN)
for effect in effects:
    draw_pair(before_any, effect)
    plot_curves(effect["name"])
draw_sheet([original, *effects])
known = {entry["name"] for entry in effects} | {"contact-sheet"}
for file in PICTURES.iterdir():
    if file.stem not in known:
        file.unlink()
