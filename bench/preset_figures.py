#!/usr/bin/env python3
"""What presets do to photographs and to edges, in figures, as the table of docs/presets.md.

bench/preset_figures.py ORBEL MEGAPIXELS PHOTO...: each photograph is brought to so many megapixels (0: as it is) and goes
through each preset. Means over the photographs, after over before, by luminance in levels of 8 bits as files have them:

structure   deviation of a difference of Gaussians of 2.5 and 10 reference pixels
finest      the same of 0.7 and 2.5 reference pixels
noise       deviation of what a Gaussian of 1.5 pixels of the file leaves, in the flattest tenth of the original's 16 x 16
            tiles
chroma      mean distance in a and b of CIE L*a*b*
shadows, highlights   percentage points of pixels with all channels at 0, or at 255, more than in the original
halo        what a step is overshot by at most, in levels, over 32 positions of it, both ways and along a diagonal, from
            0.2 to 0.8, 0.3 to 0.6, and 0.4 to 0.6, sharp and soft (a logistic function of 2 pixels), at the reference
            size

Needs the program vips (libvips-tools), python3-numpy and python3-scipy.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

import numpy
from scipy.ndimage import gaussian_filter

orbel, megapixels, photos = sys.argv[1], float(sys.argv[2]), sys.argv[3:]
presets = ["clarity", "landscape", "crisp", "soft skin", "protect grain"]
folder = Path(tempfile.mkdtemp())
reference = 1024
beyond = 72  # a low-pass's reach


def vips(*arguments):
    subprocess.run(["vips", *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


def field(image, name):
    return int(subprocess.check_output(["vipsheader", "-f", name, image]))


def samples(image):
    vips("rawsave", image, folder / "raw")
    shape = (field(image, "height"), field(image, "width"), field(image, "bands"))
    return numpy.fromfile(folder / "raw", numpy.float32 if image.suffix == ".tif" else numpy.uint8).reshape(shape)


def equalized(image, preset, name):
    subprocess.run([orbel, "apply", image, "-o", folder / name, "-q", "-f", "-p", preset], check=True)
    return folder / name


def luminance(rgb):
    return rgb.astype(numpy.float32) @ numpy.array([0.299, 0.587, 0.114], numpy.float32)


def between(y, fine, coarse):
    """Wide Gaussians are taken of means of squares, with at least two of them to the deviation."""
    side = max(1, int(fine / 2))
    height, width = (length // side * side for length in y.shape)
    y = y[:height, :width].reshape(height // side, side, width // side, side).mean((1, 3))
    return (gaussian_filter(y, fine / side) - gaussian_filter(y, coarse / side)).std()


def tiles(y):
    height, width = (side // 16 * 16 for side in y.shape)
    return y[:height, :width].reshape(height // 16, 16, width // 16, 16).swapaxes(1, 2).reshape(-1, 256)


def lab(rgb):
    level = numpy.arange(256) / 255
    linear = numpy.where(level <= 0.04045, level / 12.92, ((level + 0.055) / 1.055) ** 2.4).astype(numpy.float32)
    matrix = numpy.array([[0.4124564, 0.3575761, 0.1804375], [0.2126729, 0.7151522, 0.0721750],
                          [0.0193339, 0.1191920, 0.9503041]], numpy.float32)
    xyz = linear[rgb] @ (matrix / numpy.array([[0.95047], [1], [1.08883]], numpy.float32)).T
    f = numpy.where(xyz > (6 / 29) ** 3, numpy.cbrt(xyz), xyz / (3 * (6 / 29) ** 2) + 4 / 29)
    return 500 * (f[..., 0] - f[..., 1]), 200 * (f[..., 1] - f[..., 2])


def figures(before, after):
    y, z = luminance(before), luminance(after)
    scale = max(y.shape) / reference
    flat = tiles(y).std(1)
    flattest = numpy.argsort(flat)[: max(1, len(flat) // 10)]
    noise = [tiles(p - gaussian_filter(p, 1.5))[flattest].std() for p in (y, z)]
    (a, b), (c, d) = lab(before), lab(after)
    clipped = [100 * ((after == level).all(-1).mean() - (before == level).all(-1).mean()) for level in (0, 255)]
    return [between(z, 2.5 * scale, 10 * scale) / between(y, 2.5 * scale, 10 * scale),
            between(z, 0.7 * scale, 2.5 * scale) / between(y, 0.7 * scale, 2.5 * scale),
            noise[1] / max(noise[0], 1e-3), numpy.hypot(c - a, d - b).mean(), *clipped]


def steps():
    """A picture of the reference size with one step, in floats, for each position and kind."""
    height, width = 2 * beyond + 64, reference
    y, x = numpy.mgrid[0:height, 0:width] + 0.5
    for low, high in ((0.2, 0.8), (0.3, 0.6), (0.4, 0.6)):
        for soft in (0, 2):
            for slope in (0, 1):
                for position in range(0, 32, 1 if slope == 0 and soft == 0 else 8):
                    away = (x - 480 - position + slope * (y - height / 2)) / (1 + slope) ** 0.5
                    part = 1 / (1 + numpy.exp(-numpy.clip(away / soft, -80, 80))) if soft else away > 0
                    yield low, high, low + (high - low) * part
                    if slope == 0 and position % 16 == 0:
                        yield low, high, high - (high - low) * part


def write_steps():
    """Each in a file of its own, in a folder."""
    (folder / "steps").mkdir()
    bounds = []
    for number, (low, high, step) in enumerate(steps()):
        rgb = numpy.repeat(step[..., None], 3, 2).astype(numpy.float32)
        rgb.tofile(folder / "step.raw")
        vips("rawload", folder / "step.raw", folder / "step.v", rgb.shape[1], rgb.shape[0], 3, "--format", "float")
        vips("copy", folder / "step.v", folder / "steps" / f"{number}.tif", "--interpretation", "scrgb")
        bounds.append((low, high))
    return bounds


def halo(preset, bounds):
    subprocess.run([orbel, "apply", "-r", folder / "steps", "-o", folder / "halos", "-q", "-f", "-p", preset, "-j", "2"],
                   check=True)
    worst = 0
    for number, (low, high) in enumerate(bounds):
        after = samples(folder / "halos" / f"{number}.tif")[beyond:-beyond]
        worst = max(worst, 255 * (low - after.min()), 255 * (after.max() - high))
    return worst


print("| preset | structure | finest | noise | chroma | shadows | highlights | halo |\n|---|---|---|---|---|---|---|---|")
originals = []
for number, photo in enumerate(photos):
    size = field(photo, "width") * field(photo, "height")
    vips("resize", photo, folder / f"{number}.png", (megapixels * 1e6 / size) ** 0.5 if megapixels else 1)
    originals.append(folder / f"{number}.png")
bounds = write_steps() if megapixels and megapixels <= 2 else []
for preset in presets:
    rows = [figures(samples(image), samples(equalized(image, preset, "after.png"))) for image in originals]
    mean = numpy.mean(rows, 0)
    edge = f"{halo(preset, bounds):.1f}" if bounds else ""
    print(f"| {preset} | {mean[0]:.2f} | {mean[1]:.2f} | {mean[2]:.2f} | {mean[3]:.2f} | {mean[4]:+.2f} | {mean[5]:+.2f} "
          f"| {edge} |", flush=True)
