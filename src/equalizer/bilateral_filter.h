// The bilateral filter: each output sample is a weighted mean of the samples in a square window, and samples whose
// value lies far from the centre's count little or nothing (Tomasi and Manduchi, ICCV 1998). Both variants visit the
// whole square of every sample.
//
// dst and src have height rows of width samples; steps are in floats. window is the half-width of the square. padding
// says what lies beyond the image: 1 the edge samples, repeated; 2 reflections, with the edge sample twice at the left,
// the right and the bottom, and about the first row itself at the top. Any other padding ends the process: it is a
// constant of the calling code. dst may equal src.
//
// Throws NO_MEMORY_ERROR, before anything is written, when width or height + 2 * window exceeds 65535 or the padded
// copy can't be had. The result doesn't depend on the number of threads.
#pragma once

#include <cstddef>

#include "primitives/primitives.h"

class Progress;

// Gaussian in distance by Gaussian in value: weight = exp(-(dx^2 + dy^2) / (2 sigma^2) - (v - c)^2 / (2 threshold^2)),
// with a fast exponential that is linear between powers of two; below exp(-87) a weight is 0. sigma is in samples,
// threshold in units of the sample values; neither may be 0.
void Bilateral_std(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                   unsigned short window, float sigma, float threshold, unsigned char padding);

// A plane's first sample and its row step in floats.
template <typename Sample>
struct PlaneRows {
  Sample* first;
  std::ptrdiff_t step;

  Sample* row(std::ptrdiff_t y) const { return first + y * step; }
};

// Bilateral_std with edge samples repeated, for planes that have steps of their own.
// progress, which may be null, gets a tap for each sample of a square; a run that is called off leaves dst undefined.
void bilateralStd(PlaneRows<float> dst, PlaneRows<const float> src, IppiSize size, int window, float sigma,
                  float threshold, Progress* progress);

// The memory that it takes meanwhile.
double bilateralStdBytes(IppiSize size, int window, int threads);

// Flat in distance, a trapezoid in value: weight = max(0, min(2 threshold - |v - c|, 1.5 threshold)). Rows follow each
// other without padding, in dst and src. sigma is not used.
void Bilateral_trp(float* dst, float* src, unsigned int height, unsigned int width, unsigned short window, float sigma,
                   float threshold, unsigned char padding);

// Variant 0: Bilateral_std; 2: Bilateral_trp, which doesn't use step; any other does nothing.
void BilateralFilterKiv(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                        unsigned short window, float sigma, float threshold, unsigned char variant,
                        unsigned char padding);

// The factors of the exponent, -1 / ((s + s) * s) in single precision: for the spatial and the range term alike.
inline float bilateralCoefficient(float s) { return -1.0F / ((s + s) * s); }
