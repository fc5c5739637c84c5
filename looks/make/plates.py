"""Pictures that stand still in scenes, in scenes/assets: a wood at night with logs, a cup on a table, a valley at dawn.

Run by `./tovu docs sprites`. Rows count from the bottom; x and y are shares of the picture's width and height.
"""
import numpy as np
from PIL import Image

from fields import bytes_of, noise, pixel_centres, smooth_step

WIDTH, HEIGHT = 1024, 576


def colour(*channels):
    return np.array(channels)[None, None, :]


def over(picture, mask, above):
    """Draws a colour or a picture over another with a mask, 0 to 1."""
    return picture * (1 - mask[..., None]) + above * mask[..., None]


def save(path, picture, alpha=None):
    """Opaque pictures are JPEG, dithered against banding; those with alpha are PNG."""
    if alpha is None:
        dither = np.random.default_rng(1).uniform(-1, 1, picture.shape) / 255
        Image.fromarray(bytes_of(picture + dither)[::-1]).save(path.with_suffix(".jpg"), quality=88, optimize=True)
    else:
        stacked = np.dstack([picture * (alpha[..., None] > 0), alpha])
        Image.fromarray(bytes_of(stacked)[::-1], "RGBA").save(path.with_suffix(".png"), optimize=True)


def conifer(mask, rng, middle, foot, height):
    """Draws a fir into a mask. Lengths are pixels. The branches form tiers with ragged edges."""
    rows, columns = mask.shape
    tiers = rng.integers(8, 13)
    jitter = rng.normal(size=(2, int(height) + 2)) * 0.12
    x = np.arange(columns)
    for step in range(int(height)):
        row = int(foot) + step
        if not 0 <= row < rows:
            continue
        down = 1 - step / height
        reach = height * 0.20 * down**0.85 * (0.5 + 0.5 * (down * tiers % 1) ** 0.8)
        left, right = reach * (1 + jitter[:, step]) + 0.6
        mask[row] = np.maximum(mask[row], np.clip(np.minimum(x - middle + left, middle + right - x) + 0.5, 0, 1))


def wood(rng, count, foot, height, keep_free=0.0):
    """A mask of a row of firs. foot and height: shares of the picture; keep_free: width of a gap in the middle."""
    mask = np.zeros((HEIGHT, WIDTH))
    for _ in range(count):
        middle = rng.uniform(-0.03, 1.03)
        if abs(middle - 0.5) > keep_free / 2:
            conifer(mask, rng, middle * WIDTH, foot * HEIGHT, height * HEIGHT * rng.uniform(0.55, 1.1))
    return mask


def night(path):
    rng = np.random.default_rng(5)
    y, x = pixel_centres(HEIGHT, WIDTH)
    x = x - 0.5
    picture = colour(0.012, 0.018, 0.035) + smooth_step(1, 0.25, y)[..., None] * colour(0.020, 0.030, 0.052)
    stars = (rng.random((HEIGHT, WIDTH)) > 0.9994) * rng.random((HEIGHT, WIDTH)) * 0.5 * (y > 0.45)
    picture = picture + stars[..., None]
    firelight = np.exp(-((x / 0.30) ** 2 + ((y - 0.3) / 0.34) ** 2))
    for count, height, shade, lit, free in ((70, 0.24, 0.020, 0.10, 0), (34, 0.42, 0.011, 0.26, 0.34)):
        bark = 0.5 + 0.5 * np.clip(noise(rng, (HEIGHT, WIDTH), 1.1) * 0.7, -1, 1)
        trees = colour(shade * 0.6, shade * 0.9, shade * 1.2) + (firelight * bark * lit)[..., None] * colour(0.34, 0.15, 0.045)
        picture = over(picture, wood(rng, count, 0.28, height, free), trees)
    edge = 0.006 * noise(rng, (WIDTH,), 1.8)[None, :]
    grass = np.clip(0.62 + 0.2 * noise(rng, (HEIGHT, WIDTH), 1.0, (0.45, 2.2)) * smooth_step(0, 0.3, 0.45 - y), 0.1, 1.6)
    pool = smooth_step(0, 0.5, grass + 0.2) / (1 + np.hypot(x / 0.25, (y - 0.19) / 0.10) ** 2.2)
    ground = colour(0.012, 0.014, 0.02) * grass[..., None] + (pool * grass)[..., None] * colour(0.75, 0.33, 0.10)
    save(path, over(picture, smooth_step(0.305, 0.29, y + edge), ground))


