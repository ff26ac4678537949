#!/usr/bin/env python3
"""The figures that speed is held to, as ratios with both sides measured in one run.

bench/ratios.py [BENCHMARK_PROGRAM]: runs the benchmarks of the table several times over, takes medians, and prints the
table of bench/README.md. For an idle machine; takes about four minutes. What can't be measured here shows as "-".
"""

import json
import statistics
import subprocess
import sys
from pathlib import Path

program = Path(sys.argv[1] if len(sys.argv) > 1 else "build/release/bench/band_equalizer_bench")
# A process for each. OpenCV's threads keep to the processors of its first call; and a process that has done other things
# has memory at hand already.
wanted = (
    "wholeRunOfOpenCv/processors:2",
    "peakMemory",
    "bilateralIn|bilateralPlainLoop|wholeRunOfOpenCv/processors:1|wholeRun/|wholeRunOnPlanes|runWithout|"
    "streaming|gauss25|halving|AtRadius",
)


def measured(names):
    """Nanoseconds (for peakMemory: planes) by benchmark, the median of the repetitions."""
    output = subprocess.run(
        # Warm, and not interleaved: the host of a virtual machine takes free memory back within seconds, and what is
        # new to the machine comes at 0.4 GB/s.
        [program, f"--benchmark_filter={names}", "--benchmark_min_time=0.2", "--benchmark_min_warmup_time=0.5",
         "--benchmark_repetitions=5", "--benchmark_format=json"],
        check=True, stdout=subprocess.PIPE).stdout
    runs = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] == "iteration" and not run.get("error_occurred"):
            name = run["run_name"].replace("/real_time", "").replace("/iterations:1", "")
            runs.setdefault(name, []).append(run.get("planes", run["real_time"]))
    return {name: statistics.median(values) for name, values in runs.items()}


times = {}
for names in wanted:
    times |= measured(names)


def whole(megapixels, row, processors, name="wholeRun"):
    return f"{name}/megapixels:{megapixels}/row:{row}/processors:{processors}"


def ratio(numerator, denominator, scale=1.0):
    if numerator not in times or denominator not in times:
        return "-"
    return f"{scale * times[numerator] / times[denominator]:.2f}"


def line(what, needed, *values):
    print(f"| {what} | {needed} | {', '.join(values)} |")


print("| What | Held to | Measured |")
print("|---|---|---|")
for row, name, needed in ((4, "AVX-512", "6.5"), (3, "AVX2", "4.3"), (0, "baseline", "1.8")):
    line(f"bilateral filter, plain loop / {name} row, one core", f">= {needed}",
         ratio("bilateralPlainLoop", f"bilateralInNarrowWindow/row:{row}"))
line("bilateral filter, a tap in a window of 70 / of 12, AVX-512, AVX2, baseline", "<= 1.15",
     *(ratio(f"bilateralInWideWindow/row:{row}", f"bilateralInNarrowWindow/row:{row}", (25 / 141) ** 2)
       for row in (4, 3, 0)))
for row, name, needed in ((4, "AVX-512", "5"), (3, "AVX2", "4")):
    line(f"whole run of 24 MP, OpenCV / {name} row, on one and two processors", f">= {needed}",
         *(ratio(f"wholeRunOfOpenCv/processors:{n}", whole(24, row, n)) for n in (1, 2)))
line("share of time outside the low-passes, on one and two processors", "<= 0.20",
     *(ratio(whole(24, 4, n, "runWithoutLowPasses"), whole(24, 4, n)) for n in (1, 2)))
line("whole run of 24 MP, one / two processors", ">= 1.75", ratio(whole(24, 4, 1), whole(24, 4, 2)))
line("time per pixel, 6, 24 and 100 MP / 1 MP", "0.75 to 1.25",
     *(ratio(whole(n, 4, 2), whole(1, 4, 2), 1 / n) for n in (6, 24, 100)))
line("Gaussian of 25 taps / streaming copy, one core", "<= 7", ratio("gauss25Taps/0", "streamingCopy"))
line("halving / streaming copy, one core", "<= 2", ratio("halving/0", "streamingCopy"))
for name in ("box", "dilation", "decimatedBlur"):
    line(f"{name}, radius 100 / radius 5, one core", "<= 1.3", ratio(f"{name}AtRadius/100", f"{name}AtRadius/5"))
for luminance, path in ((1, "luminance"), (0, "planes")):
    planes = times.get(f"peakMemory/luminance:{luminance}")
    line(f"peak memory on {path} beside the picture, in planes", "0.9", f"{planes:.2f}" if planes else "-")
print()
for name in (whole(24, 4, 2), whole(24, 3, 2), whole(24, 0, 2), whole(24, 4, 2, "wholeRunOnPlanes")):
    if name in times:
        print(f"{name}: {times[name] / 1e6:.0f} ms")
