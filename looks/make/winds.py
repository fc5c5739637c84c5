"""Wind fields without sources and sinks, and the pictures that the smoke reads as `wind_image`.

Every field comes from a stream function psi: u = dpsi/dy, v = -dpsi/dx. A stream function is an array of
(size + 2) × (size + 2) samples at the pixels' centres, with one pixel beyond each border for the differences.
"""
import numpy as np

from fields import save, smooth_step

RADIANS_PER_TURN = 2 * np.pi


def sample_points(size):
    """y and x of the samples of a stream function: 0 to 1 over the picture, plus a margin of one pixel."""
    y, x = (np.mgrid[-1:size + 1, -1:size + 1] + 0.5) / size
    return y, x


def velocity(psi, spacing):
    """u and v, size × size, from a stream function by central differences; spacing: units from pixel to pixel."""
    return (psi[2:, 1:-1] - psi[:-2, 1:-1]) / (2 * spacing), (psi[1:-1, :-2] - psi[1:-1, 2:]) / (2 * spacing)


def root_mean_square(frames):
    return np.sqrt(np.mean([u * u + v * v for u, v in frames]))


def divergence_share(u, v):
    """The divergence divided by the change of the wind from pixel to pixel, both as root mean squares."""
    def along(field, axis):
        a = np.moveaxis(field, axis, 0)
        return np.moveaxis(a[2:] - a[:-2], 0, axis)

    u_x, v_y = along(u, 1)[1:-1], along(v, 0)[:, 1:-1]
    u_y, v_x = along(u, 0)[:, 1:-1], along(v, 1)[1:-1]
    change = np.sqrt(np.mean(u_x**2 + v_y**2 + u_y**2 + v_x**2))
    return np.sqrt(np.mean((u_x + v_y) ** 2)) / change if change > 0 else 0.0


def direction_of(drift):
    """The pattern moves by the whole range in a loop, along the axis of the larger part of the drift: (x, y)."""
    x, y = drift
    if x == 0 and y == 0:
        return 0, 0
    return (int(np.sign(x)), 0) if abs(x) >= abs(y) else (0, int(np.sign(y)))


def eddies(size, pictures, waves, moves, rng, slope=1.5):
    """Stream functions of a loop: random waves that travel by whole periods.

    waves: the fewest and the most waves across the range. moves: see direction_of. slope: the speed in a wave falls as
    their number to the power -slope. Waves that do not change along the pattern's way would be steady streams; they are
    left out.
    """
    k = np.fft.fftfreq(size) * size
    kx, ky = k[None, :], k[:, None]
    count = np.hypot(kx, ky)
    inside = (count >= waves[0]) & (count <= waves[1]) & ((kx * moves[0] + ky * moves[1] != 0) | (moves == (0, 0)))
    gain = np.where(inside, np.maximum(count, 1), 1) ** -(slope + 1) * inside * rng.normal(size=count.shape)
    start = rng.uniform(0, 1, count.shape)
    change = rng.integers(-1, 2, count.shape)  # different speeds of the waves, so that the pattern changes over time
    for time in np.arange(pictures) / pictures:
        turns = start - time * (kx * moves[0] + ky * moves[1] + change)
        yield np.pad(np.fft.ifft2(gain * np.exp(1j * RADIANS_PER_TURN * turns)).real, 1, mode="wrap")


def above_foot(psis, repeats, foot):
    """Stream functions of eddies that repeat across the range. Their strength is 0 up to the middle of the height and full
    from the height `foot` above it, a share of the range: smoke that is born in the middle rises straight and then curls."""
    for psi in psis:
        tile = psi[1:-1, 1:-1]
        y, _ = sample_points(repeats * len(tile))
        yield np.pad(np.tile(tile, (repeats, repeats)), 1, mode="wrap") * smooth_step(0.5, 0.5 + foot, y)


def vortices(size, pictures, count, radius, moves, rng):
    """Stream functions of Gaussian vortices, radius as a share of the range: one in the middle that turns
    counter-clockwise, or several with alternating direction."""
    y, x = sample_points(size)
    places = rng.uniform(0, 1, (count, 2)) if count > 1 else np.array([[0.5, 0.5]])
    for time in np.arange(pictures) / pictures:
        psi = np.zeros_like(x)
        for i, (middle_x, middle_y) in enumerate(places):
            for wrap_x in (-1, 0, 1):
                for wrap_y in (-1, 0, 1):
                    away_x = x - (middle_x + time * moves[0]) % 1 - wrap_x
                    away_y = y - (middle_y + time * moves[1]) % 1 - wrap_y
                    psi += (-1) ** i * np.exp(-(away_x**2 + away_y**2) / (2 * radius**2))
        yield psi


def shear_layer(size, pictures, thickness, moves):
    """Stream functions of two streams in opposite directions that roll up where they meet (Stuart 1967).

    thickness: of the layer, as a share of the range; it is rounded so that whole rolls fit in. The layer lies along x, or
    along y if the pattern moves along y.
    """
    y, x = sample_points(size)
    if moves[1]:
        y, x = x, y
    scale = 1 / (RADIANS_PER_TURN * max(1, round(1 / (RADIANS_PER_TURN * thickness))))
    forward = moves[0] or moves[1]
    for time in np.arange(pictures) / pictures:
        yield (-1 if moves[1] else 1) * np.log(np.cosh((y - 0.5) / scale) + 0.5 * np.cos((x - time * forward) / scale))


def save_wind(path, u, v, full):
    """Red: the speed, 255 for `full`. Green: 0. Blue: the angle about Z, 255 for a full turn, as the smoke reads it."""
    angle = np.arctan2(v, u) / RADIANS_PER_TURN % 1
    save(path, np.hypot(u, v) / full, np.zeros_like(u), angle)


def save_loop(frames, file_of):
    """Writes the pictures of a loop, file_of(i) each, and returns the speed that 255 stands for.

    Refuses a field with sources or sinks: smoke would pile up or leave holes there.
    """
    for u, v in frames:
        share = divergence_share(u, v)
        if share > 1e-6:
            raise ValueError(f"the wind has sources and sinks: {share:.2g} of its change")
    full = max(np.hypot(u, v).max() for u, v in frames)
    for i, (u, v) in enumerate(frames):
        save_wind(file_of(i), u, v, full)
    return full
