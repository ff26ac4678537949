// Local auto levels, local contrast.

#include "filters/local_auto_levels.h"

#include <algorithm>
#include <cstddef>

#include "filters/detail.h"
#include "filters/gaussian_blur.h"
#include "filters/local_contrast.h"
#include "filters/morphology.h"
#include "filters/morphology_kernels.h"
#include "image/allocate_like.h"
#include "image/parallel.h"
#include "tone/blend_kernels.h"
#include "tone/blends.h"

namespace {

constexpr int blurMultiplier = 4;

int sideOf(int radius) {
  const std::int64_t side = std::int64_t{2} * std::max(radius, 0) + 1;
  if (side > INT32_MAX) throw NO_MEMORY_ERROR();
  return static_cast<int>(side);
}

// The whole part of a radius above 0.
int wholeRadius(float radius) {
  if (radius >= 1073741824.0F) throw NO_MEMORY_ERROR();  // 2 * radius + 1 would leave 32 bits
  return static_cast<int>(radius);
}

// The smoothed local white or black point of plane 0.
KivImage localPoint(const KivImage& src, int radius, Extreme extreme) {
  KivImage point(src.size, 1);
  extremeUnderSquare(point, src, sideOf(radius), extreme, MaskPlace::anywhere);
  gaussianBlurDecimated(point, point, static_cast<float>(radius) * 0.7F, blurMultiplier);
  return point;
}

// The kernel over the width alone, with a step for each plane.
void levelPlane(const KivImage& dst, const KivImage& src, const KivImage& low, const KivImage& high) {
  const MorphologyKernels& kernels = morphologyKernels();
  eachIndex(dst.size.height, [&](int y) {
    kernels.localLevelsLine(dst.At(0, 0, y), src.At(0, 0, y), low.At(0, 0, y), high.At(0, 0, y), dst.size.width);
  });
}

// target = an overlay of the high-passes of both points, and that over the levels. All are planes of one shape.
void overlayDetail(KivImage& target, const KivImage& levels, KivImage& low, const KivImage& high, float radius) {
  const auto overlay = [&](const KivImage& base) {
    BlendModeOverlayKiv(target.planes[0], target.planes[0], base.planes[0], target.size.height, target.size.width,
                        target.stride / 4);
  };
  highPassFullStrength(target, low, radius, blurMultiplier);
  highPassFullStrength(low, high, radius, blurMultiplier);
  overlay(low);
  overlay(levels);
}

}  // namespace

void LocalAutoLevelsKiv(float* src, float* low, float* high, float* dst, int height, int strideFloats) {
  const MorphologyKernels& kernels = morphologyKernels();
  eachRow(height, strideFloats,
          [&](std::ptrdiff_t at) { kernels.localLevelsLine(dst + at, src + at, low + at, high + at, strideFloats); });
}

void localAutoLevels(KivImage& target, const KivImage& src, int radius, bool detailOverlay) {
  allocateLike(target, src);
  const KivImage high = localPoint(src, radius, Extreme::largest);
  KivImage low = localPoint(src, radius, Extreme::smallest);
  KivImage levels(src.size, 1);
  levelPlane(levels, src, low, high);
  KivImage overlaid;
  if (detailOverlay) {
    overlaid.Init(src.size, 1);
    overlayDetail(overlaid, levels, low, high, static_cast<float>(radius));
  }
  // Over the size that both have.
  const int width = std::min(target.size.width, src.size.width);
  const int height = std::min(target.size.height, src.size.height);
  target.Plane(0).ROI(0, 0, width, height).Copy(detailOverlay ? overlaid : levels);
}

void localAutoLevelsStepwise(KivImage& target, const KivImage& src, int radius, bool detailOverlay) {
  const int side = sideOf(radius);
  const int margin = std::max(radius, 0);
  const KivImage inner = src.Sub_Section(margin, margin);
  KivImage high(inner.size, src.channels);
  KivImage low(inner.size, src.channels);
  extremeUnderSquare(high, src, side, Extreme::largest, MaskPlace::insideOnly);
  extremeUnderSquare(low, src, side, Extreme::smallest, MaskPlace::insideOnly);
  const double sigma = static_cast<double>(static_cast<float>(radius) * 0.7F);
  gaussianBlurRecursive(high, high, sigma);
  gaussianBlurRecursive(low, low, sigma);

  KivImage highInner = high.Sub_Section(2, 2);
  KivImage lowInner = low.Sub_Section(2, 2);
  const KivImage srcInner = inner.Sub_Section(4, 4);
  KivImage range;
  range = highInner.Sub_Section(2, 2) - lowInner.Sub_Section(2, 2);
  range *= -1.0F;
  range += 1.0F;
  range *= srcInner;
  target = srcInner - lowInner.Sub_Section(2, 2);
  target += range;

  if (!detailOverlay) return;
  highPassHalfStrength(highInner, highInner, static_cast<float>(radius));
  highPassHalfStrength(lowInner, lowInner, static_cast<float>(radius));
  overlayBlend(target, target, highInner.Sub_Section(2, 2));
  overlayBlend(target, target, lowInner.Sub_Section(2, 2));
}

void localContrast(KivImage& target, const KivImage& src, float radius1, float amount1, float radius2, float amount2) {
  allocateLike(target, src);
  KivImage levels;
  const auto mix = [&](const KivImage& under, float amount) {
    ippiAlphaCompC_32f_C1R(levels.planes[0], levels.stride, under.planes[0], under.stride, target.planes[0],
                           target.stride, target.size, amount, 1.0F, ippAlphaOver);
  };
  if (radius1 > 0.0F) {
    localAutoLevels(levels, src, wholeRadius(radius1), true);
    mix(src, amount1);
  } else {
    target.Copy(src);
  }
  if (radius2 > 0.0F) {
    localAutoLevels(levels, target, wholeRadius(radius2), true);
    mix(target, amount2);
  }
}
