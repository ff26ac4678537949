// What a Gaussian blur takes away, as a layer around grey 0.5.

#include <algorithm>

#include "filters/detail.h"
#include "filters/gaussian_blur.h"
#include "filters/unsharp_kernels.h"
#include "image/allocate_like.h"
#include "image/parallel.h"

namespace {

// gaussianBlurDecimated, or plane 0 of the source itself where that would leave its target as it was.
void blurOrCopy(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier) {
  if (sigma > 0.0F && kernelMultiplier > 0) {
    gaussianBlurDecimated(target, src, sigma, kernelMultiplier);
  } else {
    target.Plane(0).Copy(src.Plane(0));
  }
}

}  // namespace

void highPassHalfStrength(KivImage& target, const KivImage& src, float sigma) {
  constexpr int kernelMultiplier = 4;
  allocateLike(target, src);
  KivImage shared = target.ROI(0, 0, target.size.width, target.size.height);  // the planes that the source has too
  shared.channels = std::min(target.channels, src.channels);
  KivImage half(target.size, shared.channels);  // before the blur: the target may be src
  half = src * 0.5F;
  for (int i = 0; i < shared.channels; ++i) {
    KivImage plane = shared.Plane(i);
    blurOrCopy(plane, src.Plane(i), sigma, kernelMultiplier);
  }
  shared *= -1.0F;
  shared += 1.0F;
  shared *= 0.5F;
  shared += half;
}

void highPassFullStrength(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier) {
  allocateLike(target, src);
  if (target.planes[0] == src.planes[0]) {
    KivImage copy;
    copy = src;
    highPassFullStrength(target, copy, sigma, kernelMultiplier);
    return;
  }
  blurOrCopy(target, src, sigma, kernelMultiplier);
  const auto line = unsharpKernels().highPassLine;
  // Line by line, since the images' row steps may differ.
  eachIndex(target.size.height,
            [&](int y) { line(target.At(0, 0, y), src.At(0, 0, y), target.At(0, 0, y), target.size.width); });
}