def log(picture, alpha, rng, ends, radius, light):
    """Draws a log between two points (pixels), lit from above and from the picture's middle. Returns new arrays."""
    height, width = alpha.shape
    y, x = np.mgrid[0:height, 0:width].astype(float)
    (x0, y0), (x1, y1) = ends
    length = np.hypot(x1 - x0, y1 - y0)
    along_x, along_y = (x1 - x0) / length, (y1 - y0) / length
    along = (x - x0) * along_x + (y - y0) * along_y
    across = ((y - y0) * along_x - (x - x0) * along_y) / radius * np.sign(along_x)
    body = smooth_step(1.03, 0.95, np.abs(across)) * smooth_step(-3, 3, along) * smooth_step(length + 3, length - 3, along)
    bark = np.clip(0.75 + 0.28 * noise(rng, alpha.shape, 0.9, (0.8, 2.5)), 0.2, 1.4)
    above = np.clip(0.10 + 0.95 * np.clip(across, 0, 1) ** 1.5, 0, 1)
    near = 0.25 + 0.85 * np.exp(-(((x - width / 2) / (0.2 * width)) ** 2))
    lit = colour(0.62, 0.25, 0.085) * (light * bark * above * near)[..., None] + colour(0.012, 0.011, 0.012)
    picture = over(picture, body, lit)
    cut = np.hypot((along - (length if along_x > 0 else 0)) / (radius * 0.5), across)
    rings = colour(0.30, 0.15, 0.07) * (light * 0.6 * (0.8 + 0.2 * np.sin(cut * 16)))[..., None]
    face = smooth_step(1.04, 0.94, cut)
    return over(picture, face, rings), np.maximum(alpha, np.maximum(body, face))


def logs(path, width=768, height=330):
    """Crossed logs, embers between them, a ring of stones in front."""
    rng = np.random.default_rng(2)
    y, x = np.mgrid[0:height, 0:width].astype(float)
    bed = np.exp(-(((x - 384) / 190) ** 2 + ((y - 108) / 24) ** 2))
    rough = noise(rng, (height, width), 1.0)
    alpha = smooth_step(0.25, 0.5, bed)
    picture = colour(1, 0.36, 0.06) * (np.clip(0.35 + 0.5 * rough, 0.03, 1.3) * bed)[..., None]
    for ends, radius, light in ((((200, 94), (470, 180)), 24, 1.0), (((580, 90), (300, 184)), 23, 1.0),
                                (((150, 78), (610, 84)), 27, 0.8)):
        picture, alpha = log(picture, alpha, rng, ends, radius, light)
    for turn in np.linspace(0.02, np.pi - 0.02, 15):
        middle_x, middle_y = 384 - 300 * np.cos(turn) + rng.normal() * 5, 78 - 42 * np.sin(turn)
        radius = rng.uniform(20, 34)
        away_x, away_y = (x - middle_x) / radius, (y - middle_y) / (radius * rng.uniform(0.62, 0.8))
        stone = smooth_step(1.03, 0.95, np.hypot(away_x, away_y) + 0.07 * rough)
        to_fire = np.array([384 - middle_x, 160 - middle_y])
        to_fire /= np.hypot(*to_fire)
        facing = np.clip(away_x * to_fire[0] + away_y * to_fire[1] + 0.1, 0, 1) ** 1.3
        lit = facing * np.clip(0.8 + 0.25 * rough, 0.3, 1.3) * 0.8
        picture = over(picture, stone, colour(0.014, 0.014, 0.018) + colour(0.60, 0.25, 0.085) * lit[..., None])
        alpha = np.maximum(alpha, stone)
    save(path, picture, alpha)


def firelight(path):
    """A light map: a fire in the middle of a blue night. A value of 1/4 is neutral."""
    y, x = pixel_centres(144, 256)
    near = 1 / (1 + (np.hypot((x - 0.5) * 442, (y - 0.5) * 248 / 1.25) / 38) ** 2.6)
    save(path, np.stack([0.9 * near + 0.06, 0.40 * near + 0.075, 0.12 * near + 0.10], -1))


