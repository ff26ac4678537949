// A Gaussian on plane 0 in horizontal bands, on four threads, and the size of a Gaussian's kernel.
#pragma once

#include "image/kiv_image.h"

// The samples that a kernel reaches on each side: multiplier times sigma, a product in single precision, rounded up.
// Below 1 where no primitive serves the kernel (NaN included); a reach whose kernel has no size throws NO_MEMORY_ERROR.
int gaussianReach(float sigma, int multiplier);

// Plane 0 of dst = plane 0 of src, its edge samples repeated, under a Gaussian of standard deviation sigma that reaches
// gaussianReach(sigma, multiplier) samples. Bands read their real neighbour rows, so that the result is that of one
// filter call; src and dst are different pixels for that reason. A sigma not above 0 leaves dst as it was.
void blurInBands(const KivImage& src, KivImage& dst, float sigma, int multiplier);
