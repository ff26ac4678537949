// What a run will do at each level, what it asks for, and what it would be refused for: known beforehand, and what the
// run itself goes by.
#pragma once

#include <array>

#include "equalizer/band_decomposition.h"
#include "equalizer/band_equalizer.h"

// Both low-passes reach so many standard deviations.
constexpr int lowPassReach = 4;

// How planes are taken apart: by the plug-in's pyramid, or by edge-avoiding wavelets, without halving.
enum class Form { pyramid, wavelets };

enum class LowPass { none, gaussian, bilateral, wavelet };

struct Level {
  IppiSize size;
  LowPass lowPass;
  float radius;
  float threshold;
  bool keepsEdges;
  int spacing;  // of the taps of a wavelet's low-pass; 0 for others

  // The half-width of the bilateral filter's square; of a level that is admitted.
  int window() const;

  // The samples that the low-pass visits: w * w a sample of the level for the bilateral filter and 2 * w for a
  // Gaussian, w = 2 * ceil(4 * radius) + 1; 25 for a wavelet's.
  double taps() const;
};

using Levels = std::array<Level, levelCount>;

// Half the size, rounded up.
IppiSize halved(IppiSize size);

struct Plan {
  Form form;
  Levels levels;

  // The first level that the bilateral filter has no room for: its window, or the level with its window on either side,
  // exceeds 65535 samples. levelCount where there is none.
  int refused;

  // The largest radius that the refused level has room for.
  double largestRadius;

  bool isAdmitted() const { return refused == levelCount; }

  // Of the low-passes of so many planes.
  double taps(int planes) const;
};

// radii, thresholds and edges as in EqualizeIT, which throws NO_MEMORY_ERROR for a plan that isn't admitted.
Plan planRun(IppiSize size, const float* radii, const float* thresholds, const bool* edges);

// By wavelets: every level has the planes' size, and the taps of level i lie 2^i * radius / 3 apart, to the next whole
// sample and at least one, so that a radius of 3 gives the distances 1, 2, 4, 8 and 16. Always admitted.
Plan planWavelets(IppiSize size, const float* radii, const float* thresholds, const bool* edges);

// The user's parameters as EqualizeIT takes them.
struct ScaledParameters {
  float gains[levelCount];
  float radii[levelCount];
  float thresholds[levelCount];
  bool edges[levelCount];
  float baseGain;

  explicit ScaledParameters(const OrbelBandEqualizerGuiParams& gui);
  Plan planFor(IppiSize size) const { return planRun(size, radii, thresholds, edges); }
};
