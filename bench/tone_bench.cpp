// Speed of the one-pass kernels of tone and blending with every row of bodies that the machine can run. Time is the
// wall's: rows go in parallel.

#include <benchmark/benchmark.h>

#include <cmath>

#include "pictures.h"
#include "tone/blend_kernels.h"
#include "tone/tone_curves.h"

namespace {

// Times kernel(dst, src), which is to give expected(sample) for a plane of random samples.
template <typename Kernel, typename Expected>
void run(benchmark::State& state, Kernel kernel, Expected expected) {
  const RowInForce row(state, state.range(1));
  if (!row.isThere()) return;
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage dst(src.size, 1);
  randomise(src);
  for (auto _ : state) {
    kernel(dst, src);
    benchmark::ClobberMemory();
  }
  for (int x = 0; x < src.size.width; ++x) {
    if (!(std::abs(*dst.At(0, x, 7) - expected(*src.At(0, x, 7))) < 1e-5F)) state.SkipWithError("a wrong result");
  }
  countPixels(state, src.size);
}

constexpr float slope = 5.0F;

float logistic(float v) { return 1.0F / (1.0F + std::exp(-v)); }
float curve(float x) { return (logistic(slope * x) - 0.5F) / (logistic(slope) - 0.5F); }

void sigmoidalCurve(benchmark::State& state) {
  run(
      state,
      [](KivImage& dst, KivImage& src) {
        ApplySigmoidalCurveKiv(dst.planes[0], src.planes[0], src.size.height, src.size.width, src.stride / 4, slope,
                               0.0F, 1.0F);
      },
      curve);
}

// The same curve, one pass per arithmetic step.
void sigmoidalCurveInSteps(benchmark::State& state) {
  run(
      state, [](KivImage& dst, KivImage& src) { dst.SigmoidalCurve2(src, slope, 0.0F, 1.0F); }, curve);
}

void overlayBlend(benchmark::State& state) {
  run(
      state,
      [](KivImage& dst, KivImage& src) {
        BlendModeOverlayKiv(dst.planes[0], src.planes[0], src.planes[0], src.size.height, src.size.width,
                            src.stride / 4);
      },
      [](float x) { return x < 0.5F ? 2.0F * x * x : 1.0F - 2.0F * (1.0F - x) * (1.0F - x); });
}

void eachSizeAndRow(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"megapixels", "row"})
      ->ArgsProduct({{1, 24}, {0, 1, 2, 3, 4}})
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}
BENCHMARK(sigmoidalCurve)->Apply(eachSizeAndRow);
BENCHMARK(sigmoidalCurveInSteps)->Apply(eachSizeAndRow);
BENCHMARK(overlayBlend)->Apply(eachSizeAndRow);

}  // namespace
