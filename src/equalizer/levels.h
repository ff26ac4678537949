// What the parameters ask of each level of the band decomposition.
#pragma once

#include <array>

#include "equalizer/band_decomposition.h"

// Both low-passes reach so many standard deviations.
constexpr int lowPassReach = 4;

enum class LowPass { none, gaussian, bilateral };

struct Level {
  IppiSize size;
  LowPass lowPass;
  float radius;
  float threshold;

  int window() const;  // of the bilateral filter
};

using Levels = std::array<Level, levelCount>;

// Half the size, rounded up.
IppiSize halved(IppiSize size);

// Throws NO_MEMORY_ERROR for a window or a padded level that the bilateral filter has no room for.
Levels planLevels(IppiSize size, const float* radii, const float* thresholds, const bool* edges);

// to = the level's low-pass of from. Both have the level's size, one plane, and samples of their own.
void applyLowPass(KivImage& to, const KivImage& from, const Level& level);
