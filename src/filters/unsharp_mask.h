// High-pass and unsharp masking of a plane whose blur the caller holds already, each in one pass.
//
// dst and the inputs have height rows of width samples and the common row step strideFloats, in floats. dst may be any
// of the inputs. Exactly width samples a row are written. clamp limits to 0 to 1 and makes 0 of NaN. Rows in parallel.
#pragma once

// (a - b) + 0.5
void HighPassFilterPsAuxKiv(float* dst, float* a, float* b, int height, int width, int strideFloats);

// clamp(src + detail * amount), where detail = clamp(src - blurred) - (1 - clamp((1 - blurred) + src)). An amount of 1
// is 100 percent.
void ApplyUnsharpMaskKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats, float amount);

// The same where src - blurred is above threshold or below -threshold; elsewhere src, unclipped.
void ApplyUnsharpMaskPhotoshopKiv(float* dst, float* src, float* blurred, int height, int width, int strideFloats,
                                  float amount, float threshold);
