// KivImage: unsharp masking, gated by a soft mask.

#include "image/kiv_image.h"

void KivImage::UsmPS(const KivImage& src, float amount, float sigma, float threshold) {
  constexpr int kernelMultiplier = 5;
  allocateLike(src);
  const float factor = amount / 100.0F;
  KivImage blurred;
  blurred.Gauss_Blur(src, sigma, kernelMultiplier, true);

  KivImage detail;  // first its brighter part
  detail = src - blurred;
  detail.Threshold_I(1.0F);
  KivImage mask;
  mask.Threshold(detail, threshold, 0.0F, threshold, 1.0F);

  KivImage& darker = blurred;
  darker *= -1.0F;
  darker += 1.0F;
  darker += src;
  darker.Threshold_I(1.0F);
  darker *= -1.0F;
  darker += 1.0F;

  for (int i = 1; i < src.channels; ++i) mask.Plane(0) *= mask.Plane(i);
  for (int i = 1; i < src.channels; ++i) mask.Plane(i).Copy(mask.Plane(0));
  mask.Gauss_Blur(mask, sigma, kernelMultiplier, true);

  detail -= darker;
  detail *= factor;

  KivImage& rest = blurred;  // before the target is written: it may be src
  rest = mask * -1.0F;
  rest += 1.0F;
  rest *= src;

  *this = src + detail;
  Threshold_I(1.0F);
  *this *= mask;
  *this += rest;
}
