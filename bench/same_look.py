#!/usr/bin/env python3
"""How near the look of a picture is to that of the same picture in another size, for each preset, as a table.

bench/same_look.py ORBEL PHOTO...: each photograph is brought to s times the reference edge, equalized and reduced by s,
and held against the one that is reduced first and equalized then; below the reference edge, the one at the reference
edge is held against its reduction. Levels of 8 bits over all photographs: the mean difference, and the 99th percentile
behind it; from both is taken what resampling alone makes, that is reducing what was enlarged. Works in floats, so that
nothing is clipped or rounded. Needs the program vips (libvips-tools) and python3-numpy; some minutes.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

import numpy

orbel, photos = sys.argv[1], sys.argv[2:]
edge = 1024
presets = ["clarity", "landscape", "crisp", "soft skin", "protect grain", "detail map", "neutral"]
folder = Path(tempfile.mkdtemp())


def vips(*arguments):
    subprocess.run(["vips", *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


def samples(image):
    vips("rawsave", image, folder / "raw")
    return 255 * numpy.fromfile(folder / "raw", numpy.float32)


def size_of(image):
    return [int(subprocess.check_output(["vipsheader", "-f", field, image])) for field in ("width", "height")]


def scaled(photo, longest, multiple, name):
    """The photograph with this longer side, cut so that both sides are multiples, in floats."""
    vips("resize", photo, folder / "scaled.v", (longest + 0.5) / max(size_of(photo)))
    size = [min(side, longest) // multiple * multiple for side in size_of(folder / "scaled.v")]
    vips("extract_area", folder / "scaled.v", folder / "cut.v", 0, 0, *size)
    vips("linear", folder / "cut.v", folder / "floats.v", 1 / 255, 0)
    vips("copy", folder / "floats.v", folder / name, "--interpretation", "scrgb")
    return folder / name


def reduced(image, by, name):
    vips("shrink", image, folder / name, by, by)
    return folder / name


def equalized(image, preset, name):
    subprocess.run([orbel, "apply", image, "-o", folder / name, "-q", "-f", "-p", preset, "--max-minutes", "0"],
                   check=True)
    return folder / name


def differences(a, b):
    return numpy.abs(samples(a) - samples(b))


print("| size | " + " | ".join(presets) + " |")
print("|---" * (len(presets) + 1) + "|")
for size in (0.25, 0.5, 2, 3, 4, 6):
    by = int(max(size, 1 / size))
    means = {preset: [] for preset in presets}
    ranks = {preset: [] for preset in presets}
    for photo in photos:
        large = scaled(photo, int(max(edge, edge * size)), by, "large.tif")
        small = reduced(large, by, "small.tif")
        alone = numpy.zeros(1)
        if size < 1:
            vips("resize", small, folder / "enlarged.tif", by)
            alone = differences(reduced(folder / "enlarged.tif", by, "again.tif"), small)
        for preset in presets:
            found = differences(reduced(equalized(large, preset, "a.tif"), by, "b.tif"),
                                equalized(small, preset, "c.tif"))
            means[preset].append(max(0, found.mean() - alone.mean()))
            ranks[preset].append(max(0, numpy.percentile(found, 99) - numpy.percentile(alone, 99)))
    cells = [f"{numpy.mean(means[p]):.2f} ({numpy.mean(ranks[p]):.1f})" for p in presets]
    print(f"| {size:g} | " + " | ".join(cells) + " |", flush=True)
