// The hot lines of tone and blending, one body per processor row like the primitives.
//
// A line is width samples; nothing beside them is read or written. dst may be any of the inputs.
#pragma once

#include "primitives/rows.h"

// A logistic curve through (low, low) and (low + range, low + range), as the fused kernel computes it.
struct SigmoidalLine {
  float minusSlope;
  float bottom;  // the logistic's value at low
  float scale;   // 1 / (its rise from low to low + range)
  float range;
  float low;
};

struct TonalWeights {
  float shadows, midtones, highlights;
};

struct ToneKernels {
  // e to the power of x: the exponential primitive's, for one number.
  float (*exponential)(float x);

  void (*sigmoidalLine)(float* dst, const float* src, int width, const SigmoidalLine& curve);

  void (*overlayLine)(float* dst, const float* top, const float* base, int width);
  void (*linearBurnLine)(float* dst, const float* a, const float* b, int width);
  void (*linearDodgeLine)(float* dst, const float* a, const float* b, int width);
  void (*mergeGrainLine)(float* dst, const float* a, const float* b, int width);
  // centre is the result where a equals b.
  void (*linearLightLine)(float* dst, const float* a, const float* b, int width, float centre);
  void (*tonalMaskLine)(float* dst, const float* base, const float* filtered, int width, const TonalWeights& weights);
};

DECLARE_IN_EACH_ROW(extern const ToneKernels toneKernels)

// Those of the row in force.
inline const ToneKernels& toneKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(toneKernels)}); }
