"""docs/looks.jpg: every look once. Run by `./tovu docs looks`, which gives the program that renders."""
import pathlib
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SIZE = (320, 180)
COLUMNS = 4

# Where the look stands in the picture, and a background that shows it; others stand on the ground of a dark one.
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
    drawn = Image.open(picture).convert("RGB").resize(SIZE, Image.LANCZOS)
    ImageDraw.Draw(drawn).text((6, 4), name, fill=(220, 224, 230))
    return drawn


def main():
    names = sorted(path.stem for path in (ROOT / "looks").glob("*.toml") if path.stem != "images")
    sheet = Image.new("RGB", (SIZE[0] * COLUMNS, SIZE[1] * -(-len(names) // COLUMNS)))
    with tempfile.TemporaryDirectory() as folder:
        for i, name in enumerate(names):
            sheet.paste(draw(sys.argv[1], pathlib.Path(folder), name), (i % COLUMNS * SIZE[0], i // COLUMNS * SIZE[1]))
    sheet.save(ROOT / "docs" / "looks.jpg", quality=88)


main()
