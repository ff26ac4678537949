// The Gaussians of plane 0.

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

#include "filters/gaussian_bands.h"
#include "filters/gaussian_blur.h"
#include "filters/gaussian_strips.h"
#include "image/allocate_like.h"
#include "image/parallel.h"

namespace {

void blurOnFourThreads(const KivImage& src, KivImage& dst, float sigma, int multiplier) {
  const Team team(4);
  blurInStrips(src, dst, sigma, multiplier, {});
}

// Whether plane 0 of both may share samples. True also where the rows of one lie between those of the other.
bool mayOverlap(const KivImage& a, const KivImage& b) {
  const std::less_equal<> notBehind;
  return !notBehind(a.At(0, 0, a.size.height), b.planes[0]) && !notBehind(b.At(0, 0, b.size.height), a.planes[0]);
}

// The value that all samples of plane 0 have, if they do. Where they are zeros of both signs, it is +0: what they add
// up to.
std::optional<float> onlyValueOf(const KivImage& image) {
  float value = *image.At(0, 0, 0);
  for (int y = 0; y < image.size.height; ++y) {
    const float* const row = image.At(0, 0, y);
    for (int x = 0; x < image.size.width; ++x) {
      if (row[x] != value && !(std::isnan(row[x]) && std::isnan(value))) return std::nullopt;
      if (value == 0.0F) value += row[x];
    }
  }
  return value;
}

// dst, over that size, = one sample of that value, blurred: each would go through the same sums.
void blurOnlyValue(float value, const KivImage& dst, IppiSize size, float sigma, int multiplier) {
  const KivImage sample(&value, {1, 1}, 1);
  KivImage blurred(1, 1, 1);
  blurOnFourThreads(sample, blurred, sigma, multiplier);
  for (int y = 0; y < size.height; ++y) std::fill_n(dst.At(0, 0, y), size.width, *blurred.At(0, 0, 0));
}

// As blurOnFourThreads, and for a dst on src's own samples too: strips read columns that others have written by then.
void blurPlane0(const KivImage& src, KivImage& dst, float sigma, int multiplier) {
  const int reach = sigma > 0.0F ? gaussianReach(sigma, multiplier) : 0;
  if (reach < 1) return;
  // Kernels that reach beyond the picture come with extremes over wide squares, which are the same everywhere: such a
  // kernel's length then counts once, not for every sample.
  if (reach >= std::max(src.size.width, src.size.height)) {
    if (const auto value = onlyValueOf(src)) return blurOnlyValue(*value, dst, src.size, sigma, multiplier);
  }
  if (!mayOverlap(src, dst)) return blurOnFourThreads(src, dst, sigma, multiplier);
  KivImage blurred(src.size, 1);
  blurOnFourThreads(src, blurred, sigma, multiplier);
  ippiCopy_32f_C1R(blurred.planes[0], blurred.stride, dst.planes[0], dst.stride, src.size);
}

}  // namespace

void gaussianBlurFast(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier) {
  allocateLike(target, src);
  blurOnFourThreads(src, target, sigma, kernelMultiplier);
}

void gaussianBlurDecimated(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier) {
  allocateLike(target, src);
  constexpr float smallSigma = 3.0F;
  constexpr int smallSide = 400;
  int decimation = 1;
  for (int side = std::min(src.size.width, src.size.height); sigma > smallSigma && side > smallSide; side /= 2) {
    sigma *= 0.5F;
    decimation *= 2;
  }
  if (decimation == 1) return blurPlane0(src, target, sigma, kernelMultiplier);

  KivImage shared = src.ROI(0, 0, src.size.width, src.size.height);  // the planes that the target has too
  shared.channels = std::min(target.channels, src.channels);
  KivImage reduced;
  reduced.Resize(shared, src.size.width / decimation, src.size.height / decimation);
  blurPlane0(reduced, reduced, sigma, kernelMultiplier);
  target.Resize(reduced, src.size);
}
