#!/usr/bin/python3
"""Draws the sample photo and the effects' pictures, the same on every run: draw_samples.py [folder]"""
import sys
from pathlib import Path
from typing import Iterator

import numpy as np
from PIL import Image, ImageChops, ImageDraw, ImageFilter

Points = list | np.ndarray  # pairs of x and y
Fill = str | tuple[int, ...] | Image.Image  # a colour, or a texture of the canvas's size
WIDTH, HEIGHT, SCALE = 1200, 900, 2  # the scene is painted larger, then reduced, which smooths every edge
SIZE = (WIDTH * SCALE, HEIGHT * SCALE)
Y, X = np.mgrid[0:SIZE[1], 0:SIZE[0]].astype(np.float32) / SCALE
FACE = 86  # half the width of a face
RNG = np.random.default_rng(20)

# --- Brushes. Positions and blur radii are in pixels of the finished photo. ---
def curve(points: Points) -> np.ndarray:
    """Rounds a coarse outline: a closed Catmull-Rom spline passes through the given points."""
    a, b, c, d = (np.roll(np.asarray(points, float), shift, axis=0) for shift in (1, 0, -1, -2))
    t = np.linspace(0, 1, 10)[:, None, None]
    spline = b + t / 2 * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)))
    return spline.swapaxes(0, 1).reshape(-1, 2)

def oval(x: float, y: float, rx: float, ry: float) -> np.ndarray:
    return np.array([(x + rx * np.cos(angle), y + ry * np.sin(angle)) for angle in np.linspace(0, 2 * np.pi, 40)])

def box(x0: float, y0: float, x1: float, y1: float) -> np.ndarray:
    return np.array([(x0, y0), (x1, y0), (x1, y1), (x0, y1)], float)

def both(outline: Points) -> list[np.ndarray]:
    return [np.array(outline), np.array(outline) * (-1, 1)]

def symmetric(right_half: Points) -> np.ndarray:
    return np.concatenate([right_half, both(right_half)[1][::-1]])

def on_canvas(points: Points) -> list[tuple[float, float]]:
    return list(map(tuple, np.asarray(points) * SCALE))

def silhouette(*outlines: Points) -> Image.Image:
    """A mask that keeps shading inside shapes that have been painted already."""
    mask = Image.new("L", SIZE)
    for outline in outlines:
        ImageDraw.Draw(mask).polygon(on_canvas(outline), fill=255)
    return mask

def paint(img: Image.Image, shape: Points, fill: Fill, blur=0.0, alpha=1.0, clip: Image.Image | None = None) -> None:
    """Fills a shape. The mask covers only its surroundings, for speed."""
    points, reach = np.asarray(shape) * SCALE, 3 * blur * SCALE + 2
    low, high = np.floor(points.min(axis=0) - reach), np.ceil(points.max(axis=0) + reach)
    area = tuple(np.concatenate([low, high]).astype(int))
    mask = Image.new("L", (area[2] - area[0], area[3] - area[1]))
    ImageDraw.Draw(mask).polygon(list(map(tuple, points - low)), fill=round(255 * alpha))
    mask = mask.filter(ImageFilter.GaussianBlur(blur * SCALE))
    mask = ImageChops.multiply(mask, clip.crop(area)) if clip else mask
    img.paste(fill.crop(area) if isinstance(fill, Image.Image) else fill, area, mask)

def noise(size: tuple[int, int], cells_x: int, cells_y: int, octaves: int) -> np.ndarray:
    """Cloudy noise between 0 and 1; the largest blobs fill one of the given cells."""
    total = np.zeros(size[::-1], np.float32)
    for zoom in 2 ** np.arange(octaves):
        blobs = Image.fromarray(RNG.random((cells_y * zoom, cells_x * zoom)).astype(np.float32))
        total += np.asarray(blobs.resize(size, Image.BICUBIC)) / zoom
    return (total - total.min()) / (total.max() - total.min())

def blend(a: tuple | np.ndarray, b: tuple, t: np.ndarray) -> np.ndarray:
    return np.asarray(a) + (np.asarray(b, np.float32) - a) * np.clip(t, 0, 1)[..., None]

