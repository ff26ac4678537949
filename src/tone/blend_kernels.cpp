// Blends in one pass, rows in parallel.

#include "tone/blend_kernels.h"

#include <cstddef>

#include "image/parallel.h"
#include "tone/tone_kernels.h"

void BlendModeOverlayKiv(float* dst, float* top, float* base, int height, int width, int strideFloats) {
  const auto line = toneKernels().overlayLine;
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, top + at, base + at, width); });
}

void BlendModeLinearBurnKiv(float* dst, float* a, float* b, int height, int width, int strideFloats) {
  const auto line = toneKernels().linearBurnLine;
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, a + at, b + at, width); });
}

void BlendModeLinearDodgeKiv(float* dst, float* a, float* b, int height, int width, int strideFloats) {
  const auto line = toneKernels().linearDodgeLine;
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, a + at, b + at, width); });
}

void CalcDetailsLayerMergeGrain(float* dst, float* a, float* b, int height, int width, int strideFloats) {
  const auto line = toneKernels().mergeGrainLine;
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, a + at, b + at, width); });
}

void CalcDetailsLayerLinearLight(float* dst, float* a, float* b, int height, int width, int strideFloats,
                                 float offset) {
  const auto line = toneKernels().linearLightLine;
  const float centre = offset + 0.5F;
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, a + at, b + at, width, centre); });
}

void ApplyTonalMaskKiv(float* dst, float* base, float* filtered, int height, int width, int strideFloats, float shadows,
                       float midtones, float highlights) {
  const auto line = toneKernels().tonalMaskLine;
  const TonalWeights weights = {shadows, midtones, highlights};
  eachRow(height, strideFloats, [=](std::ptrdiff_t at) { line(dst + at, base + at, filtered + at, width, weights); });
}
