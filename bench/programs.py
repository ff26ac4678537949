#!/usr/bin/env python3
"""What a photograph costs from file to file: orbel's presets beside other programs and beside copying, as a table.

bench/programs.py ORBEL PHOTO...: each photograph is brought to 24 megapixels and written as JPEG at quality 95, and each
command makes another such file of it. Processor seconds, seconds, and peak memory in MB: medians of five rounds, in each
of which every command has its turn. Compares with what is installed of imagemagick, gmic and darktable; needs the
program vips (libvips-tools), an idle machine, and some minutes.
"""

import os
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

orbel, photos = Path(sys.argv[1]).resolve(), sys.argv[2:]
presets = ["clarity", "landscape", "crisp", "soft skin", "protect grain"]
rounds = 5
folder = Path(tempfile.mkdtemp())
os.chdir(folder)


# A sidecar file of darktable's with one module: its parameters as they lie in memory.
SIDECAR = """<?xml version="1.0" encoding="UTF-8"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description
 rdf:about="" xmlns:darktable="http://darktable.sf.net/" darktable:xmp_version="5" darktable:history_end="1">
<darktable:history><rdf:Seq><rdf:li darktable:num="0" darktable:operation="{}" darktable:enabled="1"
 darktable:modversion="{}" darktable:params="{}" darktable:multi_name="" darktable:multi_priority="0"/></rdf:Seq>
</darktable:history></rdf:Description></rdf:RDF></x:xmpmeta>
"""
LOCAL_CONTRAST = struct.pack("<I4f", 1, 0.5, 0.5, 1.25, 0.5)  # the local Laplacian, at the module's own values
CONTRAST_EQUALIZER = struct.pack("<i61f", 8, *([k / 5 for k in range(6)] * 5),  # eight scales, luminance raised
                                 *([0.6] * 6 + [0.5] * 12 + [0.0] * 12), 1.0)


def darktable(operation, version, parameters):
    sidecar = folder / f"{operation}.xmp"
    sidecar.write_text(SIDECAR.format(operation, version, parameters.hex()))
    return ["darktable-cli", "in.jpg", str(sidecar), "dt.jpg", "--core", "--configdir", str(folder / "dt"), "--conf",
            "plugins/imageio/format/jpeg/quality=95"]


def commands():
    yield "`vips copy`", ["vips", "copy", "in.jpg", "out.jpg[Q=95]"]
    for preset in presets:
        yield f"`orbel -p '{preset}'`", [str(orbel), "apply", "in.jpg", "-o", "out.jpg", "-f", "-q", "-p", preset]
    if shutil.which("convert-im6"):
        yield "ImageMagick, `-local-contrast 10x50`", ["convert-im6", "in.jpg", "-local-contrast", "10x50", "-quality",
                                                      "95", "out.jpg"]
    if shutil.which("gmic"):
        yield "G'MIC, `unsharp 10`", ["gmic", "in.jpg", "unsharp", "10", "c", "0,255", "o", "out.jpg,95"]
    if shutil.which("darktable-cli"):
        yield "darktable, local contrast", darktable("bilat", 3, LOCAL_CONTRAST)
        yield "darktable, contrast equalizer", darktable("atrous", 2, CONTRAST_EQUALIZER)


def measured(command):
    for leftover in folder.glob("dt*.jpg"):
        leftover.unlink()
    begun = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - begun
    if status != 0:
        raise SystemExit(f"{command} ended with {status}")
    return usage.ru_utime + usage.ru_stime, seconds, usage.ru_maxrss * 1024 / 1e6


for photo in photos:
    source = Path(photo)
    sizes = [int(subprocess.check_output(["vipsheader", "-f", side, source])) for side in ("width", "height")]
    subprocess.run(["vips", "resize", source, "in.jpg[Q=95]", str((24e6 / (sizes[0] * sizes[1])) ** 0.5)], check=True)
    figures = {name: [] for name, _ in commands()}
    for turn in range(rounds + 1):  # the first one warms up
        for name, command in commands():
            figures[name] += [measured(command)] if turn > 0 else [] if measured(command) else []
    print(f"\n| {source.stem}, 24 megapixels | processor seconds | over copying | seconds | MB |\n|---|---|---|---|---|")
    copying = statistics.median(run[0] for run in figures["`vips copy`"])
    for name, runs in figures.items():
        processor, seconds, memory = (statistics.median(column) for column in zip(*runs))
        print(f"| {name} | {processor:.2f} | {processor / copying:.1f} x | {seconds:.2f} | {memory:.0f} |", flush=True)
shutil.rmtree(folder)
