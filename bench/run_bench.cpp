// Whole runs of the equalizer at the default settings, by size, row of bodies and processors; what they cost beside
// their low-pass filters, and how much memory they take.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "equalizer/band_equalizer.h"
#include "host/ps_database.h"
#include "pictures.h"
#include "processors.h"

namespace {

OrbelBandEqualizerGuiParams defaults(bool luminance) {
  return {{100, 100, 100, 100, 100}, {3, 3, 3, 3, 3}, {255, 10, 10, 10, 10}, {0, 1, 1, 1, 1}, 100, 0, luminance, 0};
}

void run(KivImage& image, OrbelBandEqualizerGuiParams params) {
  PS_Database unused = {};
  OrbelBandEqualizer(unused, params, image);
}

// At unit gains the picture comes back, so runs can follow each other on one image.
void measure(benchmark::State& state, const OrbelBandEqualizerGuiParams& params) {
  const BenchRow row(state, state.range(1));
  const Processors processors(static_cast<int>(state.range(2)));
  if (!row.isThere()) return;
  if (!processors.areThere()) return state.SkipWithError("this machine has fewer processors");
  KivImage image(sizeOf(state.range(0)), 3);
  paint(image);
  const double before = mean(image);
  for (auto _ : state) run(image, params);
  if (!(std::abs(mean(image) - before) < 0.0001)) state.SkipWithError("the picture didn't come back");
  countPixels(state, image.size);
}

void wholeRun(benchmark::State& state) { measure(state, defaults(true)); }
void wholeRunOnPlanes(benchmark::State& state) { measure(state, defaults(false)); }

// Radii of 0: every low-pass is left out, all else is done.
void runWithoutLowPasses(benchmark::State& state) {
  OrbelBandEqualizerGuiParams params = defaults(true);
  std::fill(std::begin(params.radius), std::end(params.radius), 0.0F);
  measure(state, params);
}

const std::vector<std::string> arguments = {"megapixels", "row", "processors"};
BENCHMARK(wholeRun)->ArgNames(arguments)->ArgsProduct({{24}, {0, 3, 4}, {1, 2}})->UseRealTime();
BENCHMARK(wholeRun)->ArgNames(arguments)->ArgsProduct({{1, 6, 100}, {4}, {2}})->UseRealTime();
BENCHMARK(wholeRunOnPlanes)->ArgNames(arguments)->ArgsProduct({{24}, {4}, {2}})->UseRealTime();
BENCHMARK(runWithoutLowPasses)->ArgNames(arguments)->ArgsProduct({{24}, {4}, {1, 2}})->UseRealTime();

// The most memory that a run takes beside its picture, in planes of it: in a process of its own, since a process only
// tells the most that it ever had.
void peakMemory(benchmark::State& state) {
  double planes = 0;
  for (auto _ : state) {
    int channel[2];
    if (pipe(channel) != 0) return state.SkipWithError("no pipe");
    const pid_t child = fork();
    if (child == 0) {
      KivImage image(sizeOf(24), 3);
      paint(image);
      const auto mostKilobytes = [] {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return static_cast<double>(usage.ru_maxrss);
      };
      const double before = mostKilobytes();
      run(image, defaults(state.range(0) != 0));
      const double taken = (mostKilobytes() - before) * 1024 / (double{4} * image.size.width * image.size.height);
      const bool told = write(channel[1], &taken, sizeof taken) == sizeof taken;
      _exit(told ? 0 : 1);
    }
    if (read(channel[0], &planes, sizeof planes) != sizeof planes) state.SkipWithError("the child said nothing");
    waitpid(child, nullptr, 0);
    close(channel[0]);
    close(channel[1]);
  }
  state.counters["planes"] = planes;
}
BENCHMARK(peakMemory)->ArgName("luminance")->Arg(1)->Arg(0)->Iterations(1);

// What one pass over memory costs: the measure for all others.
void streamingCopy(benchmark::State& state) {
  const Processors one(1);
  KivImage src(sizeOf(24), 1);
  KivImage dst(src.size, 1);
  paint(src);
  for (auto _ : state) {
    std::memcpy(dst.planes[0], src.planes[0],
                static_cast<std::size_t>(src.stride) * static_cast<std::size_t>(src.size.height));
    benchmark::ClobberMemory();
  }
  countPixels(state, src.size);
}
BENCHMARK(streamingCopy)->UseRealTime();

template <typename Operation>
void oneProcessor(benchmark::State& state, Operation operation) {
  const Processors one(1);
  KivImage src(sizeOf(24), 1);
  KivImage dst(src.size, 1);
  paint(src);
  for (auto _ : state) operation(dst, src, state.range(0));
  if (!(dst.Max() <= src.Max() + 1e-5F)) state.SkipWithError("brighter than its brightest sample");
  countPixels(state, src.size);
}

void gauss25Taps(benchmark::State& state) {
  oneProcessor(state, [](KivImage& dst, const KivImage& src, std::int64_t) { dst.GaussBlurFast(src, 3.0F, 4); });
}
BENCHMARK(gauss25Taps)->Arg(0)->UseRealTime();

void halving(benchmark::State& state) {
  oneProcessor(state, [](KivImage& dst, const KivImage& src, std::int64_t) {
    dst.Resize(src, src.size.width / 2, src.size.height / 2);
  });
}
BENCHMARK(halving)->Arg(0)->UseRealTime();

void boxAtRadius(benchmark::State& state) {
  oneProcessor(state, [](KivImage& dst, const KivImage& src, std::int64_t radius) {
    dst.Box_Blur(src, static_cast<int>(radius));
  });
}
BENCHMARK(boxAtRadius)->Arg(5)->Arg(100)->UseRealTime();

void dilationAtRadius(benchmark::State& state) {
  const auto side = static_cast<int>(2 * state.range(0) + 1);
  std::vector<unsigned char> mask(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1);
  oneProcessor(state,
               [&](KivImage& dst, const KivImage& src, std::int64_t) { dst.Dilate(src, mask.data(), side, false); });
}
BENCHMARK(dilationAtRadius)->Arg(5)->Arg(100)->UseRealTime();

void decimatedBlurAtRadius(benchmark::State& state) {
  oneProcessor(state, [](KivImage& dst, const KivImage& src, std::int64_t radius) {
    dst.GaussBlurDecimate(src, static_cast<float>(radius), 4);
  });
}
BENCHMARK(decimatedBlurAtRadius)->Arg(5)->Arg(100)->UseRealTime();

}  // namespace
