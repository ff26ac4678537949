// The hot lines of high-pass and unsharp masking, one body per processor row like the primitives.
//
// A line is width samples; nothing beside them is read or written. dst may be any of the inputs.
#pragma once

#include "primitives/rows.h"

struct UnsharpKernels {
  void (*highPassLine)(float* dst, const float* a, const float* b, int width);
  void (*unsharpLine)(float* dst, const float* src, const float* blurred, int width, float amount);
  void (*gatedUnsharpLine)(float* dst, const float* src, const float* blurred, int width, float amount,
                           float threshold);
};

DECLARE_IN_EACH_ROW(extern const UnsharpKernels unsharpKernels)

// Those of the row in force.
inline const UnsharpKernels& unsharpKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(unsharpKernels)}); }
