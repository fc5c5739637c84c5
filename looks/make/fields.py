"""Arrays for pictures, and functions that write them. Row 0 of every array is the bottom of the picture."""
import numpy as np
from PIL import Image


def smooth_step(edge0, edge1, x):
    """0 at edge0, 1 at edge1, with a slope of 0 at both; edge0 may be the larger one."""
    t = np.clip((x - edge0) / (edge1 - edge0), 0, 1)
    return t * t * (3 - 2 * t)


def pixel_centres(height, width):
    """Two arrays, y and x, of the pixels' centres: from 0 to 1 over the picture."""
    y, x = np.mgrid[0:height, 0:width] + 0.5
    return y / height, x / width


def noise(rng, shape, slope, stretch=None, low=0.0, high=np.inf):
    """Periodic noise of variance 1. The amplitude of a wave falls as its frequency to the power -slope.

    Frequencies count waves per side, those below low and above high are left out. stretch: a factor for the frequency of
    each axis; above 1 the noise is longer along that axis.
    """
    stretch = stretch or [1] * len(shape)
    axes = [np.fft.fftfreq(n) * n * factor for n, factor in zip(shape, stretch)]
    frequency = np.sqrt(sum(axis**2 for axis in np.meshgrid(*axes, indexing="ij", sparse=True)))
    gain = np.where((frequency >= max(low, 1e-9)) & (frequency <= high), np.maximum(frequency, 1e-9), np.inf) ** -slope
    field = np.fft.ifftn(np.fft.fftn(rng.normal(size=shape)) * gain).real
    return field / field.std()


def bytes_of(field):
    return (np.clip(field, 0, 1) * 255 + 0.5).astype(np.uint8)


def save(path, *channels):
    """Writes a PNG of 1 (grey), 2 (grey, alpha), 3 or 4 channels (red, green, blue, alpha); each is 0 to 1."""
    stacked = np.dstack([np.broadcast_to(bytes_of(c), channels[-1].shape) for c in channels])[::-1].squeeze()
    Image.fromarray(stacked, {1: "L", 2: "LA", 3: "RGB", 4: "RGBA"}[len(channels)]).save(path, optimize=True)


def save_with_palette(path, field, palette):
    """Writes a PNG of one byte per pixel. field: 0 to 1, an index into palette, an array of 256 × 4 values of 0 to 1."""
    picture = Image.fromarray(bytes_of(field)[::-1], "P")
    colours = bytes_of(palette)
    picture.putpalette(colours[:, :3].tobytes())
    picture.save(path, transparency=colours[:, 3].tobytes(), optimize=True)


def crossfaded_loop(frames, count):
    """Makes a loop of the last `count` frames: their end is blended with the frames before their start."""
    overlap = len(frames) - count
    before, loop = frames[:overlap], list(frames[overlap:])
    for i in range(overlap):
        share = smooth_step(0, overlap + 1, i + 1)
        at = count - overlap + i
        loop[at] = loop[at] * (1 - share) + before[i] * share
    return loop
