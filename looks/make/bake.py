"""`./tovu bake`: wind images, and titles that erode into smoke.

Wind images are loops without sources and sinks. What the pictures mean is printed as keys of a scene file.
"""
import argparse
import pathlib
import re
import sys

try:
    import numpy as np
    from PIL import Image, ImageFont
except ImportError as error:
    sys.exit(f"tovu bake: {error}; install python3-numpy and python3-pil")

import winds

PICTURES = 32


def whole_number(low, high):
    def read(text):
        if not re.fullmatch(r"[+-]?\d+", text) or not low <= int(text) <= high:
            raise argparse.ArgumentTypeError(f"must be a whole number from {low} to {high}, not '{text}'")
        return int(text)
    return read


def number(low, high):
    def read(text):
        try:
            value = float(text)
        except ValueError:
            value = np.nan
        if not low <= value <= high:
            raise argparse.ArgumentTypeError(f"must be a number from {low:g} to {high:g}, not '{text}'")
        return value
    return read


def pair(text):
    parts = text.split(",")
    if len(parts) != 2:
        raise argparse.ArgumentTypeError(f"must be two numbers such as 0,22, not '{text}'")
    return tuple(number(-1e6, 1e6)(part) for part in parts)


def file_for(kind, read):
    """Checks an option that names a file of this kind. read: raises OSError for other files."""
    def check(text):
        try:
            read(text)
        except OSError as error:
            raise argparse.ArgumentTypeError(f"must be a {kind}, not '{text}': {error.strerror or 'it is none'}") from None
        return text
    return check


class Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(2, f"{self.prog}: {message.removeprefix('argument ')}\n")


def parse(arguments):
    parser = Parser(prog="tovu bake", description=__doc__.splitlines()[0][len("`./tovu bake`: "):])
    commands = parser.add_subparsers(dest="kind", required=True, metavar="eddies|vortex|shear|flow|title")
    wind = Parser(add_help=False)
    wind.add_argument("-o", "--output", required=True, metavar="FILE", help="such as wind%%03d.png: PNG files, by number")
    wind.add_argument("--size", type=whole_number(16, 1024), default=128, metavar="PIXELS", help="of each side; 128")
    wind.add_argument("--range", type=number(1, 1e6), default=240, metavar="UNITS",
                      help="width and height of the area that the picture covers; 240")
    wind.add_argument("--strength", type=number(0.001, 1e6), default=20, metavar="SPEED",
                      help="units a second, without the drift: r.m.s. of eddies, the highest of a vortex or of a shear, on "
                           "the arrows of a flow; 20")
    wind.add_argument("--drift", type=pair, default=(0, 0), metavar="X,Y",
                      help="units a second: the steady wind, added everywhere; about 1.1 x the strength for smoke that "
                           "rises, 2 x for smoke that is blown; 0,0. The pattern moves along its larger part")
    wind.add_argument("--length", type=number(0.01, 86400), metavar="SECONDS",
                      help="of the loop, in which the pattern moves by the range: range / speed of the smoke. When left "
                           "out, range / drift, or 8 without drift")
    scale = {"eddies": "the largest eddies", "vortex": "radius of the strongest wind", "shear": "thickness of the layer",
             "flow": "how far a wind reaches beside its arrow"}
    scales = {"eddies": 1, "vortex": 1 / 6, "shear": 1 / 10, "flow": 1 / 10}
    for kind in scale:
        one = commands.add_parser(kind, parents=[wind], help=f"wind image: {kind}")
        one.add_argument("--scale", type=number(0.001, 1e6), metavar="UNITS",
                         help=f"{scale[kind]}; the range x {scales[kind]:.2g}")
        one.set_defaults(share=scales[kind])
        if kind in ("eddies", "vortex"):
            one.add_argument("--seed", type=whole_number(0, 2**32 - 1), default=1, help="of the random numbers; 1")
        if kind == "vortex":
            one.add_argument("--count", type=whole_number(1, 100), default=1, help="several turn to both sides; 1")
        if kind == "flow":
            one.add_argument("picture", type=file_for("picture", Image.open), help="arrows: lines, wider at the head, on a plain background")
    title = commands.add_parser("title", help="pictures and a scene of a title that erodes into smoke")
    title.add_argument("text")
    title.add_argument("-o", "--output", required=True, metavar="FOLDER", help="for title.toml and its pictures")
    title.add_argument("--font", type=file_for("font", ImageFont.truetype), metavar="FILE", help="DejaVu Sans Bold when left out",
                       default="/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf")
    title.add_argument("--start", type=number(0, 3600), default=0.6, metavar="SECONDS", help="before it erodes; 0.6")
    title.add_argument("--length", type=number(0.2, 60), default=1.4, metavar="SECONDS", help="of the erosion; 1.4")
    title.add_argument("--seed", type=whole_number(0, 2**32 - 1), default=4, help="of the random numbers; 4")
    options = parser.parse_args(arguments)
    return options, commands.choices[options.kind]


