"""Flipbooks of flames for blend = "additive": heat in a 2-D fluid that a steady stream carries up; each book is a loop."""
import numpy as np
from scipy.ndimage import gaussian_filter

from fields import crossfaded_loop, noise, save_with_palette, smooth_step
from fluid import Fluid

HEIGHT, WIDTH = 256, 192  # pixels
PICTURES = 24
OVERLAP = 10
RUN_IN = 80
STEPS = 2
HOTTEST = 1.3  # heat of the palette's last colour


def smooth_series(rng, count, period):
    """Smooth random values with a new key for each period."""
    keys = rng.normal(size=count // period + 3)
    at = np.arange(count) / period
    share = smooth_step(0, 1, at % 1)
    return keys[at.astype(int)] * (1 - share) + keys[at.astype(int) + 1] * share


def flame_frames(seed, width):
    """Heat over time. width: width of the row of jets at the bottom, as a share of the picture."""
    rng = np.random.default_rng(seed)
    fluid = Fluid(HEIGHT, WIDTH)
    y, x = fluid.y / HEIGHT, fluid.x / WIDTH
    heat = np.zeros(fluid.shape)
    count = RUN_IN + (PICTURES + OVERLAP) * STEPS
    jets = [(0.5 + offset, rng.uniform(0.07, 0.12), smooth_series(rng, count, 8), smooth_series(rng, count, 12))
            for offset in np.linspace(-width, width, 5) * rng.uniform(0.7, 1, 5)]
    frames = []
    for step in range(count):
        source = np.zeros(fluid.shape)
        for middle, radius, power, sway in jets:
            away = ((x - middle - 0.04 * sway[step]) / radius) ** 2 + ((y - 0.10) / 0.05) ** 2
            source = np.maximum(source, np.exp(-away) * np.clip(1 + 0.35 * power[step], 0.3, 1.5))
        heat = gaussian_filter(np.maximum(heat, source), 0.75)
        burning = np.clip(heat, 0, 1)
        cooling = (0.011 + 0.012 * (1 - burning) + 0.014 * smooth_step(0.25, 0.9, y) +
                   0.02 * smooth_step(0.13, 0.34, np.abs(x - 0.5)))
        fluid.v += 0.13 * burning
        fluid.u += 0.4 * (x - 0.5) * burning * smooth_step(0.28, 0.08, y)  # burning gas spreads out of the root
        stream = gaussian_filter(rng.normal(size=fluid.shape), 9, mode="wrap")
        stream /= stream.std()
        fluid.u = 0.975 * (fluid.u + 0.9 * np.gradient(stream, axis=0) * burning)
        fluid.v = 0.975 * (fluid.v - 0.9 * np.gradient(stream, axis=1) * burning)
        fluid.fields["heat"] = np.clip(heat - cooling, 0, None)
        fluid.v += 1.6  # the steady stream, only for the transport
        fluid.step(confinement=0.10)
        fluid.v -= 1.6
        top = smooth_step(1, 0.9, y)
        heat = fluid.fields["heat"] * top
        fluid.u *= top
        if step >= RUN_IN and (step - RUN_IN) % STEPS == 0:
            frames.append(heat)
    window = smooth_step(0.02, 0.13, y) * smooth_step(0, 0.12, x) * smooth_step(1, 0.88, x)
    return [frame * window for frame in frames]


def palette():
    """Red at the edge through orange to pale yellow; cold is transparent."""
    heat = np.linspace(0, HOTTEST, 256)
    return np.stack([np.ones(256), 0.13 + 0.75 * smooth_step(0.12, 0.95, heat),
                     0.02 + 0.55 * smooth_step(0.55, 1.15, heat) ** 1.4, smooth_step(0.02, 0.8, heat) ** 1.1], -1)


def make(folder):
    for name, seed, width in (("a", 1, 0.22), ("b", 2, 0.17), ("c", 5, 0.12)):
        for i, heat in enumerate(crossfaded_loop(flame_frames(seed, width), PICTURES)):
            save_with_palette(folder / f"flame_{name}_{i:02d}.png", heat / HOTTEST, palette())
