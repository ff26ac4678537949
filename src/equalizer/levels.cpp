#include "equalizer/levels.h"

#include <cmath>

#include "equalizer/bilateral_filter.h"
#include "filters/gaussian_blur.h"

namespace {

constexpr float largestWindow = 65535.0F;
constexpr std::int64_t largestSide = 65535;

int halved(int length) { return static_cast<int>(std::ceil(static_cast<float>(length) * 0.5F)); }

LowPass lowPassOf(float radius, float threshold, bool keepEdges) {
  if (!(radius > 0.0F)) return LowPass::none;
  if (!keepEdges) return LowPass::gaussian;
  const bool defined = threshold != 0.0F && std::isfinite(bilateralCoefficient(radius)) &&
                       std::isfinite(bilateralCoefficient(threshold));
  return defined ? LowPass::bilateral : LowPass::none;
}

void checkWindow(const Level& level) {
  if (level.lowPass != LowPass::bilateral) return;
  if (!(std::ceil(lowPassReach * level.radius) <= largestWindow)) throw NO_MEMORY_ERROR();
  const std::int64_t padding = std::int64_t{2} * level.window();
  if (level.size.width + padding > largestSide || level.size.height + padding > largestSide) throw NO_MEMORY_ERROR();
}

}  // namespace

int Level::window() const { return static_cast<int>(std::ceil(lowPassReach * radius)); }

IppiSize halved(IppiSize size) { return {halved(size.width), halved(size.height)}; }

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

void applyLowPass(KivImage& to, const KivImage& from, const Level& level) {
  switch (level.lowPass) {
    case LowPass::none:
      to.Copy(from);
      break;
    case LowPass::gaussian:
      gaussianBlurFast(to, from, level.radius, lowPassReach);
      break;
    case LowPass::bilateral:
      bilateralStd({to.planes[0], to.stride / 4}, {from.planes[0], from.stride / 4}, level.size, level.window(),
                   level.radius, level.threshold);
      break;
  }
}
