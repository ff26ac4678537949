// The power curve and the logistic curves, one pass per arithmetic step; and the logistic in one pass.

#include "tone/tone_curves.h"

#include <cmath>
#include <cstddef>

#include "image/allocate_like.h"
#include "image/parallel.h"
#include "tone/curves.h"
#include "tone/tone_kernels.h"

namespace {

float logistic(float v) { return 1.0F / (1.0F + toneKernels().exponential(-v)); }

// Sample by sample 1 / x. Row by row: what lies between the rows may be another image's.
void invert(KivImage& image) {
  for (int i = 0; i < image.channels; ++i) {
    for (int y = 0; y < image.size.height; ++y) ippsDivCRev_32f_I(1.0F, image.At(i, 0, y), image.size.width);
  }
}

// From the logistic's argument, negated, to its value.
void finishLogistic(KivImage& image) {
  image.Exp();
  image += 1.0F;
  invert(image);
}

}  // namespace

void gammaCurve(KivImage& target, const KivImage& src, float gamma) {
  if (gamma == 1.0F) {
    target.Copy(src);
    return;
  }
  target.Log(src);
  target *= gamma;
  target.Exp();
}

void sigmoidalCurve(KivImage& target, const KivImage& src, float slope, float midpoint) {
  constexpr float widening = 1e-6F;
  target = src - midpoint;
  target *= -slope;
  finishLogistic(target);
  const float lo = logistic(-(slope * midpoint)) - widening;
  target -= lo;
  const float hi = logistic(slope * (1.0F - midpoint)) + widening;
  target /= hi - lo;
}

void sigmoidalCurveThrough(KivImage& target, const KivImage& src, float slope, float low, float high) {
  target = src * -slope;
  finishLogistic(target);
  const float lo = logistic(slope * low);
  target -= lo;
  const float hi = logistic(slope * high);
  target /= hi - lo;
  target *= high - low;
  target += low;
}

void sigmoidalContrast(KivImage& target, const KivImage& src, float contrast) {
  const float a = std::abs(contrast);
  if (a <= 0.5F) {
    target.Copy(src);
    return;
  }
  const float hi = logistic(a * 0.5F);
  const float lo = logistic(-(a * 0.5F));
  if (contrast > 0.0F) {
    target = src - 0.5F;
    target *= -a;
    target.Exp();
    target += 1.0F;
    // The reciprocal as exp(-ln(t)).
    target.Log();
    target *= -1.0F;
    target.Exp();
    target -= lo;
    target /= hi - lo;
    return;
  }
  allocateLike(target, src);
  KivImage u(target.size, target.channels);
  u = src * (hi - lo);
  u += lo;
  target = u * -1.0F;
  target += 1.0F;
  target = u / target;
  target.Log();
  target *= 1.0F / a;
  target += 0.5F;
}

void ApplySigmoidalCurveKiv(float* dst, float* src, int height, int width, int strideFloats, float slope, float low,
                            float high) {
  const ToneKernels& kernels = toneKernels();
  const float lo = logistic(low * slope);
  const float hi = logistic(high * slope);
  const SigmoidalLine curve = {-slope, lo, 1.0F / (hi - lo), high - low, low};
  eachRow(height, strideFloats, [&](std::ptrdiff_t at) { kernels.sigmoidalLine(dst + at, src + at, width, curve); });
}
