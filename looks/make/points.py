"""Small sprites that are formulas: a glow, an ember, a droplet. White or grey, with alpha."""
import numpy as np

from fields import noise, pixel_centres, save, smooth_step


def glow(side=256):
    """A glow around a light source. Dithering hides the steps of 8 bits, which are visible in a large, faint glow."""
    y, x = pixel_centres(side, side)
    r = np.hypot(2 * x - 1, 2 * y - 1).clip(0, 1)
    dither = np.random.default_rng(1).uniform(-0.5, 0.5, r.shape) / 255
    return np.ones_like(r), ((1 - r) ** 2 / (1 + 9 * r * r) + dither * (r < 1)).clip(0, 1)


def ember(side=64):
    """A small ember: a bright, uneven core in a short glow."""
    y, x = pixel_centres(side, side)
    uneven = 0.06 * noise(np.random.default_rng(2), (side, side), 1.8, low=2)
    r = np.hypot(2 * x - 1, 2 * y - 1)
    core = smooth_step(0.34, 0.18, r + uneven)
    return np.ones_like(r), np.clip(core + 0.5 * np.clip(1 - r, 0, 1) ** 3, 0, 1)


def droplet(side=64):
    """A lit drop of water: clear in the middle, bright at the lower rim, with a highlight at the top."""
    y, x = pixel_centres(side, side)
    right, up = 2 * x - 1, 2 * y - 1
    r = np.hypot(right, up) / 0.8
    rim = smooth_step(0.45, 0.95, r)
    highlight = np.exp(-(((right + 0.28) / 0.16) ** 2 + ((up - 0.3) / 0.13) ** 2))
    shade = 0.45 + 0.4 * rim * smooth_step(0.5, -0.8, up) + highlight
    return shade.clip(0, 1), (smooth_step(1, 0.86, r) * (0.25 + 0.55 * rim) + highlight).clip(0, 1)


def make(folder):
    for drawing in (glow, ember, droplet):
        save(folder / f"{drawing.__name__}.png", *drawing())
