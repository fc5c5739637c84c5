"""Flipbooks of torn wisps: dye in a 2-D fluid, lit from above. White, with alpha; each book is a loop."""
import numpy as np
from scipy.ndimage import gaussian_filter

from fields import crossfaded_loop, noise, save, smooth_step
from fluid import Fluid

SIDE = 256      # pixels
PICTURES = 32
OVERLAP = 12    # pictures that are blended at the end of the loop
RUN_IN = 70     # steps before the first picture
STEPS = 2       # per picture


def torn_dye(rng, fluid):
    """A few blobs of dye, torn by noise of all sizes."""
    dye = np.zeros(fluid.shape)
    for _ in range(7):
        x, y, radius = rng.uniform(0.36, 0.64), rng.uniform(0.22, 0.5), rng.uniform(0.05, 0.11)
        dye += np.exp(-(((fluid.x / SIDE - x) / radius) ** 2 + ((fluid.y / SIDE - y) / radius) ** 2))
    return np.clip(dye, 0, 1.4) * np.clip(0.6 + 0.5 * noise(rng, fluid.shape, 1.7), 0, None)


def centred(dye, fluid):
    """Moves the dye's centre of mass to the picture's middle and fades it out towards the border."""
    total = dye.sum()
    right = int(round((dye * fluid.x).sum() / total - SIDE / 2))
    up = int(round((dye * fluid.y).sum() / total - SIDE / 2))
    window = smooth_step(0.49, 0.34, np.hypot(fluid.x / SIDE - 0.5, fluid.y / SIDE - 0.5))
    return np.roll(dye, (-up, -right), (0, 1)) * window


def wisp_frames(seed):
    rng = np.random.default_rng(seed)
    fluid = Fluid(SIDE, SIDE)
    fluid.fields["dye"] = torn_dye(rng, fluid)
    stream = noise(rng, fluid.shape, 2.6, low=2.5)
    fluid.u, fluid.v = 9 * np.gradient(stream, axis=0), -9 * np.gradient(stream, axis=1)
    frames = []
    for step in range(RUN_IN + (PICTURES + OVERLAP) * STEPS):
        fluid.v += 0.035 * fluid.fields["dye"]
        fluid.v -= fluid.v.mean()
        fluid.u *= 0.998
        fluid.v *= 0.998
        fluid.fields["dye"] = gaussian_filter(fluid.fields["dye"], 0.55)
        fluid.step(confinement=0.12)
        if step >= RUN_IN and (step - RUN_IN) % STEPS == 0:
            frames.append(centred(fluid.fields["dye"], fluid))
    return frames


def make(folder):
    for name, seed in zip("abc", (3, 8, 21)):
        for i, dye in enumerate(crossfaded_loop(wisp_frames(seed), PICTURES)):
            fine = gaussian_filter(dye, 0.8) - gaussian_filter(dye, 14) * 0.25
            above = np.cumsum(dye[::-1], 0)[::-1] - dye
            shade = gaussian_filter(0.62 + 0.38 * np.exp(-0.035 * above), 2)
            save(folder / f"wisp_{name}_{i:02d}.png", shade, 1 - np.exp(-1.5 * np.clip(fine, 0, None)))
