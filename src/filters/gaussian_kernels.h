// A Gaussian on a strip of a plane's columns, one body per processor row like the primitives.
#pragma once

#include <cstddef>
#include <cstdint>

#include "primitives/rows.h"

// Columns of a plane, from top to bottom. Steps are in bytes; dst is apart from the plane.
struct GaussianStrip {
  const float* src;
  std::ptrdiff_t srcStep;
  float* dst;
  std::ptrdiff_t dstStep;
  int width;
  int height;
  int before;  // columns that the plane has to its left
  int behind;  // and to its right
};

struct GaussianKernels {
  // The first reach + 1 taps of 2 * reach + 1, the last of them the centre's, of standard deviation sigma, which is
  // above 0; their whole adds up to 1.
  void (*makeTaps)(float* taps, std::int64_t reach, float sigma);
  // The bits that ippiFilterGaussian_32f_C1R_L gives the strip within its plane, whose edge samples repeat. scratch is
  // aligned to 64 bytes.
  void (*filterStrip)(const GaussianStrip& strip, const float* taps, std::int64_t reach, void* scratch);
  // The bytes of scratch that it needs.
  std::int64_t (*scratchBytes)(int width, std::int64_t reach);
};

DECLARE_IN_EACH_ROW(extern const GaussianKernels gaussianKernels)

// Those of the row in force.
inline const GaussianKernels& gaussianKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(gaussianKernels)}); }
