// A level's low-pass, whichever the plan names.
#pragma once

#include "equalizer/plan.h"
#include "image/kiv_image.h"

class Progress;

// to = the level's low-pass of from. Both have the level's size, one plane, and samples of their own. progress may be
// null. Throws NO_MEMORY_ERROR, and Cancelled.
void applyLowPass(KivImage& to, const KivImage& from, const Level& level, Progress* progress);

// The memory that it takes meanwhile.
double lowPassBytes(const Level& level, int threads);
