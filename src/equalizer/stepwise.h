// The band decomposition with every step done by itself, and every image left as the step before left it. For planes
// whose width or height is at most 32: there a level comes down to one sample, a resize is refused, and what its target
// held goes into the result.
#pragma once

#include "equalizer/plan.h"

class Progress;

// As EqualizeIT, for a plane of any size and levels that are admitted. progress may be null; gets the levels' taps.
// Throws NO_MEMORY_ERROR, and Cancelled.
void equalizeStepwise(KivImage& image, const Levels& levels, const float* gains, float baseGain, Progress* progress);
