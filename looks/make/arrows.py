"""Makes a wind from arrows in a picture: straight or curved strokes that are wider at the head."""
import numpy as np
from PIL import Image
from scipy.ndimage import gaussian_filter, label
from scipy.sparse import coo_matrix
from scipy.sparse.csgraph import dijkstra

FEWEST_PIXELS = 12  # smaller strokes are ignored as noise
END = 0.2           # length of the compared ends, as a share of the stroke's length
ROUNDS = 40


def read_strokes(path, size):
    """The marked pixels, size × size, which differ clearly from the colour of the picture's corner."""
    picture = np.asarray(Image.open(path).convert("RGB").resize((size, size), Image.LANCZOS), float)[::-1] / 255
    return np.abs(picture - picture[0, 0]).max(-1) > 0.4


def distances(pixels, start):
    """The path lengths inside a stroke from one pixel to each pixel. pixels: n × 2, rows and columns."""
    number = {tuple(p): i for i, p in enumerate(pixels)}
    rows, columns, lengths = [], [], []
    for i, (row, column) in enumerate(pixels):
        for step in ((0, 1), (1, 0), (1, 1), (1, -1)):
            other = number.get((row + step[0], column + step[1]))
            if other is not None:
                rows.append(i)
                columns.append(other)
                lengths.append(np.hypot(*step))
    graph = coo_matrix((lengths, (rows, columns)), shape=(len(pixels),) * 2)
    return dijkstra(graph.tocsr(), directed=False, indices=start)


def along_stroke(pixels):
    """The path length of each pixel from the tail of the stroke. The head is the end with more pixels around it."""
    one_end = int(np.argmax(distances(pixels, 0)))
    way = distances(pixels, one_end)
    length = way.max()
    if np.sum(way < END * length) > np.sum(way > (1 - END) * length):
        way = distances(pixels, int(np.argmax(way)))
    return way


def stroke_directions(marked):
    """Unit vectors x and y on the marked pixels, 0 elsewhere; and the number of strokes."""
    x, y = np.zeros(marked.shape), np.zeros(marked.shape)
    strokes, count = label(marked, np.ones((3, 3)))
    used = 0
    for stroke in range(1, count + 1):
        inside = strokes == stroke
        pixels = np.argwhere(inside)
        if len(pixels) < FEWEST_PIXELS:
            continue
        used += 1
        way = np.zeros(marked.shape)
        way[inside] = along_stroke(pixels)
        # The direction is the gradient of the path length, from smoothed moments, which reduces the effect of the edges.
        row, column = np.mgrid[0:marked.shape[0], 0:marked.shape[1]].astype(float)
        width = max(2.0, 0.08 * way.max())

        def mean(field):
            return gaussian_filter(field * inside, width)[inside] / gaussian_filter(inside.astype(float), width)[inside]

        middle_x, middle_y, middle = mean(column), mean(row), mean(way)
        covariance_x = mean(column * way) - middle_x * middle
        covariance_y = mean(row * way) - middle_y * middle
        length = np.maximum(np.hypot(covariance_x, covariance_y), 1e-9)
        x[inside], y[inside] = covariance_x / length, covariance_y / length
    return x, y, used


def stream_function(u, v):
    """The stream function of the divergence-free part of a wind. u and v must vanish towards the border."""
    ky = np.fft.fftfreq(u.shape[0])[:, None] * 2 * np.pi
    kx = np.fft.fftfreq(u.shape[1])[None, :] * 2 * np.pi
    squared = kx**2 + ky**2
    squared[0, 0] = 1
    return np.fft.ifft2(1j * (kx * np.fft.fft2(v) - ky * np.fft.fft2(u)) / squared).real


def flow(path, size, width):
    """The stream function of a wind that follows the arrows. width: its reach beside an arrow, as a share of the
    picture. ValueError: the picture has no stroke."""
    x, y, count = stroke_directions(read_strokes(path, size))
    if count == 0:
        raise ValueError("has no strokes: draw lines in a colour that differs from the background, wider at the head")
    margin = size // 2  # the transform is periodic: separates the flow from its repetition
    x, y = np.pad(x, margin), np.pad(y, margin)
    marked = np.hypot(x, y) > 0
    blur = width * size / 2
    weight = gaussian_filter(marked.astype(float), blur) + 1e-6
    psi = np.zeros_like(x)
    for _ in range(ROUNDS):
        u, v = np.gradient(psi, axis=0), -np.gradient(psi, axis=1)
        # The missing wind on the strokes, spread to their surroundings.
        missing_u = gaussian_filter((x - u) * marked, blur) / np.sqrt(weight)
        missing_v = gaussian_filter((y - v) * marked, blur) / np.sqrt(weight)
        psi += stream_function(missing_u, missing_v)
    inside = slice(margin - 1, margin + size + 1)
    return psi[inside, inside]
