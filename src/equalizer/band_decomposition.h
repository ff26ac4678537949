// The heart of the system: an image apart into five detail bands and a residual, each weighed, and together again.
#pragma once

#include "image/kiv_image.h"

constexpr int levelCount = 5;

// Works in place on image (one plane); the argument before it is the same object and isn't used, nor is the number of
// levels, which is always five.
//
// With C(0) the image, for level i from 0 to 4, each level half the size of the one before, rounded up:
//   L(i) = low-pass of C(i), C(i + 1) = L(i) at half size, U(i) = C(i + 1) at the size of C(i),
//   D(i) = gains[i] * (C(i) - U(i)),
// and from R(5) = baseGain * C(5) back: R(i) = R(i + 1) at the size of D(i), plus D(i). The image becomes R(0).
// Sizes change by KivImage::Resize. Where a level is one sample wide or high, Resize refuses and the steps go on with
// what their target held. At gains of 1 the image comes back, up to rounding.
//
// radii[i] is the standard deviation of the low-pass in samples of level i. edges[i] a byte of exactly 1: bilateral
// filter with range deviation thresholds[i], in units of the samples, and a window of ceil(4 * radii[i]); else a
// Gaussian reaching as far. A radius that isn't above 0, and with the bilateral filter a threshold of 0 or NaN or a
// coefficient that isn't finite, make the low-pass the level image itself.
//
// Throws NO_MEMORY_ERROR, before any work when a bilateral window exceeds 65535 or a padded level 65535 samples a side;
// else the image may hold intermediate values. All five entries of each array are read. The result doesn't depend on
// the number of threads.
void EqualizeIT(KivImage& sameImage, KivImage& image, float* gains, float* radii, float* thresholds, bool* edges,
                int levels, float baseGain);
