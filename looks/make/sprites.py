"""Makes the built-in sprites and wind maps anew, in looks/sprites and looks/maps, and the pictures in scenes/assets and docs
that the scripts of this folder draw. Writes digests of all but scenes/assets, and of the scripts.

Run by `./tovu docs sprites`. The seeds are fixed, so that the same version of numpy and scipy gives the same pictures.
"""
import pathlib
import shutil
import sys
import tempfile

import numpy as np

import contact_sheet
import digests
import flames
import plates
import points
import puffs
import shapes
import winds
import wisps

LOOKS = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("sprites", "maps")
LARGEST = 8 * 1024 * 1024  # bytes of all files together
MAP_SIDE = 128
MAP_PICTURES = 32

# The drift is a share of the eddies' r.m.s. speed; foot: see winds.above_foot.
MAPS = {
    "rise": dict(seed=3, drift=(0, 1.1), waves=(1, 6), slope=1.6),
    "lean": dict(seed=5, drift=(0.4, 0.9), waves=(1, 6), slope=1.6),
    "blow": dict(seed=7, drift=(2.0, 0.5), waves=(2, 8), slope=1.3),
    "roll": dict(seed=9, drift=(0.8, 0), waves=(1, 5), slope=1.35),
    "curl": dict(seed=11, drift=(0, 0.5), waves=(2, 4), slope=1.1, foot=0.25),
    "stack": dict(seed=13, drift=(1.4, 1.5), waves=(1, 4), slope=1.4, foot=0.3),
}
TILE_SIDE, TILES = 64, 3  # of a map with a foot: a short loop moves by a tile, not by the range


def make_map(folder, name, seed, drift, waves, slope, foot=None):
    side = TILE_SIDE if foot else MAP_SIDE
    psis = winds.eddies(side, MAP_PICTURES, waves, winds.direction_of(drift), np.random.default_rng(seed), slope)
    frames = [winds.velocity(psi, 1 / side) for psi in (winds.above_foot(psis, TILES, foot) if foot else psis)]
    speed = winds.root_mean_square(frames)
    frames = [(u / speed + drift[0], v / speed + drift[1]) for u, v in frames]
    full = winds.save_loop(frames, lambda i: folder / f"{name}_{i:02d}.png")
    print(f"{name}: 255 is {full:.2f} times the r.m.s. speed of the eddies; drift {drift}")


def made_files():
    return sorted(path for folder in FOLDERS for path in (LOOKS / folder).glob("*.png"))


def digest_lines():
    """Digests of the pictures and of the scripts that made them."""
    scripts = [path for path in sorted((LOOKS / "make").glob("*.py")) if path.name != "gallery.py"]
    docs = [LOOKS.parent / "docs" / name for name in ("bake.png", "sprites.jpg")]
    return digests.lines([*made_files(), *docs, *scripts], LOOKS)


def main():
    with tempfile.TemporaryDirectory(dir=LOOKS) as made:
        made = pathlib.Path(made)
        for folder in FOLDERS:
            (made / folder).mkdir()
        for module in (shapes, points, puffs, flames, wisps):
            print(f"{module.__name__} ...", flush=True)
            module.make(made / "sprites")
        for name, options in MAPS.items():
            make_map(made / "maps", name, **options)
        for folder in FOLDERS:  # only after all files are made
            shutil.rmtree(LOOKS / folder, ignore_errors=True)
            shutil.move(made / folder, LOOKS / folder)
    plates.make(LOOKS.parent / "scenes" / "assets")
    contact_sheet.make(LOOKS, LOOKS.parent / "docs")
    stored = LOOKS / "digests.txt"
    before = stored.read_text().splitlines(True) if stored.exists() else []
    after = digest_lines()
    stored.write_text("".join(after))
    changed = {line.split()[1] for line in set(before) ^ set(after)}
    size = sum(path.stat().st_size for path in made_files())
    print(f"{len(made_files())} files, {size / 1024 / 1024:.1f} MiB; changed: {len(changed)}", *sorted(changed), sep="\n  ")
    if size > LARGEST:
        sys.exit(f"the pictures take {size} bytes; {LARGEST} are allowed")


main()
