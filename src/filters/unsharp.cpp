// Unsharp masking, gated by a soft mask.

#include "filters/detail.h"
#include "filters/gaussian_blur.h"
#include "image/allocate_like.h"
#include "tone/curves.h"

void unsharpMask(KivImage& target, const KivImage& src, float amount, float sigma, float threshold) {
  constexpr int kernelMultiplier = 5;
  allocateLike(target, src);
  const float factor = amount / 100.0F;
  KivImage blurred;
  gaussianBlur(blurred, src, sigma, kernelMultiplier, true);

  KivImage detail;  // first its brighter part
  detail = src - blurred;
  limitToRange(detail, 1.0F);
  KivImage mask;
  applyThresholds(mask, detail, threshold, 0.0F, threshold, 1.0F);

  KivImage& darker = blurred;
  darker *= -1.0F;
  darker += 1.0F;
  darker += src;
  limitToRange(darker, 1.0F);
  darker *= -1.0F;
  darker += 1.0F;

  for (int i = 1; i < src.channels; ++i) mask.Plane(0) *= mask.Plane(i);
  for (int i = 1; i < src.channels; ++i) mask.Plane(i).Copy(mask.Plane(0));
  gaussianBlur(mask, mask, sigma, kernelMultiplier, true);

  detail -= darker;
  detail *= factor;

  KivImage& rest = blurred;  // before the target is written: it may be src
  rest = mask * -1.0F;
  rest += 1.0F;
  rest *= src;

  target = src + detail;
  limitToRange(target, 1.0F);
  target *= mask;
  target += rest;
}
