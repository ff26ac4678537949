// Grey and lightness of three planes in one pass, and a matrix for KivImage::Color_Twist.
//
// dst and the inputs have height rows of width samples and the common row step, in floats. dst may be any of the
// inputs. Exactly width samples a row are written. Nothing is clipped. Rows in parallel.
#pragma once

// (p0 * weights[0] + p1 * weights[1]) + p2 * weights[2]
void ConvertColorToGrayKiv(float* dst, float* p0, float* p1, float* p2, int height, int width, int step,
                           float* weights);

// CIE lightness on a scale of 0 to 1:
//   with gammaMode 1 each sample is first decoded: c * 0.0773993805 below 0.04045, else
//   ((c + 0.055) * 0.947867274)^2.4, the power worked out in double precision and rounded once;
//   Y = (r * wr + g * wg) + b * wb, with 0.212672904, 0.715152204, 0.0721750036 for primariesMode 1, else
//   0.222504497, 0.716878593, 0.0606168993;
//   L = 116 * root(Y) - 16 where Y is above 0.008856, else 903.3 * Y; dst = L * 0.01.
// The root is Newton's for the reciprocal cube root, in single precision, off by at most 3.1e-7 of itself; dst by
// 4.5e-7 over the 2^24 colours of 8 bits (both measured).
void ExtractLChannelKiv(float* dst, float* r, float* g, float* b, int height, int width, int step, int gammaMode,
                        int primariesMode);

// From Y, U, V to R, G, B.
constexpr float YUVtoRGB[3][4] = {
    {1.0F, -0.0009F, 1.4017F, 0.0F}, {1.0F, -0.3437F, -0.7142F, 0.0F}, {1.0F, 1.7722F, 0.001F, 0.0F}};
