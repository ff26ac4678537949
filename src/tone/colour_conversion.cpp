// Grey and lightness: on raw planes and on images, rows in parallel.

#include "tone/colour_conversion.h"

#include <cstddef>

#include "image/parallel.h"
#include "tone/colour_kernels.h"
#include "tone/colours.h"

namespace {

LightnessRule lightnessRule(int gammaMode, int primariesMode) {
  const bool decodes = gammaMode == 1;
  if (primariesMode == 1) return {decodes, {0.212672904F, 0.715152204F, 0.0721750036F}};
  return {decodes, {0.222504497F, 0.716878593F, 0.0606168993F}};
}

// Line by line, since the images' row steps may differ.
template <typename Line>
void eachRowOf(const KivImage& dst, const KivImage& src, Line line) {
  eachIndex(dst.size.height, [&](int y) { line(dst.At(0, 0, y), src.At(0, 0, y), src.At(1, 0, y), src.At(2, 0, y)); });
}

}  // namespace

void ConvertColorToGrayKiv(float* dst, float* p0, float* p1, float* p2, int height, int width, int step,
                           float* weights) {
  const auto line = colourKernels().weightedSumLine;
  eachRow(height, step, [=](std::ptrdiff_t at) { line(dst + at, p0 + at, p1 + at, p2 + at, width, weights); });
}

void ExtractLChannelKiv(float* dst, float* r, float* g, float* b, int height, int width, int step, int gammaMode,
                        int primariesMode) {
  const auto line = colourKernels().lightnessLine;
  const LightnessRule rule = lightnessRule(gammaMode, primariesMode);
  eachRow(height, step, [=](std::ptrdiff_t at) { line(dst + at, r + at, g + at, b + at, width, rule); });
}

void colourToGrey(KivImage& target, const KivImage& src, const float* weights) {
  if (target.channels == 0) target.Init(src.size, 1);
  const auto line = colourKernels().weightedSumLine;
  eachRowOf(target, src, [=, width = target.size.width](float* dst, const float* p0, const float* p1, const float* p2) {
    line(dst, p0, p1, p2, width, weights);
  });
}

void rgbToLightness(KivImage& target, const KivImage& src) {
  if (target.channels == 0) target.Init(src.size, 1);
  const auto line = colourKernels().lightnessLine;
  const LightnessRule rule = lightnessRule(1, 2);
  eachRowOf(target, src, [=, width = target.size.width](float* dst, const float* r, const float* g, const float* b) {
    line(dst, r, g, b, width, rule);
  });
}