def tone(dark: tuple, light: tuple, t: float) -> tuple[int, ...]:
    return tuple(blend(dark, light, np.float32(t)).astype(int))

def to_image(pixels: np.ndarray) -> Image.Image:
    """Rounds up or down at random, so that no smooth gradient shows bands."""
    return Image.fromarray((pixels + RNG.random(pixels.shape)).clip(0, 255).astype(np.uint8))

def leaves(img: Image.Image, centre: tuple, radii: tuple, count: int, size: float, tones: tuple, clumps: int) -> None:
    """Foliage, and curly hair as well: dabs in clumps, each clump lit from the upper left."""
    angle, reach = RNG.uniform(0, 2 * np.pi, clumps), 0.8 * np.sqrt(RNG.random(clumps))
    hubs = (np.stack([np.cos(angle), np.sin(angle)]) * reach).T[RNG.integers(0, clumps, count)]
    offsets = RNG.normal(0, 1, (count, 2)).clip(-1.6, 1.6)
    lit = 0.42 - (0.16 * offsets + 0.22 * hubs) @ (0.6, 0.8) + RNG.normal(0, 0.1, count)
    spots = centre + (hubs + 0.9 * offsets / np.sqrt(clumps)) * radii
    for i in np.argsort(lit):  # bright dabs lie on top
        dab = RNG.uniform(0.5, 1, 2) * size
        ImageDraw.Draw(img).ellipse(on_canvas([spots[i] - dab, spots[i] + dab]), fill=tone(*tones, lit[i]))

# --- The scene, from back to front. The sun stands at the upper left. ---
def sky() -> Image.Image:
    air = blend((62, 126, 204), (204, 222, 228), Y / 440)
    air = blend(air, (255, 228, 184), 0.8 * np.exp(-np.hypot((X - 60) / 620, (Y - 340) / 300) ** 2))
    shape = noise(SIZE, 5, 9, 6)
    relief = shape - np.pad(shape, ((28, 0), (20, 0)), "edge")[:-28, :-20]  # bright on the sunny side
    cloud = blend((196, 202, 216), (255, 252, 246), 0.4 + 3 * relief)
    return to_image(blend(air, cloud, np.interp(shape, (0.42, 0.74), (0, 0.9))))

def hills(img: Image.Image) -> None:
    for base, swing, fill in ((395, 34, "#8ea6b6"), (420, 26, "#70918c"), (445, 16, "#608662")):
        ridge = [(x, base - swing * RNG.random()) for x in range(-140, 1400, 95)]
        paint(img, curve([*ridge, (1300, 600), (-100, 600)]), fill, 0.6)
    for x in range(230, 940, 26):
        leaves(img, (x, 448), RNG.uniform((22, 12), (40, 30)), 240, 3, ((38, 66, 40), (138, 164, 84)), 6)

def grass(img: Image.Image, count: int, top: float) -> None:
    for y in np.sort(top + (930 - top) * RNG.random(count) ** 1.2):  # far blades first
        x, near = RNG.uniform(0, WIDTH), (y - 460) / 470
        blade = [(x, y), (x + RNG.normal(1, 5) * (0.2 + near), y - 3 - 26 * near * RNG.uniform(0.4, 1))]
        fill = tone((46, 84, 30), (176, 196, 92), RNG.normal(0.45, 0.25))
        ImageDraw.Draw(img).line(on_canvas(blade), fill=fill, width=1 + round(near * 1.5))

def meadow(img: Image.Image) -> None:
    ground = blend((176, 190, 100), (74, 112, 42), (Y - 455) / 445 + 0.5 * noise(SIZE, 5, 22, 4) - 0.3)
    paint(img, box(-9, 459, WIDTH + 9, HEIGHT + 9), to_image(ground), 1.5)
    grass(img, 26000, 462)
    for y in np.sort(RNG.uniform(466, HEIGHT, 420)):  # flowers, smaller ones further away
        fill, r = str(RNG.choice(["#ec483c", "#faf6ec", "#f6d042", "#966ece"])), 0.8 + (y - 460) / 150
        paint(img, oval(RNG.uniform(0, WIDTH), y, r, 0.8 * r), fill)
    img.paste(img.filter(ImageFilter.GaussianBlur(0.7 * SCALE)))  # out of focus, unlike what follows

