// A Gaussian on plane 0, in strips of columns.
#pragma once

#include <functional>

#include "image/kiv_image.h"

// Told, on any thread, of parts of the work that are done, which add up to 1. True leaves out what hasn't begun.
using IsCalledOff = std::function<bool(double done)>;

// Plane 0 of dst = plane 0 of src under a Gaussian of standard deviation sigma that reaches gaussianReach(sigma,
// multiplier) samples, over src's size; edge samples repeat. The bits are those of ippiFilterGaussian_32f_C1R_L. src
// and dst are different pixels. A sigma not above 0, or whose kernel is refused there, leaves dst as it was.
// isCalledOff may be empty. Throws NO_MEMORY_ERROR before any work.
void blurInStrips(const KivImage& src, KivImage& dst, float sigma, int multiplier, const IsCalledOff& isCalledOff);

// The memory that it takes meanwhile.
double blurInStripsBytes(IppiSize size, float sigma, int multiplier, int threads);
