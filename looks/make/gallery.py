"""docs/looks: a picture of each look, and the digests of its sources. Run by `./tovu docs looks`, which gives the program
that renders.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

from PIL import Image

import digests

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SIZE = (320, 180)

# Position of the look in the picture, and its background. The default is the ground of a dark picture.
PLACES = {"fog": (0, -10), "magic_dust": (0, -40), "explosion_puff": (0, 0), "ring": (0, 0), "word_on_fire": (0, -30),
          "blown_title": (0, -30), "breath": (-70, 0), "exhaust": (80, -10)}
BACKGROUNDS = {"dust_burst": "#6f7f8c", "chimney": "#5f7f9f", "snow_dust": "#3f5f86", "spray": "#16323f",
               "exhaust": "#8a8a84"}
SECONDS = {"explosion_puff": 8.4, "dust_burst": 9, "breath": 9, "exhaust": 7.6}


def draw(program, folder, name):
    x, y = PLACES.get(name, (0, -85))
    scene = folder / f"{name}.toml"
    scene.write_text(f'size = [640, 360]\nframe_rate = 25\nlength = 20\nbackground = "{BACKGROUNDS.get(name, "#141b26")}"\n'
                     f'container = [{{ name = "look", look = "{name}", position = [{x}, {y}, 0] }}]\n')
    picture = folder / f"{name}.png"
    subprocess.run([program, "render", scene, "--at", str(SECONDS.get(name, 12)), "-o", picture], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    Image.open(picture).convert("RGB").resize(SIZE, Image.LANCZOS).save(folder / f"{name}.jpg", quality=88)


def main():
    looks = sorted(path for path in (ROOT / "looks").glob("*.toml") if path.stem != "images")
    docs = ROOT / "docs" / "looks"
    with tempfile.TemporaryDirectory() as folder:
        for look in looks:
            draw(sys.argv[1], pathlib.Path(folder), look.stem)
        shutil.rmtree(docs, ignore_errors=True)  # only after all pictures are drawn
        docs.mkdir()
        for look in looks:
            shutil.copy(f"{folder}/{look.stem}.jpg", docs)
    sources = [*looks, ROOT / "looks" / "images.toml", ROOT / "looks" / "digests.txt", pathlib.Path(__file__).resolve()]
    made = sorted(docs.glob("*.jpg"))
    (docs / "digests.txt").write_text("".join(digests.lines([*made, *sources], docs)))


main()
