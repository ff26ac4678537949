// Speed of the one-pass kernels of tone and blending with every row of bodies that the machine can run. Time is the
// wall's: rows go in parallel.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "image/kiv_image.h"
#include "tone/blend_kernels.h"
#include "tone/tone_curves.h"

namespace {

// 1 and 24 megapixels: nearly in the cache, and far beyond it.
IppiSize sizeOf(std::int64_t megapixels) { return megapixels == 1 ? IppiSize{1250, 800} : IppiSize{6000, 4000}; }

void randomise(KivImage& image) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> samples(0.0F, 1.0F);
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x) *image.At(0, x, y) = samples(random);
  }
}

// Times kernel(dst, src), which is to give expected(sample) for a plane of random samples.
template <typename Kernel, typename Expected>
void run(benchmark::State& state, Kernel kernel, Expected expected) {
  ippInit();
  const auto row = static_cast<std::int32_t>(state.range(1));
  if (row > ippJumpIndexForMergedLibs) {
    state.SkipWithError("this machine lacks the row's instructions");
    return;
  }
  KivImage src(sizeOf(state.range(0)), 1);
  KivImage dst(src.size, 1);
  randomise(src);
  ippJumpIndexForMergedLibs = row;
  for (auto _ : state) {
    kernel(dst, src);
    benchmark::ClobberMemory();
  }
  ippInit();
  for (int x = 0; x < src.size.width; ++x) {
    if (!(std::abs(*dst.At(0, x, 7) - expected(*src.At(0, x, 7))) < 1e-5F)) state.SkipWithError("a wrong result");
  }
  state.counters["pixels/s"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * src.size.width * src.size.height, benchmark::Counter::kIsRate);
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
