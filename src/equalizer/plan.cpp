#include "equalizer/plan.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "equalizer/bilateral_filter.h"

namespace {

constexpr std::int64_t largestSide = 65535;

int halved(int length) { return static_cast<int>(std::ceil(static_cast<float>(length) * 0.5F)); }

float reachOf(float radius) { return std::ceil(lowPassReach * radius); }

LowPass lowPassOf(float radius, float threshold, bool keepEdges) {
  if (!(radius > 0.0F)) return LowPass::none;
  if (!keepEdges) return LowPass::gaussian;
  const bool defined = threshold != 0.0F && std::isfinite(bilateralCoefficient(radius)) &&
                       std::isfinite(bilateralCoefficient(threshold));
  return defined ? LowPass::bilateral : LowPass::none;
}

// The largest half-width of a square that a level has room for.
std::int64_t roomFor(IppiSize size) {
  return std::max<std::int64_t>(0, (largestSide - std::max(size.width, size.height)) / 2);
}

bool isRefused(const Level& level) {
  return level.lowPass == LowPass::bilateral && !(reachOf(level.radius) <= static_cast<float>(roomFor(level.size)));
}

}  // namespace

int Level::window() const { return static_cast<int>(reachOf(radius)); }

double Level::taps() const {
  if (lowPass == LowPass::none) return 0;
  if (lowPass == LowPass::wavelet) return 25.0 * size.width * size.height;
  const double side = 2.0 * static_cast<double>(reachOf(radius)) + 1.0;
  const double taps = lowPass == LowPass::bilateral ? side * side : 2.0 * side;
  return taps * size.width * size.height;
}

IppiSize halved(IppiSize size) { return {halved(size.width), halved(size.height)}; }

double Plan::taps(int planes) const {
  double sum = 0;
  for (const Level& level : levels) sum += planes * level.taps();
  return sum;
}

Plan planRun(IppiSize size, const float* radii, const float* thresholds, const bool* edges) {
  // Read as bytes: a caller's byte may hold more than 0 and 1, and only 1 counts.
  const auto* const edgeBytes = reinterpret_cast<const unsigned char*>(edges);
  Plan plan{};
  plan.refused = levelCount;
  for (int i = 0; i < levelCount; ++i) {
    Level& level = plan.levels[static_cast<std::size_t>(i)];
    const bool keepsEdges = edgeBytes[i] == 1;
    level = {size, lowPassOf(radii[i], thresholds[i], keepsEdges), radii[i], thresholds[i], keepsEdges, 0};
    if (plan.isAdmitted() && isRefused(level)) {
      plan.refused = i;
      plan.largestRadius = static_cast<double>(roomFor(size)) / lowPassReach;
    }
    size = halved(size);
  }
  return plan;
}

Plan planWavelets(IppiSize size, const float* radii, const float* thresholds, const bool* edges) {
  constexpr double radiusOfSpacing = 3;
  const double longest = std::max(size.width, size.height);  // taps beyond the edges all see the same samples
  Plan plan{};
  plan.form = Form::wavelets;
  plan.refused = levelCount;
  for (int i = 0; i < levelCount; ++i) {
    const double spacing = std::round(std::ldexp(radii[i] / radiusOfSpacing, i));
    const bool blurs = radii[i] > 0 && (!edges[i] || thresholds[i] > 0);
    plan.levels[static_cast<std::size_t>(i)] = {
        size,     blurs ? LowPass::wavelet : LowPass::none,
        radii[i], thresholds[i],
        edges[i], blurs ? static_cast<int>(std::clamp(spacing, 1.0, longest)) : 0};
  }
  return plan;
}

ScaledParameters::ScaledParameters(const OrbelBandEqualizerGuiParams& gui) : baseGain(gui.factor * 0.01F) {
  for (int i = 0; i < levelCount; ++i) {
    gains[i] = gui.contrast[i] * 0.01F;
    radii[i] = gui.radius[i];
    thresholds[i] = gui.threshold[i] * (1.0F / 255.0F);
    edges[i] = gui.edge[i] == 1;
  }
}