def bricks() -> Image.Image:
    along = X / 34 + Y // 13 % 2 * 0.5
    clay = blend((168, 92, 68), (206, 138, 98), RNG.random((80, 50))[(Y // 13).astype(int), along.astype(int)])
    wall = blend((206, 192, 172), clay, np.minimum(Y % 13, along % 1 * 34) - 1)
    return to_image(wall * (0.8 + 0.36 * noise(SIZE, 13, 15, 6))[..., None])

def house(img: Image.Image) -> None:
    paint(img, box(905, 214, 1240, 786), bricks())
    wall = silhouette(box(905, 214, 1240, 786))
    arch = curve(symmetric([(26, 424), (62, 452), (84, 520), (84, 620), (84, 860), (84, 900)]) + (1075, 0))
    paint(img, (arch - (1075, 600)) * (1.24, 1.12) + (1075, 600), "#cec2ac", 0.5, clip=wall)
    paint(img, arch, "#110e0f", 1, clip=wall)
    for x in range(1023, 1143, 20):  # the planks of a door deep in the dark, just above black
        paint(img, box(x, 500, x + 17, 770), (30 + x % 3 * 3, 25, 22), 1)
    paint(img, box(905, 214, 1260, 250), "#28181e", 6, 0.7)  # the shadow of the roof
    roof = silhouette([(876, 222), (956, 96), (1240, 96), (1240, 222)])
    for y in range(228, 90, -11):
        paint(img, box(870, y - 22, 1240, y), "#5c2e2a", clip=roof)
        for x in range(870 + y % 2 * 8, 1210, 16):
            paint(img, oval(x, y - 11, 7.6, 9), tone((146, 72, 56), (188, 106, 78), RNG.random()), clip=roof)
    for y in range(250, 800, 42):  # ivy
        leaves(img, (909 + RNG.normal(0, 6), y), (26, 40), 320, 3.2, ((22, 44, 22), (142, 172, 70)), 9)

def tree(img: Image.Image) -> None:
    trunk = curve([(42, 870), (74, 700), (70, 420), (50, 200), (120, 200), (122, 420), (130, 700), (176, 870)])
    paint(img, trunk, to_image(blend((50, 36, 30), (142, 112, 88), noise(SIZE, 110, 9, 3))))
    paint(img, box(106, 180, 210, 880), "#20161a", 14, 0.9, silhouette(trunk))
    for x, y, rx, ry in ((60, 210, 190, 120), (180, 120, 150, 110), (10, 60, 200, 130), (240, 24, 150, 70)):
        leaves(img, (x, y), (rx, ry), 5200, 4.4, ((16, 38, 18), (170, 192, 76)), 40)

def colour_chart(img: Image.Image) -> None:
    """Six by four patches as studios use them: naturals, hues, primaries and a grey ramp."""
    patches = ("735244 c29682 627a9d 576c43 8580b1 67bdaa d67e2c 505ba6 c15a63 5e3c6c 9dbc40 e0a32e "
               "383d96 469449 af363c e7c71f bb5695 0885a1 f3f3f2 c8c8c8 a0a0a0 7a7a79 555555 343434")
    paint(img, box(852, 620, 868, 850), "#785636")
    paint(img, box(749, 586, 971, 742), "#222122")
    for i, patch in enumerate(patches.split()):
        x, y = 757 + i % 6 * 35, 594 + i // 6 * 36
        paint(img, box(x, y, x + 31, y + 32), "#" + patch)
    grass(img, 5000, 780)  # the post, the house and the tree stand in it

def balloon(img: Image.Image) -> None:
    thread = [(800 - 110 * t ** 3, 300 + 350 * t) for t in np.linspace(0, 1, 40)]
    ImageDraw.Draw(img).line(on_canvas(thread), fill="#ece2d6", width=SCALE)
    skin = silhouette(oval(800, 226, 62, 74), [(800, 292), (810, 311), (790, 311)])
    paint(img, oval(800, 240, 80, 90), "#ce1c24", clip=skin)
    paint(img, oval(840, 276, 50, 56), "#68061a", 18, 0.95, skin)
    paint(img, oval(780, 196, 30, 36), "#fa5c4c", 14, 0.95, skin)
    paint(img, oval(776, 186, 11, 15), "white", 2.5, 0.95, skin)

# Layers of a portrait from back to front: part, colour, blur, alpha, outlines. A part's first layer bounds the
# rest of it. The unit is half the width of the face; the origin lies between the eyes.
PORTRAIT = [
    ("body", "cloth", 0, 1, symmetric([(0.5, 1.7), (1.15, 1.95), (1.72, 2.3), (1.95, 3.2), (2, 6.5)])),
    ("body", "night", 0.3, 0.55, [(0.9, 1.8), (2.3, 2.2), (2.4, 6), (1.2, 6), (1, 3.2)]),
    ("body", "night", 0.1, 0.5, *both([(1.3, 2.9), (1.4, 2.9), (1.4, 6), (1.2, 6)]), oval(0, 1.86, 0.8, 0.6)),
    ("neck", "skin", 0, 1, symmetric([(0.5, 0.7), (0.47, 1.4), (0.62, 1.84), (0.2, 2.25)])),
    ("neck", "shade", 0.14, 0.9, oval(0.1, 1.15, 0.8, 0.5), oval(0.5, 1.6, 0.3, 0.7)),
    ("ears", "skin", 0, 1, *both(oval(0.97, 0.2, 0.13, 0.24))),
    ("head", "skin", 0, 1, symmetric([(0.4, -1.2), (0.9, -0.6), (0.96, 0), (0.89, 0.5), (0.66, 0.98), (0.3, 1.24)])),
    ("head", "shade", 0.2, 0.9, [(0.7, -1.2), (1.3, -1), (1.3, 1), (0.5, 1.5), (0.6, 0.9), (0.76, 0.3)]),
    ("head", "shine", 0.18, 0.8, oval(-0.3, -0.5, 0.4, 0.2), oval(-0.58, 0.3, 0.2, 0.14)),
    ("head", "blush", 0.14, 0.6, *both(oval(0.57, 0.46, 0.25, 0.18))),
    ("head", "shade", 0.1, 0.45, *both(oval(0.4, -0.05, 0.26, 0.16)), oval(0, -1.1, 1, 0.4)),
    ("head", "shade", 0.06, 0.6, [(0.08, -0.1), (0.14, 0.3), (0.22, 0.44), (0.06, 0.48), (0.06, 0.1)]),
    ("head", "shade", 0.04, 0.7, oval(0, 0.49, 0.2, 0.05), oval(0, 1.07, 0.2, 0.05), *both(oval(0.4, 0.17, 0.2, 0))),
    ("head", "shine", 0.05, 0.6, oval(-0.04, 0.18, 0.05, 0.22), oval(-0.04, 0.39, 0.07, 0.05)),
    ("head", "shade", 0.015, 0.9, *both(oval(0.09, 0.485, 0.045, 0.02))),
    ("eyes", "white", 0, 1, *both([(0.19, 0.05), (0.3, -0.08), (0.5, -0.1), (0.65, 0.02), (0.5, 0.1), (0.3, 0.1)])),
    ("eyes", "iris", 0.01, 1, *both(oval(0.41, -0.01, 0.12, 0.12))),
    ("eyes", "dark", 0.005, 1, *both(oval(0.41, -0.01, 0.06, 0.06))),
    ("eyes", "white", 0.005, 1, oval(0.37, -0.05, 0.028, 0.028), oval(-0.45, -0.05, 0.028, 0.028)),
    ("head", "dark", 0.006, 1, *both([(0.17, 0.06), (0.3, -0.1), (0.5, -0.13), (0.7, 0), (0.5, -0.09), (0.3, -0.07)])),
    ("head", "brow", 0.025, 0.9, *both([(0.16, -0.33), (0.3, -0.39), (0.5, -0.41), (0.68, -0.29), (0.5, -0.35)])),
    ("lips", "lips", 0.01, 1, symmetric([(0.06, 0.68), (0.24, 0.7), (0.44, 0.72), (0.3, 0.9), (0.08, 0.99)])),
    ("lips", "dark", 0.01, 0.9, symmetric([(0.1, 0.755), (0.37, 0.735), (0.24, 0.86), (0.08, 0.91)])),
    ("lips", "white", 0.015, 1, symmetric([(0.1, 0.76), (0.32, 0.745), (0.2, 0.84), (0.08, 0.87)])),
]

def portrait(img: Image.Image, at: tuple[float, float], tilt: float, cloth: np.ndarray, tones: str) -> None:
    fills: dict[str, Fill] = dict(zip("skin shade shine blush lips iris brow".split(), tones.split()))
    fills |= {"cloth": to_image(cloth), "night": "#100e22", "white": "#f6f0ea", "dark": "#241412"}
    turn = np.array([[np.cos(tilt), np.sin(tilt)], [-np.sin(tilt), np.cos(tilt)]])
    bounds: dict[str, Image.Image] = {}
    for part, fill, blur, alpha, *outlines in PORTRAIT:
        shapes = [curve(outline @ turn * FACE + at) for outline in outlines]
        bounds.setdefault(part, silhouette(*shapes))
        for shape in shapes:
            paint(img, shape, fills[fill], blur * FACE, alpha, bounds[part])

def people(img: Image.Image) -> None:
    gingham = blend((240, 238, 232), (52, 98, 160), (X - 0.12 * Y) % 26 // 13 * 0.5 + (Y + 0.12 * X) % 26 // 13 * 0.5)
    hair = to_image(blend((92, 38, 18), (226, 140, 76), noise(SIZE, 240, 6, 3)))
    paint(img, curve(symmetric([(40, 330), (96, 370), (116, 520), (130, 640)]) + (568, 0)), hair)
    portrait(img, (566, 446), -0.06, gingham, "#ecbc9e #ba7c62 #ffe2c8 #ee8c7a #cc5858 #4a706e #784020")
    for lock in both([(-5, 326), (64, 330), (99, 400), (114, 540), (136, 676), (84, 660), (78, 460), (40, 378)]):
        paint(img, curve(lock + (568, 6)), "#54200e", 5, 0.6, silhouette(oval(568, 500, 88, 190)))
        paint(img, curve(lock + (568, 0)), hair)
    stitches = np.sin(2 * np.pi * (Y / 9 + 1.1 * np.abs(X / 10 % 1 - 0.5))) - 1.5 * np.abs(np.cos(np.pi * X / 10)) ** 6
    knitted = blend((0, 0, 0), (226, 164, 44), 0.88 + 0.12 * stitches)
    paint(img, oval(336, 350, 102, 84), "#1e1614", 3)
    leaves(img, (334, 348), (128, 108), 9000, 3.4, ((14, 10, 12), (104, 74, 60)), 80)
    portrait(img, (330, 400), 0.07, knitted, "#8e583c #542e22 #c48862 #a84e3c #963e3e #3e2416 #221816")
    leaves(img, (337, 297), (92, 36), 1800, 3.2, ((14, 10, 12), (104, 74, 60)), 40)

def photo() -> Image.Image:
    scene = sky()
    for element in (hills, meadow, house, tree, colour_chart, balloon, people):
        element(scene)
    # From here on it is the camera's doing: warm sun, vignette and a little grain.
    pixels = np.asarray(scene.resize((WIDTH, HEIGHT), Image.LANCZOS), np.float32)
    x, y = X[::SCALE, ::SCALE], Y[::SCALE, ::SCALE]
    pixels = blend(pixels, (255, 240, 200), 0.2 * np.exp(-np.hypot((x - 60) / 700, (y - 200) / 520) ** 2))
    light = 1.05 - 0.5 * (x / WIDTH - 0.5) ** 2 - 0.5 * (y / HEIGHT - 0.5) ** 2
    return to_image(pixels * light[..., None] + RNG.normal(0, 2, (HEIGHT, WIDTH, 1)))

# --- Overlays. They are blended as soft light, for which 128 is neutral. ---
def overlays() -> Iterator[tuple[str, np.ndarray]]:
    y, x = np.mgrid[0:720, 0:720].astype(np.float32) / 720
    yield "effect_lomo", blend((160, 156, 146), (34, 40, 52), 2 * (x - 0.5) ** 2 + 2 * (y - 0.5) ** 2)
    paper = 4 * np.round(4 * noise((720, 720), 120, 60, 1) - 2)
    yield "sucai3", blend((104, 124, 154), (168, 138, 102), (x + y) / 2) + paper[..., None]
    for suffix, width, height in (("", 720, 960), ("_r", 960, 720)):
        y, x = np.mgrid[0:height, 0:width].astype(np.float32) / 720
        slope = (x + y) * 720 / (width + height)
        yield "red2green" + suffix, blend((188, 98, 100), (98, 178, 106), slope)
        leak = blend((134, 124, 122), (104, 102, 114), slope)
        leak = blend(leak, (240, 158, 116), 0.95 * np.exp(-3 * np.hypot(x, y * 0.8) ** 2))
        for _ in range(16):  # discs of light, more of them near the bright corner
            r, (u, v) = RNG.uniform(0.03, 0.09), RNG.beta(1, 2, 2) * (width / 720, height / 720)
            leak = blend(leak, (232, 176, 148), np.interp(np.hypot(x - u, y - v), (0.8 * r, r), (0.3 - 2 * r, 0)))
        yield "sucai0" + suffix, leak

# --- Pictures of the classic effects ---
def wash() -> Image.Image:
    """Added to a photo: dark, so that the photo keeps its highlights. Violet, rose and amber over teal."""
    y, x = np.mgrid[0:360, 0:480].astype(np.float32) / 480
    glow = sum(np.exp(-np.hypot(x - u, y - v)[..., None] ** 2 / r) * np.array(colour, np.float32)
               for u, v, r, colour in ((0.05, 0.05, 0.16, (64, 8, 92)), (0.6, 0.0, 0.12, (96, 16, 44)),
                                       (1.0, 0.3, 0.14, (104, 62, 0)), (0.3, 0.75, 0.2, (0, 56, 64))))
    return Image.fromarray(np.round(glow / 2).clip(0, 127).astype(np.uint8) * 2)

def film() -> Iterator[tuple[str, Image.Image]]:
    """A strip of film around the photo, and a mask for its right half, which turns negative."""
    width, height, margin, holes, fine = 960, 720, 92, 12, 4
    def rounded(radius: int, *boxes: tuple) -> Image.Image:  # drawn larger and reduced, for smooth edges
        area = Image.new("L", (width * fine, height * fine))
        for x0, y0, x1, y1 in boxes:
            ImageDraw.Draw(area).rounded_rectangle((x0 * fine, y0 * fine, x1 * fine, y1 * fine), radius * fine, fill=255)
        return area.resize((width, height), Image.BOX)
    front = Image.new("RGBA", (width, height), "#1d1713")
    lefts = [round((i + 0.5) * width / holes) - 22 for i in range(holes)]
    front.paste("#efe6d2", mask=rounded(9, *[(x, y, x + 44, y + 44) for x in lefts for y in (24, height - 68)]))
    front.putalpha(ImageChops.invert(rounded(22, (24, margin, width - 24, height - margin))))
    mask = Image.new("RGBA", (width, height), (255, 255, 255, 0))
    ImageDraw.Draw(mask).polygon([(width * 0.68, 0), (width, 0), (width, height), (width * 0.32, height)], fill="white")
    yield from (("front", front), ("effect", mask))

if __name__ == "__main__":
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    effects = folder / "device/data/data/com.android.camera/effect"
    effects.mkdir(parents=True, exist_ok=True)
    photo().save(folder / "photo.jpg", quality=85, optimize=True)
    for name, pixels in overlays():
        even = Image.fromarray(np.round(pixels / 2).astype(np.uint8) * 2)  # half the levels, for smaller files
        even.save(effects / f"{name}.png", optimize=True)
    for name, picture in (("colorpaint", wash()), *film()):
        picture.save(effects / f"{name}.png", optimize=True)