def cup(path):
    """A cup of tea on a table in a dark room. A second picture has only the front wall, which is drawn over the steam."""
    rng = np.random.default_rng(6)
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH].astype(float)
    y = HEIGHT - 1 - y  # y starts at the top here
    picture = colour(0.030, 0.026, 0.026) + np.exp(-(((x - 150) / 420) ** 2 + ((y - 120) / 300) ** 2))[..., None] * colour(
        0.16, 0.10, 0.055)
    for lamp_x, lamp_y, radius, light in ((120, 90, 55, 0.10), (250, 190, 36, 0.08), (60, 260, 70, 0.06),
                                          (860, 120, 45, 0.03), (380, 70, 28, 0.05)):
        disc = smooth_step(radius + 8, radius - 6, np.hypot(x - lamp_x, y - lamp_y))
        picture = picture + (disc * light)[..., None] * colour(1, 0.68, 0.35)
    grain = 1 + 0.16 * noise(rng, (HEIGHT, WIDTH), 1.3, (2.2, 0.25))
    wood_light = (0.05 + 0.20 * np.exp(-(((x - 300) / 420) ** 2)) * smooth_step(640, 410, y)) * grain
    picture = over(picture, smooth_step(404, 412, y), wood_light[..., None] * colour(1, 0.62, 0.38))

    middle, top, bottom, radius, flat = 512.0, 372.0, 498.0, 112.0, 24.0
    shadow = np.exp(-(((x - middle - 60) / 190) ** 2 + ((y - bottom - 4) / 22) ** 2))
    picture = picture * (1 - 0.75 * shadow[..., None])
    ring = np.abs(np.hypot((x - middle - 112) / 46, (y - 420) / 42) - 0.8)
    picture = over(picture, smooth_step(0.24, 0.19, ring) * (x > middle + 80),
                   colour(0.50, 0.47, 0.45) * (0.22 + 0.3 * smooth_step(0.2, 0, ring))[..., None])
    half = radius * (1 - 0.36 * np.clip((y - top) / (bottom - top), 0, 1) ** 2.2)
    foot = bottom + 12 * np.sqrt(np.clip(1 - ((x - middle) / 75) ** 2, 0, 1))
    body = smooth_step(half + 1.2, half - 1.2, np.abs(x - middle)) * smooth_step(foot + 1, foot - 1, y) * (y > top)
    side = (x - middle) / half
    lit = np.clip(0.10 + 0.85 * np.exp(-(((side + 0.62) / 0.36) ** 2)) + 0.10 * smooth_step(0.75, 1, side), 0, 1)
    picture = over(picture, body, lit[..., None] * colour(0.86, 0.78, 0.70))
    rim = np.hypot((x - middle) / radius, (y - top) / flat)
    picture = over(picture, smooth_step(1.012, 0.995, rim),
                   colour(0.80, 0.74, 0.68) * (0.35 + 0.6 * smooth_step(middle + 90, middle - 110, x))[..., None])
    picture = over(picture, smooth_step(0.965, 0.94, rim),
                   colour(0.20, 0.17, 0.15) * (0.5 + 0.9 * smooth_step(middle - 80, middle + 110, x))[..., None])
    surface = np.hypot((x - middle) / (radius * 0.88), (y - top - 5) / (flat * 0.80))
    shine = np.exp(-(((x - middle + 50) / 40) ** 2 + ((y - top - 2) / 8) ** 2))[..., None] * colour(0.5, 0.36, 0.24)
    picture = over(picture, smooth_step(1.01, 0.98, surface) * smooth_step(0.97, 0.95, rim), colour(0.16, 0.07, 0.03) + shine)
    save(path, picture)
    edge = np.sqrt(np.clip(1 - ((x - middle) / radius) ** 2, 0, 1)) * 0.96 - 0.02
    front = body * smooth_step(0, 1.5, (y - top) / flat - edge)
    cut = (slice(HEIGHT - 520, HEIGHT - 360), slice(384, 640))  # 256 × 160 pixels around the cup
    save(path.with_name(path.name + "_front"), picture[cut], front[cut])


def ridge(rng, base, height, slope):
    """The upper edge of hills, as a share of the picture's height for each column."""
    return base + height * np.clip(noise(rng, (2 * WIDTH,), slope)[:WIDTH] / 2.2, -1, 1)


