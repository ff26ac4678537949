// Luminance of three planes, and its change given back to them; rows in parallel.

#include "equalizer/luminance.h"

#include <cstddef>

#include "equalizer/band_equalizer.h"
#include "equalizer/equalizer_kernels.h"
#include "image/parallel.h"
#include "tone/colour_conversion.h"

LuminanceWeights luminanceWeights(int selector) {
  switch (selector) {
    case 2:
    case 4:
      return {{0.299F, 0.587F, 0.114F}};
    case 3:
      return {{0.213F, 0.715F, 0.072F}};
    default:
      return {{0.25F, 0.5F, 0.25F}};
  }
}

void ExtractYChannelKiv(float* y, float* c0, float* c1, float* c2, int height, int width, int step, int weights) {
  LuminanceWeights triple = luminanceWeights(weights);
  ConvertColorToGrayKiv(y, c0, c1, c2, height, width, step, triple.values);
}

void SetYChannelOutputKiv(float* c0, float* c1, float* c2, float* yBefore, float* yAfter, int height, int width,
                          int step, float strength) {
  const EqualizerKernels& kernels = equalizerKernels();
  eachRow(height, step, [&](std::ptrdiff_t at) {
    kernels.addChangeLine(c0 + at, c1 + at, c2 + at, yBefore + at, yAfter + at, strength, width);
  });
}
