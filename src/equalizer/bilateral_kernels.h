// The bilateral filter's kernels over a padded block, one body per processor row like the primitives.
//
// window is the half-width of the square; top addresses the first sample of the block row that holds the upper edge of
// the first output's square, blockStep is the block's row step in floats. The first output of a line has its square at
// the block's first column.
#pragma once

#include <cstddef>
#include <cstdint>

#include "primitives/rows.h"

// Beyond it lines are taken singly: the rows in work would be tens of megabytes a thread.
constexpr int largestPairWindow = 300;

struct GaussianFactors {
  float ks;  // of the squared distance in space
  float kr;  // of the squared distance in value
};

struct BilateralKernels {
  // One line of outputs.
  void (*stdLine)(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                  int width);
  void (*trpLine)(const float* top, std::ptrdiff_t blockStep, int window, float reach, float flat, float* dst,
                  int width);

  // A run of lines of columns outputs each, all of them before the last width mod 4: the same bits as stdLine gives.
  // A call takes in one row of the block, 0 to rows + 2 * window - 1; all of them in turn, with one scratch, make the
  // run. columns is a multiple of 4, window at most largestPairWindow; scratch is aligned to 64 bytes.
  void (*stdRows)(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                  std::ptrdiff_t dstStep, int columns, int rows, int blockRow, float* scratch);
  // The floats of scratch that it needs.
  std::int64_t (*stdRowsScratch)(int columns, int window);
  // Whether it is the faster form.
  bool (*stdRowsPays)(int columns, int rows, int window);
};

DECLARE_IN_EACH_ROW(extern const BilateralKernels bilateralKernels)

// Those of the row in force.
inline const BilateralKernels& bilateralKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(bilateralKernels)}); }
