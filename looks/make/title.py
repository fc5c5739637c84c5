"""A title that erodes into smoke from right to left: pictures of the remaining title, pictures of the eroding band, which
are the smoke's `spawn_image`, and a scene that plays them."""
import pathlib

import numpy as np
from PIL import Image, ImageDraw, ImageFont

from fields import noise, pixel_centres, save

WIDTH, HEIGHT = 1024, 256  # pixels
UNITS = 360                # width of the title in the scene
PICTURES_PER_SECOND = 25

# Births per second of each smoke when the band is widest.
RATES = {"fine smoke": 7000, "wisps": 230, "other wisps": 230}

SMOKE = """
[[container]]
name = "{name}"
texture = "{texture}"
[container.parameters]
number_of_particles = {most}
birth_rate = 0
life_time = {life}
life_time_spread = 50
spawn_type = "Image"
spawn_image = "edge"
spawn_range_x = {width}
spawn_range_y = {height}
opening_angle_x = 180
opening_angle_z = 180
initial_speed = 4
initial_speed_spread = 80
gravity = {gravity}
use_wind_image = true
wind_image = "blow"
wind_image_range_x = 460
wind_image_range_y = 260
wind_force = 170
size_birth_x = {birth}
size_birth_y = {birth}
size_death_x = {death}
size_death_y = {death}
size_birth_spread_x = 50
size_birth_spread_y = 50
rot_start_spread = 100
rot_change_spread = 40
alpha_curve = "{alpha}"
color = "0 0.96 0.97 1 1 0.55 0.62 0.75"
"""

PLATE = """
[[container]]
name = "title"
geometry = {{ kind = "plate", image = "title", width = {width}, height = {height}, fill = [0.95, 0.97, 1] }}
"""


def letters(text, font):
    """The text as a mask, 0 to 1, as large as possible. Row 0 is the bottom. ValueError: the text has no visible pixel."""
    picture = Image.new("L", (WIDTH * 2, HEIGHT * 2))
    draw = ImageDraw.Draw(picture)
    for size in range(300, 10, -4):
        face = ImageFont.truetype(font, size)
        left, top, right, bottom = draw.textbbox((0, 0), text, font=face)
        if right - left < picture.width * 0.84 and bottom - top < picture.height * 0.8:
            break
    draw.text((WIDTH - (left + right) / 2, HEIGHT - (top + bottom) / 2), text, font=face, fill=255)
    mask = np.asarray(picture.resize((WIDTH, HEIGHT), Image.LANCZOS))[::-1] / 255
    if mask.max() < 0.5:
        raise ValueError("must have letters that can be seen")
    return mask


def erosion_times(mask, rng):
    """The time at which each pixel erodes, 0 to 1 over the letters: from right to left, ragged by noise."""
    y, x = pixel_centres(HEIGHT, WIDTH)
    time = 1 - x + 0.05 * noise(rng, (HEIGHT, WIDTH), 1.25, stretch=(1, HEIGHT / WIDTH)) + 0.04 * (y - 0.5)
    inside = time[mask > 0.5]
    return (time - inside.min()) / np.ptp(inside)


def save_pictures(folder, mask, count, rng):
    """Writes the pictures of the title and of its band. Returns the area of the band in each picture, in pixels."""
    goes = erosion_times(mask, rng)
    y, _ = pixel_centres(HEIGHT, WIDTH)
    areas = []
    for i in range(count):
        time = (i + 1) / (count - 1) * 1.06 - 0.03
        glow = np.exp(-(((goes - time) / 0.02) ** 2))
        left = mask * np.clip((goes - time) / 0.012, 0, 1)
        save(folder / f"title_{i:02d}.png", 0.86 + 0.11 * y + 0.05 * glow, left)
        band = (mask > 0.4) & (np.abs(goes - time) < 0.03)
        # Births repeat the last rows and columns of the mask beyond it.
        band[:2] = band[-2:] = band[:, -2:] = False
        save(folder / f"edge_{i:02d}.png", band.astype(float))
        areas.append(int(band.sum()))
    return areas


def rate_tracks(areas, start):
    """Tracks of the birth rates, which follow the area of the band. A constant rate would be too dense for a small band."""
    shares = {0: 0, **{i: areas[i] / max(areas) for i in range(2, len(areas), 2)}, len(areas): 0}
    for name, most in RATES.items():
        keys = [f"    {{ time = {start + i / PICTURES_PER_SECOND:.2f}, value = {round(most * share)} }},\n"
                for i, share in shares.items()]
        yield f'\n[[track]]\ncontainer = "{name}"\nparameter = "birth_rate"\nkeys = [\n{"".join(keys)}]\n'


def scene(text, areas, start):
    height = UNITS * HEIGHT // WIDTH
    sequence = f"frame_rate = {PICTURES_PER_SECOND}, start = {start:g}, play = \"hold\""
    area = dict(width=UNITS, height=height)
    wisp_alpha = "0 0 0.08 0.42 0.35 0.2 0.7 0.07 1 0"
    backdrop = 'geometry = { kind = "plate", image = "glow", width = 640, height = 420, fill = [0.16, 0.22, 0.34] }'
    return (f"# The title {ascii(text)} erodes from right to left and blows away. Made by ./tovu bake title.\n"
            f"size = [1280, 720]\nframe_rate = 25\nlength = {start + len(areas) / PICTURES_PER_SECOND + 2:g}\n"
            f"prewarm = 1\nseed = 11\nbackground = \"#070a11\"\n\n[images]\n"
            f"title = {{ file = \"title_%02d.png\", {sequence} }}\nedge = {{ file = \"edge_%02d.png\", {sequence} }}\n"
            f"# It moves over 460 units as fast as the smoke.\nblow = {{ file = \"blow\", frame_rate = 5.2 }}\n\n"
            f"[[container]]\nname = \"backdrop\"\n{backdrop}\n" +
            SMOKE.format(name="wisps", texture="wisp_c", most=900, life=2.2, gravity=-0.25, birth=6, death=46,
                         alpha=wisp_alpha, **area) +
            SMOKE.format(name="other wisps", texture="wisp_a", most=900, life=2.4, gravity=-0.3, birth=7, death=50,
                         alpha=wisp_alpha, **area) +
            PLATE.format(**area) +
            SMOKE.format(name="fine smoke", texture="puff_soft_b", most=8000, life=1.7, gravity=-0.2, birth=1.1, death=9,
                         alpha="0 0.8 0.06 0.34 0.25 0.10 0.6 0.03 1 0", **area) +
            "\n# Births follow the area of the band.\n" + "".join(rate_tracks(areas, start)).lstrip("\n"))


def bake(options):
    mask = letters(options.text, options.font)
    folder = pathlib.Path(options.output)
    folder.mkdir(parents=True, exist_ok=True)
    for old in [*folder.glob("title_*.png"), *folder.glob("edge_*.png")]:
        old.unlink()  # pictures of an earlier, longer title
    count = max(2, round(options.length * PICTURES_PER_SECOND))
    areas = save_pictures(folder, mask, count, np.random.default_rng(options.seed))
    (folder / "title.toml").write_text(scene(options.text, areas, options.start))
    print(f"{count} pictures of the title, {count} of its edge; ./tovu render {folder / 'title.toml'} -o title.mp4")
