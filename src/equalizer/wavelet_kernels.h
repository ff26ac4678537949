// The hot line of the edge-avoiding wavelets, one body per processor row like the primitives.
#pragma once

#include "primitives/rows.h"

struct WaveletKernels {
  // A line under the B3 spline (1, 4, 6, 4, 1) / 16 both ways, its taps spacing apart, each weighed by how near it is
  // to the sample in the middle: q + sum(w (p - q)) / sum(w), w being the spline's weight over 1 + steepness (p - q)^2.
  // rows are the five lines, at the first sample; 2 * spacing samples before and behind them are read.
  void (*smoothLine)(float* to, const float* const* rows, int spacing, float steepness, int width);
};

DECLARE_IN_EACH_ROW(extern const WaveletKernels waveletKernels)

// Those of the row in force.
inline const WaveletKernels& waveletKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(waveletKernels)}); }
