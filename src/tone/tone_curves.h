// A tone curve in one pass over a plane.
#pragma once

// dst = ((1 / (1 + exp(-slope * x)) - lo) * (1 / (hi - lo))) * (high - low) + low, with lo and hi the logistic at low
// and at high: the curve of KivImage::SigmoidalCurve2 through (low, low) and (high, high), within 1e-6 of it for slopes
// from 0.5 to 60. The pixels' exponential is a polynomial good to some 22 bits, 0 or infinity where its argument lies
// at or beyond 87.3. Where hi equals lo (slope 0, low = high), the result is not a number.
//
// dst and src have height rows of width samples and the common row step strideFloats, in floats; they may be the same.
// Exactly width samples a row are written. Rows in parallel.
void ApplySigmoidalCurveKiv(float* dst, float* src, int height, int width, int strideFloats, float slope, float low,
                            float high);