def stream_functions(options, count):
    """Stream functions of the loop's pictures, in units of the range."""
    moves = winds.direction_of(options.drift)
    share = (options.scale or options.share * options.range) / options.range
    if options.kind == "flow":
        try:
            import arrows
        except ImportError as error:
            sys.exit(f"tovu bake flow: {error}; install python3-scipy")
        return [arrows.flow(options.picture, options.size, share)]
    if options.kind == "shear":
        return winds.shear_layer(options.size, count, share, moves)
    rng = np.random.default_rng(options.seed)
    if options.kind == "vortex":
        return winds.vortices(options.size, count, options.count, share, moves, rng)
    fewest = max(1, round(1 / share))
    return winds.eddies(options.size, count, (fewest, min(6 * fewest, options.size // 8)), moves, rng)


def bake_wind(options, parser):
    if not re.fullmatch(r"[^%]*(%(0?[1-9])?d)?[^%]*\.png", options.output):
        parser.error(f"-o: must be a name such as wind%03d.png, not '{options.output}'")
    if options.scale and options.scale > options.range:
        parser.error(f"--scale: must be at most the range, {options.range:g}, not {options.scale:g}")
    if options.kind == "eddies" and options.scale and options.scale < 8 * options.range / options.size:
        parser.error(f"--scale: must be at least 8 pixels, {8 * options.range / options.size:g} units at this "
                     f"size, not {options.scale:g}")
    still = options.kind == "flow" or (options.kind != "eddies" and options.drift == (0, 0))
    count = 1 if still else PICTURES
    if not still and not re.search(r"%(0?[1-9])?d", options.output):
        parser.error(f"-o: the loop has {count} pictures: put a number such as %03d into the name")
    speed = np.abs(options.drift).max()
    length = options.length or (options.range / speed if speed else 8)
    try:
        frames = [winds.velocity(psi, options.range / options.size) for psi in stream_functions(options, count)]
    except ValueError as error:
        parser.error(f"picture: '{options.picture}' {error}")
    reached = winds.root_mean_square(frames) if options.kind == "eddies" else max(np.hypot(*f).max() for f in frames)
    factor = options.strength / reached
    frames = [(u * factor + options.drift[0], v * factor + options.drift[1]) for u, v in frames]
    pathlib.Path(options.output).parent.mkdir(parents=True, exist_ok=True)
    full = winds.save_loop(frames, lambda i: options.output % i if "%" in options.output else options.output)
    name = re.sub(r"%\d*d", "", pathlib.Path(options.output).stem) or options.kind
    rate = "" if still else f", frame_rate = {count / length:.3g}"
    print(f"# {count} picture{'' if still else 's'}; 255 in the red channel stands for {full:.4g} units a second.")
    if not still and speed:
        print(f"# The pattern moves by {options.range / length:.3g} units a second, as the smoke should.")
    print(f'[images]\n{name} = {{ file = "{pathlib.Path(options.output).name}"{rate} }}\n')
    print(f'[container.parameters]\nuse_wind_image = true\nwind_image = "{name}"\nwind_image_range_x = {options.range:g}\n'
          f"wind_image_range_y = {options.range:g}\nwind_force = {full:.4g}")


def main():
    options, parser = parse(sys.argv[1:])
    try:
        if options.kind == "title":
            import title
            try:
                title.bake(options)
            except ValueError as error:
                parser.error(f"text: '{options.text}' {error}")
        else:
            bake_wind(options, parser)
    except OSError as error:
        if error.filename is None:
            raise
        parser.error(f"-o: '{error.filename}' cannot be written: {error.strerror}")


main()
