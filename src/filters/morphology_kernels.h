// The hot loops of dilation, erosion and local levels, one body per processor row like the primitives.
#pragma once

#include <cstddef>

#include "primitives/rows.h"

// A running extreme down columns: output row y is the extreme of source rows y - anchor to y - anchor + window - 1, as
// far as they exist. Steps are in floats.
struct ColumnExtreme {
  const float* src;
  std::ptrdiff_t srcStep;
  int srcRows;
  float* dst;
  std::ptrdiff_t dstStep;
  int dstRows;
  int columns;  // at most stripColumns
  int window;
  int anchor;
  float* suffixes;  // scratch of window * stripColumns floats
};

constexpr int stripColumns = 64;

struct MorphologyKernels {
  // Largest or smallest; NaN samples don't count. Where none counts: minus or plus infinity.
  void (*largestDown)(const ColumnExtreme& work);
  void (*smallestDown)(const ColumnExtreme& work);
  // soFar = the larger or smaller of soFar and samples; a NaN sample doesn't count.
  void (*largerLine)(float* soFar, const float* samples, int width);
  void (*smallerLine)(float* soFar, const float* samples, int width);
  // d = high - low, t = 1 - d, dst = t * src + (src - low).
  void (*localLevelsLine)(float* dst, const float* src, const float* low, const float* high, int width);
};

DECLARE_IN_EACH_ROW(extern const MorphologyKernels morphologyKernels)

// Those of the row in force.
inline const MorphologyKernels& morphologyKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(morphologyKernels)}); }
