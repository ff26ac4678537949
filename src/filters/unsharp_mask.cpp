// High-pass and unsharp masking in one pass, rows in parallel.

#include "filters/unsharp_mask.h"

#include <cstddef>

#include "filters/unsharp_kernels.h"

void HighPassFilterPsAuxKiv(float* dst, float* a, float* b, int height, int width, int strideFloats) {
  const auto line = unsharpKernels().highPassLine;
#pragma omp parallel for schedule(static)
  for (int y = 0; y < height; ++y) {
    const std::ptrdiff_t at = std::ptrdiff_t{y} * strideFloats;
    line(dst + at, a + at, b + at, width);
  }
}

void ApplyUnsharpMaskKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats,
                         float amount) {
  const auto line = unsharpKernels().unsharpLine;
#pragma omp parallel for schedule(static)
  for (int y = 0; y < height; ++y) {
    const std::ptrdiff_t at = std::ptrdiff_t{y} * strideFloats;
    line(dst + at, src + at, blurred + at, width, amount);
  }
}

void ApplyUnsharpMaskPhotoshopKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats,
                                  float amount, float threshold) {
  const auto line = unsharpKernels().gatedUnsharpLine;
#pragma omp parallel for schedule(static)
  for (int y = 0; y < height; ++y) {
    const std::ptrdiff_t at = std::ptrdiff_t{y} * strideFloats;
    line(dst + at, src + at, blurred + at, width, amount, threshold);
  }
}
