// Speed of high-pass and unsharp masking on three planes, and of the one-pass unsharp kernel with every row of bodies
// that the machine can run. Time is the wall's.

#include <benchmark/benchmark.h>

#include <cmath>

#include "filters/unsharp_mask.h"
#include "pictures.h"

namespace {

void unsharpKernel(benchmark::State& state) {
  const BenchRow row(state, state.range(1));
  if (!row.isThere()) return;
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage blurred(src.size, 1);
  KivImage dst(src.size, 1);
  randomise(src, 0.25F, 0.75F);
  blurred = src * 0.5F;
  blurred += 0.25F;
  for (auto _ : state) {
    ApplyUnsharpMaskPhotoshopKiv(dst.planes[0], src.planes[0], blurred.planes[0], src.size.height, src.size.width,
                                 src.stride / 4, 1.0F, 0.02F);
    benchmark::ClobberMemory();
  }
  if (!(std::abs(mean(dst) - mean(src)) < 0.001)) state.SkipWithError("the mean was not kept");
  countPixels(state, src.size);
}
BENCHMARK(unsharpKernel)
    ->ArgNames({"megapixels", "row"})
    ->ArgsProduct({{1, 6}, {0, 1, 2, 3, 4}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void usmPS(benchmark::State& state) {
  KivImage src(sizeOf(state.range(0)), 3);
  KivImage dst(src.size, 3);
  randomise(src, 0.25F, 0.75F);
  for (auto _ : state) dst.UsmPS(src, 100.0F, static_cast<float>(state.range(1)), 0.02F);
  if (!(mean(dst) >= mean(src))) state.SkipWithError("what is brighter than its surroundings didn't become brighter");
  countPixels(state, src.size);
}
BENCHMARK(usmPS)
    ->ArgNames({"megapixels", "sigma"})
    ->ArgsProduct({{1, 6}, {1, 5}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void highPass(benchmark::State& state) {
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage dst(src.size, 1);
  randomise(src, 0.25F, 0.75F);
  for (auto _ : state) dst.HighPassPS(src, static_cast<float>(state.range(1)), 4);
  if (!(std::abs(mean(dst) - 0.5) < 0.001)) state.SkipWithError("the layer isn't around grey");
  countPixels(state, src.size);
}
BENCHMARK(highPass)
    ->ArgNames({"megapixels", "sigma"})
    ->ArgsProduct({{1, 6}, {1, 20}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
