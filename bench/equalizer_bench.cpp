// Speed of the equalizer: its low-pass filters, the bilateral one with every row of bodies that the machine can run.
// Time is the wall's: the work is spread over threads.

#include <benchmark/benchmark.h>

#include <cmath>

#include "equalizer/bilateral_filter.h"
#include "pictures.h"

namespace {

// Radius 3, so 625 taps a pixel; the range term is weak, so the mean is kept.
void bilateral(benchmark::State& state) {
  const BenchRow row(state, state.range(1));
  if (!row.isThere()) return;
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage dst(src.size, 1);
  paint(src);
  for (auto _ : state) {
    Bilateral_std(dst.planes[0], src.planes[0], static_cast<unsigned>(src.size.height),
                  static_cast<unsigned>(src.size.width), static_cast<unsigned>(src.stride / 4), 12, 3.0F, 1.0F, 1);
  }
  if (!(std::abs(mean(src) - mean(dst)) < 0.002)) state.SkipWithError("the mean was not kept");
  countPixels(state, src.size);
}
BENCHMARK(bilateral)->ArgNames({"megapixels", "row"})->ArgsProduct({{1, 6, 24}, {0, 1, 2, 3, 4}})->UseRealTime();

void gaussBlurFast(benchmark::State& state) {
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage dst(src.size, 1);
  paint(src);
  for (auto _ : state) dst.GaussBlurFast(src, 3.0F, 4);
  if (!(std::abs(mean(src) - mean(dst)) < 0.002)) state.SkipWithError("the mean was not kept");
  countPixels(state, src.size);
}
BENCHMARK(gaussBlurFast)->ArgName("megapixels")->Arg(1)->Arg(6)->Arg(24)->UseRealTime();

}  // namespace
