// The hot lines of colour conversion, one body per processor row like the primitives.
//
// A line is width samples; nothing beside them is read or written. dst may be any of the inputs.
#pragma once

#include "primitives/rows.h"

// How the lightness of a pixel follows from its red, green and blue.
struct LightnessRule {
  bool decodes;      // the samples carry the gamma of IEC 61966-2-1
  float weights[3];  // of the linear samples in the luminance
};

struct ColourKernels {
  // (c0 * weights[0] + c1 * weights[1]) + c2 * weights[2]
  void (*weightedSumLine)(float* dst, const float* c0, const float* c1, const float* c2, int width,
                          const float weights[3]);
  void (*lightnessLine)(float* dst, const float* r, const float* g, const float* b, int width,
                        const LightnessRule& rule);
};

DECLARE_IN_EACH_ROW(extern const ColourKernels colourKernels)

// Those of the row in force.
inline const ColourKernels& colourKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(colourKernels)}); }
