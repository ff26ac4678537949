// The hot lines of the pyramid, the luminance path and the reference size, one body per processor row like the
// primitives.
#pragma once

#include "primitives/rows.h"

struct EqualizerKernels {
  // A line of a level put together again: to = rebuilt + (level - expanded) * gain. to may be any of the three.
  void (*weighBandLine)(float* to, const float* rebuilt, const float* level, const float* expanded, float gain,
                        int width);

  // d = (after - before) * strength is added to each of c0, c1, c2.
  void (*addChangeLine)(float* c0, float* c1, float* c2, const float* before, const float* after, float strength,
                        int width);

  // to = from * weight, and to + from * weight.
  void (*weightLine)(float* to, const float* from, float weight, int width);
  void (*addWeightedLine)(float* to, const float* from, float weight, int width);

  // to = before * gain + (upper + (lower - upper) * share). to may be before.
  void (*addBetweenLine)(float* to, const float* before, float gain, const float* upper, const float* lower,
                         float share, int width);

  // to = before * (gain + a) + b, a and b lying between two lines each, as above. to may be before.
  void (*addGuidedLine)(float* to, const float* before, float gain, const float* upperB, const float* lowerB,
                        const float* upperA, const float* lowerA, float share, int width);

  // Adds after - before = d to each of c0, c1, c2, held back by the room r that they leave in its direction, that is by
  // how far all three are from white, or from black: d r / (r^4 + d^4)^(1/4), and nothing where there is none. So no
  // colour is driven beyond black or white, what is far from there changes as it would, and the three change by one
  // amount. Where count is 1, c0 alone.
  void (*addLimitedLine)(float* c0, float* c1, float* c2, const float* before, const float* after, int count,
                         int width);
};

DECLARE_IN_EACH_ROW(extern const EqualizerKernels equalizerKernels)

// Those of the row in force.
inline const EqualizerKernels& equalizerKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(equalizerKernels)}); }
