// KivImage: what a Gaussian blur takes away, as a layer around grey 0.5.

#include <algorithm>

#include "filters/unsharp_kernels.h"
#include "image/kiv_image.h"

namespace {

// GaussBlurDecimate, or plane 0 of the source itself where that would leave its target as it was.
void blurOrCopy(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier) {
  if (sigma > 0.0F && kernelMultiplier > 0) {
    target.GaussBlurDecimate(src, sigma, kernelMultiplier);
  } else {
    target.Plane(0).Copy(src.Plane(0));
  }
}

}  // namespace

void KivImage::HighPassFilter(const KivImage& src, float sigma, bool) {
  constexpr int kernelMultiplier = 4;
  allocateLike(src);
  KivImage shared = ROI(0, 0, size.width, size.height);  // the planes that the source has too
  shared.channels = std::min(channels, src.channels);
  KivImage half(size, shared.channels);  // before the blur: the target may be src
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

void KivImage::HighPassPS(const KivImage& src, float sigma, int kernelMultiplier) {
  allocateLike(src);
  if (planes[0] == src.planes[0]) {
    KivImage copy;
    copy = src;
    HighPassPS(copy, sigma, kernelMultiplier);
    return;
  }
  blurOrCopy(*this, src, sigma, kernelMultiplier);
  const auto line = unsharpKernels().highPassLine;
  // Line by line, since the images' row steps may differ.
#pragma omp parallel for schedule(static)
  for (int y = 0; y < size.height; ++y) line(At(0, 0, y), src.At(0, 0, y), At(0, 0, y), size.width);
}
