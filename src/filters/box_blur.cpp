// Box means, and the Gaussian that repeated box means approach.

#include "filters/box_blur.h"

#include <algorithm>
#include <cmath>

#include "filters/box_filter.h"
#include "image/allocate_like.h"

namespace {

// The code of the primitives, or one that they refuse.
std::uint32_t codeOf(KivImage::KivBorderType border) {
  switch (border) {
    case KivImage::KIV_BORDER_CONST:
      return ippBorderConst;
    case KivImage::KIV_BORDER_IN_MEM:
      return ippBorderInMem;
    case KivImage::KIV_BORDER_REPLICATE:
      return ippBorderRepl;
    case KivImage::KIV_BORDER_MIRROR:
      return ippBorderMirror;
  }
  return 0;
}

// passes boxes of odd sides, narrow ones first, whose variances add up to about that of the Gaussian.
struct BoxPasses {
  std::int64_t narrow;  // side
  int narrowPasses;
  int passes;

  std::int64_t side(int pass) const { return pass < narrowPasses ? narrow : narrow + 2; }
};

// The side w of n equal boxes with the Gaussian's variance solves n (w^2 - 1) / 12 = sigma^2. Where it is no odd
// number, the boxes are shared out between the odd numbers about it.
BoxPasses boxPassesFor(float sigma, int passes) {
  const float twelveVariances = 12.0F * (sigma * sigma);
  const auto n = static_cast<float>(passes);
  const float lower = std::floor(std::sqrt(twelveVariances / n + 1.0F));
  if (!(lower < 2147483648.0F)) throw NO_MEMORY_ERROR();
  auto narrow = static_cast<std::int64_t>(lower);
  if (narrow % 2 == 0) --narrow;
  const auto w = static_cast<float>(narrow);
  const float numerator = twelveVariances - 3.0F * n - n * (w * w) - 4.0F * n * w;
  const double narrowPasses = std::round(double{numerator} / (-4.0 * double{w} - 4.0));
  // The bounds hold but for rounding at sides beyond any image's.
  return {narrow, static_cast<int>(std::clamp(narrowPasses, 0.0, static_cast<double>(passes))), passes};
}

}  // namespace

void boxBlur(KivImage& target, const KivImage& src, int radius) {
  allocateLike(target, src);
  BoxFilter(target.size, boxSide(radius)).runOnThreads(src, target, src.channels);
}

void boxBlurWithBorder(KivImage& target, const KivImage& src, int radius, KivImage::KivBorderType border,
                       float borderValue, bool divideByArea) {
  allocateLike(target, src);
  const std::int64_t side = boxSide(radius);
  const std::uint32_t code = codeOf(border);
  if (side < 1 || code == 0) return;
  BoxFilter(target.size, side, code, borderValue).runOnThreads(src, target, src.channels);
  if (divideByArea) target /= static_cast<float>(side * side);
}

void gaussianBlurByBoxes(KivImage& target, const KivImage& src, float sigma, int passes) {
  allocateLike(target, src);
  if (passes < 1 || std::isnan(sigma)) return;
  const BoxPasses boxes = boxPassesFor(sigma, passes);
  for (int pass = 0; pass < passes; ++pass) {
    BoxFilter(target.size, boxes.side(pass)).run(pass == 0 ? src : target, target, target.channels);
  }
}
