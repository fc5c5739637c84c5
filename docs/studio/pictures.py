"""Draws the pictures of docs/studio.md: screenshots of the studio with numbers at what the page explains.

usage: pictures.py STUDIO SCENES    the program, and the folder of the gallery's scenes
"""
import os
import pathlib
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw, ImageFont

FOLDER = pathlib.Path(__file__).parent
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
RADIUS = 12  # of a number's disc, pixels
BESIDE = {"warnings"}  # headings, below which there is text

# Of each picture: what the studio opens, the script until the screenshot, and the targets to number.
PICTURES = {
    "gallery": ("", "wait drawn\n", []),
    "stage": (
        "campfire",
        'wait picture\nclick container\nwait "container.campfire.embers"\nclick "container.campfire.embers"\n'
        'wait frames 5\nclick timeline@0.5,0.5\nclick Pause\nclick "Safe areas"\nwait picture\n'
        "drag parameter.birth_rate 200 0\nwait picture\n",
        ["container", "search", "parameter.birth_rate", "reset.birth_rate", "group.Colour and fade", "help", "A", "Save",
         "Safe areas", "picture", "numbers", "warnings", "Loop", "timeline"],
    ),
    "curves": (
        "steam",
        'wait picture\nclick Pause\nclick search\ntype over life\nwait parameter.alpha_curve\nwait frames 5\n'
        "click parameter.alpha_curve@0.4,0.3\nwait frames 5\n",
        ["parameter.color", "parameter.alpha_curve"],
    ),
}


def run_studio(studio, scenes, opened, script, folder):
    """Returns the screenshot and the places of the targets: name to (left, top, right, bottom)."""
    shot, places, file = folder / "shot.png", folder / "places.txt", folder / "script.txt"
    file.write_text(f"size 1600 900\n{script}screenshot {shot}\nplaces {places}\n")
    environment = dict(os.environ, SDL_VIDEODRIVER="offscreen", XDG_STATE_HOME=str(folder))
    command = [studio, *([opened] if opened else []), "--scenes", scenes, "--script", str(file)]
    subprocess.run(command, check=True, cwd=folder, env=environment)
    lines = (line.split("\t") for line in places.read_text().splitlines())
    return Image.open(shot).convert("RGB"), {name: tuple(map(float, place)) for name, *place in lines}


def free_place(target, place):
    """Where a number hides no text: in the corner of something large, at the right end of a field, else below or beside."""
    left, top, right, bottom = place
    if bottom - top > 4 * RADIUS:
        return right - 2 * RADIUS, top + 2 * RADIUS
    if right - left > 8 * RADIUS:
        return right - 3 * RADIUS, (top + bottom) / 2
    if target in BESIDE:
        return right + 1.5 * RADIUS, (top + bottom) / 2
    return (left + right) / 2, bottom + 0.5 * RADIUS


def number(picture, places, targets):
    draw = ImageDraw.Draw(picture)
    font = ImageFont.truetype(FONT, 15)
    for index, target in enumerate(targets, 1):
        x, y = free_place(target, places[target])
        draw.ellipse((x - RADIUS, y - RADIUS, x + RADIUS, y + RADIUS), fill=(242, 184, 75), outline=(20, 20, 20), width=2)
        draw.text((x, y), str(index), font=font, fill=(20, 20, 20), anchor="mm")


def main():
    studio, scenes = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:])
    for name, (opened, script, targets) in PICTURES.items():
        with tempfile.TemporaryDirectory() as folder:
            picture, places = run_studio(studio, scenes, opened, script, pathlib.Path(folder))
        number(picture, places, targets)
        picture.save(FOLDER / f"{name}.jpg", quality=86)
        print(FOLDER / f"{name}.jpg")


main()
