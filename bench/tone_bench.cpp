// Speed of the one-pass kernels of tone and blending, and of colour conversion, with every row of bodies that the
// machine can run. Time is the wall's: the rows of an image go in parallel, but for twists and Lab.

#include <benchmark/benchmark.h>

#include <cmath>

#include "pictures.h"
#include "tone/blend_kernels.h"
#include "tone/colour_conversion.h"
#include "tone/tone_curves.h"

namespace {

// Times kernel(dst, src), which is to give expected(sample) for a plane of random samples.
template <typename Kernel, typename Expected>
void run(benchmark::State& state, Kernel kernel, Expected expected) {
  const BenchRow row(state, state.range(1));
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

// Times convert(dst, src) on three random planes. Plane 0 is to have the given mean.
template <typename Convert>
void runColour(benchmark::State& state, Convert convert, double expectedMean) {
  const BenchRow row(state, state.range(1));
  if (!row.isThere()) return;
  KivImage src(sizeOf(state.range(0)), 3);
  randomise(src);
  KivImage dst;
  convert(dst, src);  // allocates it
  for (auto _ : state) {
    convert(dst, src);
    benchmark::ClobberMemory();
  }
  if (!(std::abs(mean(dst) - expectedMean) < 0.01 * expectedMean)) state.SkipWithError("a wrong result");
  countPixels(state, src.size);
}

// Means for samples spread evenly over 0 to 1, from the formulas in double precision.
void rgbToLab(benchmark::State& state) {
  runColour(
      state, [](KivImage& dst, const KivImage& src) { dst.Convert_RGB_to_LAB(src); }, 73.77);
}
void labToRgb(benchmark::State& state) {
  runColour(
      state, [](KivImage& dst, const KivImage& src) { dst.Convert_LAB_To_RGB(src); }, 0.00315);
}
void colourTwist(benchmark::State& state) {
  runColour(
      state, [](KivImage& dst, const KivImage& src) { dst.Color_Twist(src, YUVtoRGB); }, 1.2004);
}
void grey(benchmark::State& state) {
  runColour(
      state, [](KivImage& dst, const KivImage& src) { dst.ColorToGraySSE(src, 0.3F, 0.6F, 0.1F); }, 0.5);
}
void lightness(benchmark::State& state) {
  runColour(
      state, [](KivImage& dst, const KivImage& src) { dst.ConvertRgbToLSSE(src); }, 0.574);
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
BENCHMARK(rgbToLab)->Apply(eachSizeAndRow);
BENCHMARK(labToRgb)->Apply(eachSizeAndRow);
BENCHMARK(colourTwist)->Apply(eachSizeAndRow);
BENCHMARK(grey)->Apply(eachSizeAndRow);
BENCHMARK(lightness)->Apply(eachSizeAndRow);

}  // namespace