def valley(path):
    """Three pictures: sky and far hills, hills in the middle, hills in front."""
    rng = np.random.default_rng(12)
    y, x = pixel_centres(HEIGHT, WIDTH)
    glow = np.exp(-(((x - 0.72) / 0.35) ** 2 + ((y - 0.60) / 0.28) ** 2))
    sun = np.exp(-(((x - 0.72) * 1.78 / 0.05) ** 2 + ((y - 0.62) / 0.05) ** 2))
    picture = (colour(0.36, 0.43, 0.54) * (0.75 + 0.35 * smooth_step(1, 0.5, y))[..., None] +
               glow[..., None] * colour(0.42, 0.24, 0.06) + sun[..., None] * colour(0.5, 0.42, 0.28))
    layers = ((None, 0.60, 0.06, 1.7, (0.33, 0.40, 0.50), 0, 0), (None, 0.49, 0.06, 1.6, (0.24, 0.31, 0.40), 60, 0.035),
              ("_mid", 0.36, 0.05, 1.6, (0.13, 0.18, 0.22), 80, 0.05), ("_near", 0.17, 0.05, 1.6, (0.045, 0.06, 0.07), 34, 0.17))
    for name, base, height, slope, shade, trees, tree_height in layers:
        top = ridge(rng, base, height, slope)
        mask = smooth_step(-0.0025, 0.0025, top[None, :] - y)
        for _ in range(trees):
            middle = rng.integers(0, WIDTH)
            conifer(mask, rng, middle, (top[middle] - 0.01) * HEIGHT, tree_height * HEIGHT * rng.uniform(0.35, 1))
        rough = 1 + 0.10 * noise(rng, (HEIGHT, WIDTH), 1.2)
        hills = colour(*shade) * rough[..., None] + (glow * 0.22)[..., None] * colour(0.5, 0.28, 0.1)
        if name is None:
            picture = over(picture, mask, hills)
        else:
            rows = slice(0, int((base + height + tree_height) * HEIGHT))  # the area below the top of the trees
            save(path.with_name(path.name + name), hills[rows], mask[rows])
    save(path, picture)


def quarry(path):
    """Dry ground under a hazy sky, and a block of stone that is lit from the upper left."""
    rng = np.random.default_rng(8)
    y, x = pixel_centres(HEIGHT, WIDTH)
    horizon = 0.46
    sky = (colour(0.50, 0.57, 0.62) + smooth_step(0.9, horizon, y)[..., None] * colour(0.20, 0.15, 0.08))
    hills = over(sky, smooth_step(-0.002, 0.002, ridge(rng, 0.50, 0.04, 1.5)[None, :] - y),
                 colour(0.52, 0.50, 0.46) * (1 + 0.03 * noise(rng, (HEIGHT, WIDTH), 1.2))[..., None])
    # The grain of the ground becomes larger towards the viewer.
    grain = noise(rng, (HEIGHT, WIDTH), 0.9)
    near = np.clip((horizon - y) / horizon, 0, 1)
    rows = (noise(rng, (512,), 0.6)[(600 * near / (near + 0.12)).astype(int) % 512] * 0.03)
    shade = 0.78 + 0.16 * smooth_step(0.6, 0, near) + 0.07 * grain * near + rows * near
    ground = colour(0.56, 0.46, 0.35) * shade[..., None] + (1 - smooth_step(0, 0.12, near))[..., None] * colour(0.08, 0.09, 0.09)
    save(path, over(hills, smooth_step(0.002, -0.002, y - horizon), ground))


def block(path, side=128):
    rng = np.random.default_rng(9)
    y, x = pixel_centres(side, side)
    rough = noise(rng, (side, side), 1.3)
    slope = np.gradient(rough, axis=0) + 0.6 * np.gradient(rough, axis=1)
    edge = np.minimum(np.minimum(x, 1 - x), np.minimum(y, 1 - y)) + 0.006 * noise(rng, (side, side), 1.2)
    light = 0.66 + 0.16 * y - 0.10 * x + 0.05 * rough - 0.35 * slope
    rim = smooth_step(0.05, 0.015, edge) * (0.22 * ((y > 1 - x) * 2 - 1))
    save(path, colour(0.52, 0.47, 0.42) * np.clip(light + rim, 0.08, 1.3)[..., None], smooth_step(0.004, 0.012, edge))


def make(folder):
    for draw in (night, logs, firelight, cup, valley, quarry, block):
        draw(folder / draw.__name__)
