// The bilateral filter on one thread, with every row of bodies that the machine can run, against the plain loop that
// any of them must beat: four neighbouring outputs at a time, straight from the formula.

#include <benchmark/benchmark.h>

#include <cmath>

#include "equalizer/bilateral_filter.h"
#include "pictures.h"
#include "processors.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr IppiSize strip = {3000, 192};
constexpr float sigma = 3.0F;
constexpr float threshold = 10.0F / 255.0F;
constexpr int window = 12;

void countTaps(benchmark::State& state, int halfWidth) {
  const double taps = (2.0 * halfWidth + 1) * (2.0 * halfWidth + 1) * strip.width * strip.height;
  state.counters["taps/s"] = benchmark::Counter(taps, benchmark::Counter::kIsIterationInvariantRate);
}

template <unsigned short halfWidth>
void bilateralOneThread(benchmark::State& state) {
  const BenchRow row(state, state.range(0));
  if (!row.isThere()) return;
  const Processors one(1);
  KivImage src(strip, 1);
  KivImage dst(strip, 1);
  paint(src);
  for (auto _ : state) {
    Bilateral_std(dst.planes[0], src.planes[0], strip.height, strip.width, static_cast<unsigned>(src.stride / 4),
                  halfWidth, sigma * halfWidth / window, threshold, 1);
  }
  if (!(std::abs(mean(src) - mean(dst)) < 0.01)) state.SkipWithError("the mean was not kept");
  countTaps(state, halfWidth);
}
void bilateralInNarrowWindow(benchmark::State& state) { bilateralOneThread<window>(state); }
void bilateralInWideWindow(benchmark::State& state) { bilateralOneThread<70>(state); }
BENCHMARK(bilateralInNarrowWindow)->ArgName("row")->DenseRange(0, 4);
BENCHMARK(bilateralInWideWindow)->ArgName("row")->DenseRange(0, 4);

#if defined(__SSE2__)
// One group of four outputs over the padded block. top addresses the first sample of the group's squares.
__m128 plainGroup(const float* top, int blockStep, float ks, float kr) {
  const __m128 centre = _mm_loadu_ps(top + window * blockStep + window);
  __m128 sum = _mm_setzero_ps();
  __m128 norm = _mm_setzero_ps();
  for (int dy = -window; dy <= window; ++dy, top += blockStep) {
    for (int dx = -window; dx <= window; ++dx) {
      const auto x = static_cast<float>(dx);
      const auto y = static_cast<float>(dy);
      const __m128 v = _mm_loadu_ps(top + window + dx);
      const __m128 d = _mm_sub_ps(v, centre);
      const __m128 e = _mm_add_ps(_mm_set1_ps((x * x + y * y) * ks), _mm_mul_ps(_mm_mul_ps(d, d), _mm_set1_ps(kr)));
      const __m128i i =
          _mm_add_epi32(_mm_cvtps_epi32(_mm_mul_ps(e, _mm_set1_ps(12102203.0F))), _mm_set1_epi32(0x3F7893F5));
      const __m128 w = _mm_andnot_ps(_mm_cmplt_ps(e, _mm_set1_ps(-87.0F)), _mm_castsi128_ps(i));
      norm = _mm_add_ps(norm, w);
      sum = _mm_add_ps(sum, _mm_mul_ps(v, w));
    }
  }
  return _mm_div_ps(sum, norm);
}

void bilateralPlainLoop(benchmark::State& state) {
  KivImage src(strip, 1);
  KivImage dst(strip, 1);
  paint(src);
  const float ks = bilateralCoefficient(sigma);
  const float kr = bilateralCoefficient(threshold);
  for (auto _ : state) {
    KivImage block(strip.width + 2 * window, strip.height + 2 * window, 1);
    block.Pad(src, window);
    for (int y = 0; y < strip.height; ++y) {
      for (int x = 0; x < strip.width; x += 4) {
        _mm_storeu_ps(dst.At(0, x, y), plainGroup(block.At(0, x, y), block.stride / 4, ks, kr));
      }
    }
  }
  KivImage expected(strip, 1);
  BilateralFilterKiv(expected.planes[0], src.planes[0], strip.height, strip.width,
                     static_cast<unsigned>(src.stride / 4), window, sigma, threshold, 0, 1);
  for (int y = 0; y < strip.height; ++y) {
    for (int x = 0; x < strip.width; ++x) {
      if (*dst.At(0, x, y) != *expected.At(0, x, y)) return state.SkipWithError("not the filter's samples");
    }
  }
  countTaps(state, window);
}
BENCHMARK(bilateralPlainLoop);
#endif

}  // namespace
