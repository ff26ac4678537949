// A change of planes at the working size, as a guided filter's coefficients (He, Sun and Tang, Guided image filtering,
// 2013; worked out at a small size and brought to a large one: He and Sun, Fast guided filter, 2015).
//
// In each square of 3 x 3 samples the change c is brought into the form a * p + b of the plane p by least squares:
// a = cov(c, p) / (var(p) + epsilon), b = mean(c) - a * mean(p). Where a and b, which are smooth, come back to the
// picture's size, a * Y + b has the picture's own edges, sharp as they are. epsilon, 0.01 squared, is the contrast
// from which on a square counts as one with an edge in it.
#pragma once

#include "image/kiv_image.h"

// Both have one size and number of planes. Gives the planes of b, and then those of a. Throws NO_MEMORY_ERROR.
KivImage guidedChange(const KivImage& change, const KivImage& planes);

// Of memory that it takes and gives.
double guidedChangeBytes(IppiSize size, int planes, int threads);
