"""Smoke sprites that are formulas: puff, soft, wisp, billow, ring, spark. White or grey, with alpha.

Every formula takes x and y, arrays from -1 to 1 over the sprite, and returns luminance and alpha.
"""
import numpy as np

from fields import save, smooth_step

DIRECTIONS = np.array([(1, 0), (-1, 0), (0.5**0.5, 0.5**0.5), (-(0.5**0.5), 0.5**0.5),
                       (0, 1), (0, -1), (0.5**0.5, -(0.5**0.5)), (-(0.5**0.5), -(0.5**0.5))])


def radius(x, y):
    return np.sqrt(x * x + y * y)


def border_window(r):
    """A factor that falls to 0 at the sprite's border, so that the edges of quads are invisible."""
    return smooth_step(0.98, 0.72, r)


def hashed(x, y, seed):
    h = x.astype(np.uint32) * np.uint32(0x8DA6B343) ^ y.astype(np.uint32) * np.uint32(0xD8163841)
    h ^= np.uint32(seed * 0xCB1AB31F & 0xFFFFFFFF)
    h = (h ^ h >> np.uint32(16)) * np.uint32(0x7FEB352D)
    h = (h ^ h >> np.uint32(15)) * np.uint32(0x846CA68B)
    return h ^ h >> np.uint32(16)


def noise(x, y, seed):
    """Gradient noise, about -0.7 to 0.7, 0 at whole numbers (Perlin, "Improving noise", SIGGRAPH 2002)."""
    column, row = np.floor(x).astype(np.int32), np.floor(y).astype(np.int32)
    dx, dy = x - column, y - row

    def slope(right, up):
        direction = DIRECTIONS[hashed(column + right, row + up, seed) & 7]
        return direction[..., 0] * (dx - right) + direction[..., 1] * (dy - up)

    u, v = (t * t * t * (t * (t * 6 - 15) + 10) for t in (dx, dy))
    low = slope(0, 0) * (1 - u) + slope(1, 0) * u
    high = slope(0, 1) * (1 - u) + slope(1, 1) * u
    return low * (1 - v) + high * v


def fractal_noise(x, y, seed, octaves, gain):
    """Octaves of noise, each with twice the frequency and `gain` times the amplitude of the previous one. About -1 to 1."""
    total, strength = 0, 1
    for octave in range(octaves):
        total = total + strength * noise(x, y, seed + octave)
        strength *= gain
        x, y = x * 2 + 17.3, y * 2 + 5.7
    return total


def curled(x, y, frequency, amount, seed):
    """Displaces points by noise, which gives shapes curled edges."""
    at_x, at_y = x * frequency, y * frequency
    return (x + amount * fractal_noise(at_x, at_y, seed, 3, 0.5),
            y + amount * fractal_noise(at_x + 31.7, at_y + 11.3, seed + 50, 3, 0.5))


def puff(x, y):
    qx, qy = curled(x, y, 1.7, 0.24, 113)
    body = smooth_step(0.92, 0.05, radius(qx, qy))
    detail = fractal_noise(qx * 2.6, qy * 2.6, 100, 5, 0.55)
    return 1, body * (0.74 + 0.55 * detail) * border_window(radius(x, y))


def soft(x, y):
    """Approximately a Gaussian, exactly 0 at the border."""
    r = np.minimum(radius(x, y), 1)
    inside = 1 - r * r
    return 1, inside * inside * inside


def wisp(x, y):
    """Strands along the zero lines of stretched noise, which fade on both sides."""
    qx, qy = curled(x, y, 1.0, 0.22, 319)
    fold = 3.6 * fractal_noise(qx * 2.7, qy * 0.9, 193, 3, 0.5)
    strand = 1 / (1 + fold * fold)
    body = smooth_step(0.92, 0.05, radius(qx * 1.15, qy))
    return 1, body * (0.08 + 0.82 * strand) * border_window(radius(x, y))


def ring(x, y):
    qx, qy = curled(x, y, 1.6, 0.12, 5)
    across = (radius(qx, qy) - 0.58) / 0.30
    tube = np.maximum(0, 1 - across * across)
    detail = fractal_noise(qx * 3.1, qy * 3.1, 91, 4, 0.5)
    return 1, tube * tube * (0.75 + 0.7 * detail) * border_window(radius(x, y))


def billow_height(x, y):
    """The absolute value of noise gives rounded heads of several sizes; its zeros are the creases."""
    qx, qy = curled(x, y, 1.2, 0.10, 131)
    heads, strength = 0, 0.60
    for octave in range(3):
        scale = 1.6 * 2**octave
        heads = heads + strength * (1.9 * np.abs(noise(qx * scale + 3.4, qy * scale + 7.9, 151 + octave)) - 0.45)
        strength *= 0.45
    return smooth_step(1, 0, radius(qx, qy)) * (0.95 + 0.9 * heads)


def billow(x, y):
    """Lit from above: brighter where the height decreases upwards."""
    height = billow_height(x, y)
    fall = billow_height(x, y - 0.04) - billow_height(x, y + 0.04)
    luminance = np.clip(0.82 + 0.75 * fall, 0.5, 1)
    return luminance, smooth_step(0.05, 0.85, height) * 0.95 * border_window(radius(x, y))


def spark(x, y):
    r = np.minimum(radius(x, y), 1)
    halo = (1 - r) * (1 - r)
    return 1, smooth_step(0.22, 0.05, r) + 0.55 * halo * halo


def make(folder, side=256):
    y, x = 2.0 * np.mgrid[0:side, 0:side] / (side - 1) - 1
    for drawing in (puff, soft, wisp, billow, ring, spark):
        save(folder / f"{drawing.__name__}.png", *drawing(x, y))
