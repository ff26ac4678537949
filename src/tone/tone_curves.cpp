// KivImage: the power curve and the logistic curves, one pass per arithmetic step; and the logistic in one pass.

#include "tone/tone_curves.h"

#include <cmath>
#include <cstddef>

#include "image/kiv_image.h"
#include "image/parallel.h"
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

void KivImage::ApplyGammaCurve(const KivImage& src, float gamma) {
  if (gamma == 1.0F) {
    Copy(src);
    return;
  }
  Log(src);
  *this *= gamma;
  Exp();
}
void KivImage::ApplyGammaCurve(float gamma) { ApplyGammaCurve(*this, gamma); }

void KivImage::SigmoidalCurve(const KivImage& src, float slope, float midpoint) {
  constexpr float widening = 1e-6F;
  *this = src - midpoint;
  *this *= -slope;
  finishLogistic(*this);
  const float lo = logistic(-(slope * midpoint)) - widening;
  *this -= lo;
  const float hi = logistic(slope * (1.0F - midpoint)) + widening;
  *this /= hi - lo;
}
void KivImage::SigmoidalCurve(float slope, float midpoint) { SigmoidalCurve(*this, slope, midpoint); }

void KivImage::SigmoidalCurve2(const KivImage& src, float slope, float low, float high) {
  *this = src * -slope;
  finishLogistic(*this);
  const float lo = logistic(slope * low);
  *this -= lo;
  const float hi = logistic(slope * high);
  *this /= hi - lo;
  *this *= high - low;
  *this += low;
}
void KivImage::SigmoidalCurve2(float slope, float low, float high) { SigmoidalCurve2(*this, slope, low, high); }

void KivImage::Sigmoidal_Contrast(const KivImage& src, float contrast) {
  const float a = std::abs(contrast);
  if (a <= 0.5F) {
    Copy(src);
    return;
  }
  const float hi = logistic(a * 0.5F);
  const float lo = logistic(-(a * 0.5F));
  if (contrast > 0.0F) {
    *this = src - 0.5F;
    *this *= -a;
    Exp();
    *this += 1.0F;
    // The reciprocal as exp(-ln(t)).
    Log();
    *this *= -1.0F;
    Exp();
    *this -= lo;
    *this /= hi - lo;
    return;
  }
  allocateLike(src);
  KivImage u(size, channels);
  u = src * (hi - lo);
  u += lo;
  *this = u * -1.0F;
  *this += 1.0F;
  *this = u / *this;
  Log();
  *this *= 1.0F / a;
  *this += 0.5F;
}
void KivImage::Sigmoidal_Contrast(float contrast) { Sigmoidal_Contrast(*this, contrast); }

void ApplySigmoidalCurveKiv(float* dst, float* src, int height, int width, int strideFloats, float slope, float low,
                            float high) {
  const ToneKernels& kernels = toneKernels();
  const float lo = logistic(low * slope);
  const float hi = logistic(high * slope);
  const SigmoidalLine curve = {-slope, lo, 1.0F / (hi - lo), high - low, low};
  eachRow(height, strideFloats, [&](std::ptrdiff_t at) { kernels.sigmoidalLine(dst + at, src + at, width, curve); });
}
