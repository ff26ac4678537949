// A change of planes at the working size, as a guided filter's coefficients (He, Sun and Tang, Guided image filtering,
// 2013; worked out at a small size and brought to a large one: He and Sun, Fast guided filter, 2015).
//
// In each square of 3 x 3 samples the change c is brought into the form a * p + b of the plane p by least squares:
// a = cov(c, p) / (var(p) + epsilon), b = mean(c) - a * mean(p). Where a and b come back to the picture's size by
// bilinear interpolation, a * Y + b has the picture's own edges, sharp as they are. epsilon, 0.001, is the variance
// from which on a square counts as one with an edge in it.
//
// The look has to be that of the small size all the same: the large result reduced is to be the small one.
// Interpolating and reducing softens b, by a kernel (q, 1 - 2 q, q) each way, q being 1/8 for large pictures and less
// for those hardly larger than the working size; so b is made up for it, by five rounds of b += c - (soft(a) * p +
// soft(b)).
#pragma once

#include "image/kiv_image.h"

// Both have one size and number of planes; the picture is larger. Gives the planes of b, and then those of a. Throws
// NO_MEMORY_ERROR, std::bad_alloc.
KivImage guidedChange(const KivImage& change, const KivImage& planes, IppiSize picture);

// Of memory that it takes and gives.
double guidedChangeBytes(IppiSize size, int planes, int threads);
