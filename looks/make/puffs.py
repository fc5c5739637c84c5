"""Puffs of smoke: balls and rings of 3-D noise, with light marched through them, seen from the front. White, with alpha."""
import numpy as np
from scipy.ndimage import map_coordinates, rotate, zoom

from fields import noise, save, smooth_step

SIDE = 128      # cells of the volume; the picture has as many pixels, doubled
PICTURE = 256
ROLL_PICTURES = 32  # of the flipbook of a puff that rolls


def density(rng, softness, tear):
    """A ball whose surface is displaced by noise and by billows, the absolute value of noise. Axes: z, y, x."""
    z, y, x = (np.mgrid[0:SIDE, 0:SIDE, 0:SIDE] + 0.5) / (SIDE / 2) - 1
    shape = (SIDE,) * 3
    high = 0.33 * SIDE
    warp = [noise(rng, shape, 2.6, low=1.5, high=high) * 0.07 for _ in range(3)]
    radius = np.sqrt((x + warp[0]) ** 2 + (y + warp[1]) ** 2 + (z + warp[2]) ** 2)
    billows = 1 - 0.9 * np.abs(noise(rng, shape, 2.3, low=1.5, high=high))
    body = 0.62 - radius + tear * (0.28 * noise(rng, shape, 2.05, low=1.5, high=high) + 0.45 * billows)
    return smooth_step(0, softness, body) * np.clip((1 - np.sqrt(x * x + y * y + z * z)) / 0.12, 0, 1)


def light_from(volume, about_z, about_x, thickness):
    """The share of light that reaches each cell from above. The light is rotated by two angles in degrees."""
    def turned(a, angle, axes, outside=0.0):
        return rotate(a, angle, axes=axes, reshape=False, order=1, cval=outside) if angle else a

    a = turned(turned(volume, about_z, (2, 1)), about_x, (0, 1))
    above = np.cumsum(a[:, ::-1], 1)[:, ::-1] - a
    light = np.exp(-thickness * above * 2 / SIDE)
    return turned(turned(light, -about_x, (0, 1), 1.0), -about_z, (2, 1), 1.0)


def rolling_densities(rng, tilt=25, tear=0.3):
    """A smoke ring that rises and rolls about itself: outward above, down outside. Its core is as thick as its hole.

    The noise lies in the ring's own coordinates: distance from the core, angle about the core, angle about the axis. It
    repeats after half a turn about the core, which is the loop. tilt: in degrees, towards the viewer.
    """
    z, y, x = (np.mgrid[0:SIDE, 0:SIDE, 0:SIDE] + 0.5) / (SIDE / 2) - 1
    cosine, sine = np.cos(np.radians(tilt)), np.sin(np.radians(tilt))
    y, z = cosine * y + sine * z, cosine * z - sine * y
    outward, about_axis = np.hypot(x, z), np.arctan2(z, x) / (2 * np.pi) % 1
    from_core, about_core = np.hypot(outward - 0.4, 1.1 * y), np.arctan2(y, outward - 0.4) / np.pi % 1
    shape = (64, 64, 160)
    stretch = (1, 1, 0.4)  # the circumference is longest
    fine = noise(rng, shape, 2.05, stretch, low=1.5)
    billows = 1 - 0.9 * np.abs(noise(rng, shape, 2.3, stretch, low=1.5))
    rough = tear * (0.28 * fine + 0.45 * billows)
    edge = np.clip((1 - np.sqrt(x * x + y * y + z * z)) / 0.12, 0, 1)
    for turn in np.arange(ROLL_PICTURES) / ROLL_PICTURES:
        cells = [coordinate * n for coordinate, n in zip((from_core, about_core + turn, about_axis), shape)]
        carried = map_coordinates(rough, cells, order=1, mode="grid-wrap") * smooth_step(0, 0.25, outward)
        yield smooth_step(0, 0.34, 0.36 - from_core + carried) * edge


def picture_of(volume, light=(35, -30), thickness=9.0, ambient=0.34):
    """The shade and the alpha of a volume. light: angles about z and x in degrees from straight above; ambient: share of
    light from the sky, 0 to 1."""
    key = light_from(volume, *light, 0.75 * thickness)
    sky = light_from(volume, 0, 0, 0.25 * thickness)
    before = np.cumsum(volume[::-1], 0)[::-1] - volume  # towards the viewer at +z
    weight = np.exp(-thickness * before * 2 / SIDE) * (1 - np.exp(-thickness * volume * 2 / SIDE))
    alpha = weight.sum(0)
    shade = (weight * ((1 - ambient) * 1.25 * key + ambient * sky)).sum(0) / np.maximum(alpha, 1e-4)
    return zoom(shade, PICTURE / SIDE, order=3), zoom(alpha, PICTURE / SIDE, order=3)


def puff(path, seed, softness=0.3, tear=0.34, **options):
    save(path, *picture_of(density(np.random.default_rng(seed), softness, tear), **options))


def make(folder):
    for i, volume in enumerate(rolling_densities(np.random.default_rng(19))):
        save(folder / f"puff_roll_{i:02d}.png", *picture_of(volume, light=(25, 0)))
    for name, seed in zip("abcd", (11, 12, 13, 14)):
        puff(folder / f"puff_lit_{name}.png", seed)
    for name, seed in zip("ab", (15, 16)):
        puff(folder / f"puff_soft_{name}.png", seed, softness=0.67, thickness=4, tear=0.5, ambient=0.55)
    for name, seed in zip("ab", (17, 18)):
        puff(folder / f"puff_under_{name}.png", seed, light=(180, -25), thickness=8, ambient=0.05)
