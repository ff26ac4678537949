// EqualizeIT. All levels live in the top-left corners of three full-size images: the one passed in, which serves as
// scratch until it receives the result, lowpass and current.

#include "equalizer/band_decomposition.h"

#include <array>
#include <cmath>

#include "equalizer/bilateral_filter.h"

namespace {

enum class LowPass { none, gaussian, bilateral };

constexpr int gaussianFactor = 4;  // both low-passes reach four standard deviations
constexpr float largestWindow = 65535.0F;
constexpr std::int64_t largestSide = 65535;

struct Level {
  IppiSize size;
  LowPass lowPass;
  float radius;
  float threshold;

  int window() const { return static_cast<int>(std::ceil(4.0F * radius)); }
};

using Levels = std::array<Level, levelCount>;

int halved(int length) { return static_cast<int>(std::ceil(static_cast<float>(length) * 0.5F)); }

IppiSize halved(IppiSize size) { return {halved(size.width), halved(size.height)}; }

LowPass lowPassOf(float radius, float threshold, bool keepEdges) {
  if (!(radius > 0.0F)) return LowPass::none;
  if (!keepEdges) return LowPass::gaussian;
  const bool defined = threshold != 0.0F && std::isfinite(bilateralCoefficient(radius)) &&
                       std::isfinite(bilateralCoefficient(threshold));
  return defined ? LowPass::bilateral : LowPass::none;
}

void checkWindow(const Level& level) {
  if (level.lowPass != LowPass::bilateral) return;
  if (!(std::ceil(4.0F * level.radius) <= largestWindow)) throw NO_MEMORY_ERROR();
  const std::int64_t padding = std::int64_t{2} * level.window();
  if (level.size.width + padding > largestSide || level.size.height + padding > largestSide) throw NO_MEMORY_ERROR();
}

Levels planLevels(IppiSize size, const float* radii, const float* thresholds, const bool* edges) {
  // Read as bytes: a caller's byte may hold more than 0 and 1, and only 1 counts.
  const auto* const edgeBytes = reinterpret_cast<const unsigned char*>(edges);
  Levels levels{};
  for (std::size_t i = 0; i < levels.size(); ++i) {
    levels[i] = {size, lowPassOf(radii[i], thresholds[i], edgeBytes[i] == 1), radii[i], thresholds[i]};
    checkWindow(levels[i]);
    size = halved(size);
  }
  return levels;
}

// The view of an image's top-left corner that a level works in.
KivImage corner(const KivImage& image, IppiSize size) { return image.ROI(0, 0, size.width, size.height); }

void copyCorner(KivImage& to, const KivImage& from, IppiSize size) { corner(to, size).Copy(corner(from, size)); }

void resizeCorner(KivImage& to, IppiSize toSize, const KivImage& from, IppiSize fromSize) {
  corner(to, toSize).Resize(corner(from, fromSize), toSize);
}

void applyLowPass(KivImage& lowpass, const KivImage& current, const Level& level) {
  KivImage to = corner(lowpass, level.size);
  const KivImage from = corner(current, level.size);
  switch (level.lowPass) {
    case LowPass::none:
      to.Copy(from);
      break;
    case LowPass::gaussian:
      to.GaussBlurFast(from, level.radius, gaussianFactor);
      break;
    case LowPass::bilateral:
      // Both images are owners of one size, and so of one step.
      BilateralFilterKiv(to.planes[0], from.planes[0], static_cast<unsigned int>(level.size.height),
                         static_cast<unsigned int>(level.size.width), static_cast<unsigned int>(current.stride / 4),
                         static_cast<unsigned short>(level.window()), level.radius, level.threshold, 0, 1);
      break;
  }
}

}  // namespace

void EqualizeIT(KivImage&, KivImage& image, float* gains, float* radii, float* thresholds, bool* edges, int,
                float baseGain) {
  const Levels levels = planLevels(image.size, radii, thresholds, edges);
  const IppiSize residualSize = halved(levels.back().size);

  KivImage lowpass(image.size, 1);
  KivImage current(image.size, 1);
  std::array<KivImage, levelCount> bands;
  current.Copy(image);

  for (std::size_t i = 0; i < levels.size(); ++i) {
    const IppiSize size = levels[i].size;
    const IppiSize half = halved(size);
    bands[i].Init(size, 1);
    applyLowPass(lowpass, current, levels[i]);
    resizeCorner(image, half, lowpass, size);
    copyCorner(lowpass, image, half);
    resizeCorner(image, size, lowpass, half);
    bands[i] = corner(current, size) - image;
    bands[i] *= gains[i];
    copyCorner(current, lowpass, half);
  }

  if (baseGain != 1.0F) corner(current, residualSize) *= baseGain;

  resizeCorner(image, levels.back().size, current, residualSize);
  corner(image, levels.back().size) += bands.back();
  for (std::size_t i = levels.size() - 1; i-- > 0;) {
    const IppiSize size = levels[i].size;
    // The two images take turns: a resize never has one image as source and target.
    resizeCorner(current, size, image, levels[i + 1].size);
    corner(image, size) = corner(current, size) + bands[i];
  }
}
