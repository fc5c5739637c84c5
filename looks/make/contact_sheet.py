"""The pictures of docs/images.md: the built-in sprites, and four baked winds. Run by `./tovu docs sprites`."""
import pathlib
import subprocess
import sys
import tempfile

import numpy as np
from PIL import Image, ImageDraw

MAKE = pathlib.Path(__file__).resolve().parent
CELL = 120
BACKGROUND = (24, 30, 40)


def sheet_of(pictures, columns):
    rows = -(-len(pictures) // columns)
    sheet = Image.new("RGB", (columns * CELL, rows * CELL), BACKGROUND)
    for i, picture in enumerate(pictures):
        scaled = picture.convert("RGBA")
        scaled.thumbnail((CELL, CELL), Image.LANCZOS)
        left = i % columns * CELL + (CELL - scaled.width) // 2
        sheet.paste(scaled, (left, i // columns * CELL + (CELL - scaled.height) // 2), scaled)
    return sheet


def sprites(folder):
    """One picture of each sprite. For a flipbook it is the tenth."""
    files = sorted(path for path in folder.glob("*.png") if not path.stem[-2:].isdigit() or path.stem.endswith("_09"))
    return sheet_of([Image.open(path) for path in files], 6)


def wind(path, arrows=None):
    """Draws streamlines of a wind over its strength."""
    field = np.asarray(Image.open(path).convert("RGB"), float) / 255
    side = 240
    picture = Image.fromarray((field[..., :1] * (70, 90, 130) + BACKGROUND).astype(np.uint8)).resize((side, side))
    if arrows is not None:
        picture = Image.blend(picture, arrows.resize((side, side), Image.LANCZOS), 0.35)
    draw = ImageDraw.Draw(picture)
    for y in range(8, side, 16):
        for x in range(8, side, 16):
            strength, _, turns = field[y * field.shape[0] // side, x * field.shape[1] // side]
            along = 18 * strength * np.exp(2j * np.pi * turns)
            draw.line([x, y, x + along.real, y - along.imag], fill="white")
            draw.ellipse([x - 1, y - 1, x + 1, y + 1], fill="white")
    return picture


def drawn_arrows(path):
    picture = Image.new("RGB", (400, 400), "black")
    draw = ImageDraw.Draw(picture)
    draw.line([(40, 340), (330, 340)], fill="orange", width=8)
    draw.polygon([(330, 320), (330, 360), (375, 340)], fill="orange")
    draw.arc([100, 60, 300, 260], 90, 330, fill="orange", width=8)
    draw.polygon([(262, 118), (308, 100), (272, 75)], fill="orange")
    picture.save(path)
    return picture


def winds():
    with tempfile.TemporaryDirectory() as folder:
        arrows = drawn_arrows(f"{folder}/arrows.png")
        for kind in ("eddies --drift 0,10 -o eddies%d.png", "vortex -o vortex.png", "shear --drift 1,0 -o shear%d.png",
                     "flow arrows.png -o flow.png"):
            subprocess.run([sys.executable, "-B", MAKE / "bake.py", *kind.split()], cwd=folder, check=True,
                           stdout=subprocess.DEVNULL)
        pictures = [wind(f"{folder}/{name}.png") for name in ("eddies0", "vortex", "shear0")]
        pictures.append(wind(f"{folder}/flow.png", arrows))
    sheet = Image.new("RGB", (244 * 4, 240), "white")
    for i, picture in enumerate(pictures):
        sheet.paste(picture, (244 * i, 0))
    return sheet


def make(looks, docs):
    sprites(looks / "sprites").save(docs / "sprites.jpg", quality=85)
    winds().quantize(128).save(docs / "bake.png", optimize=True)
