// High-pass and unsharp masking in one pass, rows in parallel.

#include "filters/unsharp_mask.h"

#include <cstddef>

#include "filters/unsharp_kernels.h"
#include "image/parallel.h"

void HighPassFilterPsAuxKiv(float* dst, float* a, float* b, int height, int width, int strideFloats) {
  const auto line = unsharpKernels().highPassLine;
  eachRow(height, strideFloats, [&](std::ptrdiff_t at) { line(dst + at, a + at, b + at, width); });
}

void ApplyUnsharpMaskKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats,
                         float amount) {
  const auto line = unsharpKernels().unsharpLine;
  eachRow(height, strideFloats, [&](std::ptrdiff_t at) { line(dst + at, src + at, blurred + at, width, amount); });
}

void ApplyUnsharpMaskPhotoshopKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats,
                                  float amount, float threshold) {
  const auto line = unsharpKernels().gatedUnsharpLine;
  eachRow(height, strideFloats,
          [&](std::ptrdiff_t at) { line(dst + at, src + at, blurred + at, width, amount, threshold); });
}
