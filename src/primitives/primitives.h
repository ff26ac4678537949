// The primitive layer: operations on rows and planes. Every public name of the layer is declared here.
//
// Conventions, unless a declaration says otherwise:
// - An image is a pointer to the first sample of a region, a step and a size. The step is the distance in BYTES from
//   one row to the next; sizes are in pixels. Only the region is read or written, never the padding behind a row.
// - Arguments: sources, target, size, parameters; each image pointer is followed by its step.
// - Names end in sample types and layout: C1 one channel, C3 three interleaved channels, P3 three planes with one step
//   for all; R a region; I in place, where the last image argument is source and target; _L sizes and steps of 64 bits.
// - Source and target don't overlap, or are the same image: with one sample type, layout and step for both.
// - A function checks its arguments before it touches a sample and returns at the first failed check. The order: a null
//   pointer -8, a width or height below 1 -6, then, where "steps checked" is said, a step below 1 -16.
// - A negative status is an error, nothing was done; a positive one is a warning, the result is complete.
// - Specifications and scratch buffers belong to the caller: sized by the query of the same family, allocated with
//   ippMalloc or ippsMalloc_8u. A specification is only read by the filter call, so threads may share it; a scratch
//   buffer serves one call at a time.
// - All functions are reentrant, raise no exception and keep no state between calls. The result of a function has the
//   same bits on every processor; where both are NaN, the payload may differ.
#pragma once

#include <cstdint>

using IppStatus = std::int32_t;

enum : IppStatus {
  ippStsNoErr = 0,
  ippStsNoOperation = 1,            // a size of the resize family is 0: nothing to do
  ippStsDivByZero = 2,              // at least one divisor was 0
  ippStsSqrtNegArg = 3,             // at least one argument was negative
  ippStsLnZeroArg = 7,              // at least one argument was 0
  ippStsLnNegArg = 8,               // at least one argument was negative
  ippStsOverflow = 12,              // at least one exponential overflowed
  ippStsUnderflow = 17,             // at least one exponential underflowed
  ippStsOtherCpuVendor = 20,        // not "GenuineIntel"; a row was selected all the same
  ippStsCpuNotSupported = 36,       // no CPUID, or features too low for any row
  ippStsUnknownCacheSize = 37,      // the cache size query found nothing usable
  ippStsSizeWrn = 48,               // resize: sizes beyond those of the specification
  ippStsFeatureNotSupported = 49,   // a requested feature is absent or not enabled by the system
  ippStsUnknownFeature = 50,        // a requested mask holds bits above the known ones
  ippStsFeaturesCombination = 51,   // a requested mask lacks features that its row needs
  ippStsBadArgErr = -5,             // Gaussian: kernel even or below 3, or sigma not above 0
  ippStsSizeErr = -6,               // a width or height below 1, or sizes that don't fit each other
  ippStsNullPtrErr = -8,            // a required pointer is null
  ippStsDivByZeroErr = -10,         // division by the constant 0
  ippStsOutOfRangeErr = -11,        // resize: target offset outside the target
  ippStsScaleRangeErr = -12,        // an empty or reversed range
  ippStsContextMatchErr = -13,      // not a specification of this family
  ippStsNotSupportedModeErr = -14,  // a mode that isn't served
  ippStsStepErr = -16,              // a step below 1, or not of whole samples where that is required
  ippStsThresholdErr = -19,         // lower threshold above upper threshold
  ippStsInterpolationErr = -23,     // resize: unknown interpolation code
  ippStsMaskSizeErr = -33,          // a mask width or height below 1
  ippStsChannelErr = -47,           // Gaussian: channels other than 1 or 3
  ippStsAlphaTypeErr = -50,         // alpha composition: operation code above 11
  ippStsNumChannelsErr = -53,       // box filter and resize: channels other than 1, 3 or 4
  ippStsDataTypeErr = -59,          // a data type that the family doesn't know
  ippStsNotEvenStepErr = -108,      // Gaussian: a step that is no multiple of the sample size
  ippStsBorderErr = -225,           // a border code that the function doesn't serve
  ippStsSizeTooBigErr = -232,       // a buffer size that doesn't fit 32 bits
};

// Data types of the size queries.
enum : std::int32_t { ipp8u = 1, ipp16u = 5, ipp16s = 7, ipp32f = 13 };

// Borders: one kind, with flags for the sides whose neighbours are real samples in memory. 240 stands by itself.
enum : std::int32_t {
  ippBorderRepl = 1,    // the edge sample is repeated
  ippBorderMirror = 3,  // reflection about the edge sample, which isn't repeated
  ippBorderConst = 6,   // a given constant
  ippBorderInMemTop = 16,
  ippBorderInMemBottom = 32,
  ippBorderInMemLeft = 64,
  ippBorderInMemRight = 128,
  ippBorderInMem = 240,
};

enum IppRoundMode : std::int32_t {
  ippRndZero = 0,  // towards zero
  ippRndNear = 1,  // to nearest, ties to even; any other code: to nearest, ties away from zero
};

// Operation of the alpha composition. Only ippAlphaOver is served.
enum : std::int32_t { ippAlphaOver = 0 };

// Interpolation codes of the resize family. Only linear is served.
enum : std::int32_t { ippLinear = 2 };

struct IppiSize {
  std::int32_t width;
  std::int32_t height;
};

struct IppiPoint {
  std::int32_t x;
  std::int32_t y;
};

// Head of a specification of the Gaussian family with a border in its specification. The taps follow on the next
// 16-byte boundary: for 32f each tap four times over, for integer samples as 16-bit values.
struct IppFilterGaussianSpec {
  std::int32_t kernelSize;
  std::int32_t tapOffset;  // bytes from the start to the tap area before alignment: 20
  std::int32_t dataType;
  std::int32_t border;
  std::int32_t shift;  // integer taps are scaled by 2^shift: 12 for 8u, 15 for 16u and 16s, 0 for 32f
};

extern "C" {

// ---- Choice of a body per processor ----

// The row of bodies in force: -1 before the first detection, then 0 n8_ (SSE2), 1 y8_ (SSE4.2), 2 e9_ (AVX),
// 3 l9_ (AVX2), 4 k0_ (AVX-512). A build for another kind of processor has row 0 alone, with that one's vectors.
extern std::int32_t ippJumpIndexForMergedLibs;

// Detects the processor and selects its row; may be called any number of times. Any other function of the layer does
// the same at its first call. Returns 20 on a processor of another vendor than "GenuineIntel", else the status of the
// selection; without CPUID row 0 is selected and 36 returned.
IppStatus ippInit();

// Selects the row for the given features, also where it returns 49: the caller sees to it that the processor can run
// that row. With bit 63 set, the mask stored by ippSetCpuFeaturesMask counts as detected from now on, and the rest of
// the mask is not checked against the processor.
// Returns 49, 50 or 51 as told at the codes, 36 when the mask fits no row.
IppStatus ippSetCpuFeatures(std::uint64_t features);

// The processor's features, and the four registers (EAX, EBX, ECX, EDX) of CPUID leaf 1 unless cpuidInfo is null.
// -8 for null features; 36 without CPUID.
IppStatus ippGetCpuFeatures(std::uint64_t* features, std::uint32_t* cpuidInfo);

// Stores and returns the mask of enabled features. Storing selects no row.
IppStatus ippSetCpuFeaturesMask(std::uint64_t features);
std::uint64_t ippGetEnabledCpuFeatures();

// Size in bytes of the largest data cache. -8 for null; 36 (size 0) without CPUID or on a processor of another vendor
// than "GenuineIntel"; 37 (size 0) when the processor tells no size.
IppStatus ippGetMaxCacheSizeB(std::int32_t* size);

// ---- Memory ----

// A 64-byte aligned block of length bytes, not cleared; null when length is below 1, above 2^31 - 73, or can't be had.
void* ippMalloc(std::int32_t length);
unsigned char* ippsMalloc_8u(std::int32_t length);

// An image of 64-byte aligned rows, not cleared; step receives the bytes of a row rounded up to a multiple of 64.
// Null with step 0 when a size is below 1 or a row exceeds 2^31 - 1 bytes; null when step is null, or when the whole
// exceeds what ippMalloc gives.
unsigned char* ippiMalloc_8u_C1(std::int32_t width, std::int32_t height, std::int32_t* step);
unsigned short* ippiMalloc_16u_C1(std::int32_t width, std::int32_t height, std::int32_t* step);
float* ippiMalloc_32f_C1(std::int32_t width, std::int32_t height, std::int32_t* step);
float* ippiMalloc_32f_C3(std::int32_t width, std::int32_t height, std::int32_t* step);

// Release a block of any of these; null does nothing.
void ippFree(void* block);
void ippsFree(void* block);
void ippiFree(void* block);

// ---- Arithmetic: one single-precision operation, rounded to nearest ----

// dst = src2 + src1, srcDst + src, src + value, srcDst + value.
IppStatus ippiAdd_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiAdd_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize);
IppStatus ippiAddC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiAddC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize);

// dst = src2 - src1: SECOND MINUS FIRST; srcDst - src, src - value, srcDst - value.
IppStatus ippiSub_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiSub_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize);
IppStatus ippiSubC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiSubC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize);

// dst = src2 * src1, srcDst * src, src * value, srcDst * value.
IppStatus ippiMul_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiMul_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize);
IppStatus ippiMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiMulC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize);

// dst = src2 / src1: SECOND BY FIRST, the correctly rounded quotient. A divisor 0 of either sign gives infinity with
// the sign of the dividend, NaN for a dividend 0 or NaN, and status 2. Steps checked.
IppStatus ippiDiv_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize);
// dst = src * (1 / value): two roundings. Steps checked, then a value of 0: -10.
IppStatus ippiDivC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiDivC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize);
// srcDst = value / srcDst over len samples, divisors of 0 as in ippiDiv_32f_C1R.
IppStatus ippsDivCRev_32f_I(float value, float* srcDst, int len);

// ---- Functions. Steps checked ----

// dst = |src|. Rows advance by the step with its two low bits cleared.
IppStatus ippiAbs_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiAbs_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize);

// dst = the correctly rounded square root; a negative sample gives NaN and status 3; -0 gives -0.
// Rows advance by the step with its two low bits cleared.
IppStatus ippiSqrt_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);

// e to the power of the sample, worked out in double precision and rounded once. Above 88.72283172607422 infinity and
// status 12; from -87.33654022216797 down, where results turn denormal and then 0, status 17. Returns the status of the
// LAST row; within a row an overflow counts before an underflow.
IppStatus ippiExp_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize);

// Natural logarithm, worked out in double precision and rounded once. 0 gives minus infinity and status 7; below 0
// gives NaN and status 8, or 7 when a zero stands in the same row. Returns the first row's status that isn't 0.
IppStatus ippiLn_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiLn_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize);

// ---- Statistics ----

// Smallest and largest sample, starting from +-3.4028235e38. NaN samples don't count; a result of 0 is +0.
IppStatus ippiMin_32f_C1R(const float* src, int srcStep, IppiSize roiSize, float* min);
IppStatus ippiMax_32f_C1R(const float* src, int srcStep, IppiSize roiSize, float* max);

// ---- Thresholds. Steps checked; a sample equal to a threshold passes ----

// dst = threshold where src is above it (GT) or below it (LT); a NaN becomes the threshold.
IppStatus ippiThreshold_GT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                   float threshold);
IppStatus ippiThreshold_LT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                   float threshold);
// dst = valueLT below thresholdLT, valueGT above thresholdGT; NaN becomes valueLT. thresholdLT > thresholdGT: -19.
IppStatus ippiThreshold_LTValGTVal_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                           float thresholdLT, float valueLT, float thresholdGT, float valueGT);
IppStatus ippiThreshold_LTValGTVal_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize, float thresholdLT,
                                            float valueLT, float thresholdGT, float valueGT);

// ---- Conversions ----

// dst = src, exact.
IppStatus ippiConvert_8u32f_C1R(const unsigned char* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiConvert_16u32f_C1R(const unsigned short* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);

// dst = src limited to the range of the target, then rounded; NaN gives 0. Independent of the caller's rounding mode,
// which is as before afterwards.
IppStatus ippiConvert_32f8u_C1R(const float* src, int srcStep, unsigned char* dst, int dstStep, IppiSize roiSize,
                                IppRoundMode roundMode);
IppStatus ippiConvert_32f16u_C1R(const float* src, int srcStep, unsigned short* dst, int dstStep, IppiSize roiSize,
                                 IppRoundMode roundMode);

// dst = src * ((vMax - vMin) / 255) + vMin. vMax - vMin <= 0 is the first check of all: -12.
IppStatus ippiScale_8u32f_C1R(const unsigned char* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                              float vMin, float vMax);
// k = 255 / (vMax - vMin); dst = round(min(max(src, vMin), vMax) * k - k * vMin), to nearest, ties to even, whatever
// the caller's rounding mode, which is as before afterwards. NaN counts as vMin. First check as above.
IppStatus ippiScale_32f8u_C1R(const float* src, int srcStep, unsigned char* dst, int dstStep, IppiSize roiSize,
                              float vMin, float vMax);

// ---- Copies ----

IppStatus ippiCopy_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);
// Plane c of dst = channel c of src.
IppStatus ippiCopy_32f_C3P3R(const float* src, int srcStep, float* const dst[3], int dstStep, IppiSize roiSize);
IppStatus ippiCopy_16u_C3P3R(const unsigned short* src, int srcStep, unsigned short* const dst[3], int dstStep,
                             IppiSize roiSize);
IppStatus ippiCopy_8u_C3P3R(const unsigned char* src, int srcStep, unsigned char* const dst[3], int dstStep,
                            IppiSize roiSize);
// Channel c of dst = plane c of src.
IppStatus ippiCopy_32f_P3C3R(const float* const src[3], int srcStep, float* dst, int dstStep, IppiSize roiSize);
IppStatus ippiCopy_16u_P3C3R(const unsigned short* const src[3], int srcStep, unsigned short* dst, int dstStep,
                             IppiSize roiSize);
IppStatus ippiCopy_8u_P3C3R(const unsigned char* const src[3], int srcStep, unsigned char* dst, int dstStep,
                            IppiSize roiSize);
IppStatus ippsSet_8u(unsigned char value, unsigned char* dst, int len);

// dst(x, y) = src(y, x); roiSize is the size of the SOURCE. src == dst with equal steps runs in place and must be
// square, else -6.
IppStatus ippiTranspose_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);

// ---- Border padding ----
// src is placed at row top, column left of dst; all other samples of dst are made from its edges. Checks: null -8, a
// step below 1 -16, then a size below 1, a negative border or a dst smaller than src and border -6.

// The nearest edge sample is repeated. src == dst means the in-place form.
IppStatus ippiCopyReplicateBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                          IppiSize dstRoi, int top, int left);
// srcDst addresses the source's first sample, inside the larger target.
IppStatus ippiCopyReplicateBorder_32f_C1IR(float* srcDst, int srcDstStep, IppiSize srcRoi, IppiSize dstRoi, int top,
                                           int left);
// Reflection about the edge sample, which isn't repeated, to and fro where the border is wider than the source.
// src == dst means in place, as above.
IppStatus ippiCopyMirrorBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                       IppiSize dstRoi, int top, int left);
IppStatus ippiCopyConstBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                      IppiSize dstRoi, int top, int left, float value);

// ---- Alpha composition ----

// dst = double(src1 * alpha1) + double(src2 * alpha2) * (1 - double(alpha1)): the products with the alphas in single
// precision, the rest in double precision, rounded once. Alphas are not limited.
// Order of checks: null, size, alphaType above 11 or below 0: -50; codes 1 to 11 are not served: -14.
IppStatus ippiAlphaCompC_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                 int dstStep, IppiSize roiSize, float alpha1, float alpha2, int alphaType);

// ---- Colour. src and dst may be the same image; nothing clips unless it says so ----

// CIE L*a*b* of linear RGB (ITU-R BT.709 primaries, white D65), channels R, G, B to L, a, b. Sums from left to right:
//   Y = 0.212671 R + 0.71516 G + 0.072169 B, X = (0.412453 R + 0.35758 G + 0.180423 B) / 0.950456,
//   Z = (0.019334 R + 0.119193 G + 0.950227 B) / 1.0887539, each limited to 1 from above;
//   f(t) = the cube root of t above 0.008856, else 7.787 t + 0.137931034;
//   L = 116 f(Y) - 16, or 903.3 Y where Y is not above 0.008856; a = 500 (f(X) - f(Y)); b = 200 (f(Y) - f(Z)).
// The root is the correctly rounded one. Measured over the 2^24 colours of 8 bits, L is off by at most 1.3e-5, a by
// 6.2e-5, b by 2.6e-5.
IppStatus ippiRGBToLab_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);
// The way back, by cubes alone: colours with an X, Y or Z up to 0.008856 come back different.
//   y = (L + 16) / 116, x = y + a / 500, z = y - b / 200; X = 0.950456 x^3, Y = y^3, Z = 1.0887539 z^3;
//   R = 3.240479 X - 1.53715 Y - 0.498535 Z, G = -0.969256 X + 1.875991 Y + 0.041556 Z,
//   B = 0.055648 X - 0.204043 Y + 1.057311 Z.
// Measured for L from 0 to 100, a and b from -100 to 100, off by at most 1.9e-6.
IppStatus ippiLabToRGB_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize);

// Plane c of dst = (twist[c][3] + twist[c][0] s0) + (twist[c][2] s2 + twist[c][1] s1) of src's planes s. The planes may
// lie in any order. Steps checked.
IppStatus ippiColorTwist_32f_P3R(const float* const src[3], int srcStep, float* const dst[3], int dstStep,
                                 IppiSize roiSize, const float twist[3][4]);

// ---- Box filter ----
// The mean over a window of mask.width by mask.height samples, whose cost doesn't grow with the mask. Of an even mask
// one sample more lies to the right and below: the window of (x, y) starts at column x - (mask.width - 1) / 2, row
// y - (mask.height - 1) / 2. It is the sum times 1 / (float(mask.width) * float(mask.height)).
//
// Sums are running ones, in single precision, and nothing sums anew: the rounding residue of a large sample stays in
// the rows below it, and in every fourth column behind it. bodies/box_filter.body.cpp, box_sums.h and box_row_sums.h
// give the order of all additions. A mask of one sample copies bit for bit.

// The size in bytes of the buffer for one call, for every border, in place or not. Checks: null -8, size -6, mask -33,
// data type -59, channels other than 1, 3, 4 -53; a buffer beyond 32 bits -232.
IppStatus ippiFilterBoxBorderGetBufferSize(IppiSize roiSize, IppiSize maskSize, int dataType, int numChannels,
                                           int* bufferSize);
// src and dst may be the same image. border is ippBorderInMem, or a kind with flags; borderValue is read by
// ippBorderConst alone, else it may be null. Checks: null src, dst or buffer -8; a step below 1 -16; size -6; mask -33;
// border -225; ippBorderConst with a null borderValue -8.
IppStatus ippiFilterBoxBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                      IppiSize maskSize, std::uint32_t border, const float* borderValue, void* buffer);

// ---- Gaussian filter, border in the specification ----
// kernelSize k is odd and at least 3, r = k / 2.
// Tap i is exp(-(i - r)^2 / (2 sigma^2)) over the sum of all, normalised by one division each. Rows first, then
// columns, taps in ascending order; for k = 7 rows of floats add symmetric samples first. Integer samples round after
// each pass, to nearest, ties to even; an 8u row holds whole levels between the passes.

// Sizes in bytes of specification and scratch buffer. Checks: null -8, size -6, kernel -5, data type -59, channels -47;
// a buffer beyond 32 bits -232.
IppStatus ippiFilterGaussianGetBufferSize(IppiSize roiSize, std::uint32_t kernelSize, int dataType, int numChannels,
                                          int* specSize, int* bufferSize);
// Fills the specification. Checks as above, then sigma not above 0 -5, border -225, a kernel beyond 31 bits -232.
IppStatus ippiFilterGaussianInit(IppiSize roiSize, std::uint32_t kernelSize, std::uint32_t borderType, int dataType,
                                 int numChannels, void* spec, void* buffer, float sigma);
// src and dst may be the same image. Checks: null -8, a step shorter than the row -16, size -6, a 32f step that isn't a
// multiple of 4 -108, a border code in spec that is invalid -225; last, a kernel in spec that is invalid -5, a
// specification for another sample type -13.
IppStatus ippiFilterGaussianBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                           float borderValue, const void* spec, void* buffer);
IppStatus ippiFilterGaussianBorder_16u_C1R(const unsigned short* src, int srcStep, unsigned short* dst, int dstStep,
                                           IppiSize roiSize, unsigned short borderValue, const void* spec,
                                           void* buffer);
IppStatus ippiFilterGaussianBorder_8u_C1R(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                                          IppiSize roiSize, unsigned char borderValue, const void* spec, void* buffer);

// ---- Gaussian filter, border per call ----
// One specification serves many bands of one image. The taps are normalised by one reciprocal, and symmetric samples
// are added before their multiplication, outermost pair first, centre last. Sizes in bytes.

// Checks: null -8, kernel -5, data type -59, channels -47.
IppStatus ippiFilterGaussianGetSpecSize_L(int kernelSize, int dataType, int numChannels, std::int64_t* specSize,
                                          std::int64_t* initBufferSize);
// Checks: spec or initBuffer null -8, size -6, kernel -5, data type -59, channels -47, sigma not above 0 -5, border
// -225.
IppStatus ippiFilterGaussianInit_L(std::int64_t width, std::int64_t height, int kernelSize, std::uint32_t borderType,
                                   int dataType, int numChannels, void* spec, void* initBuffer, float sigma);
// Checks: null -8, size -6, kernel -5, data type -59, channels -47, border -225; a buffer beyond 64 bits -232.
IppStatus ippiFilterGaussianGetBufferSize_L(std::int64_t width, std::int64_t height, int kernelSize, int dataType,
                                            std::uint32_t borderType, int numChannels, std::int64_t* bufferSize);
// src and dst address the first row of the band; a side whose flag is set is read from memory beyond the band.
// borderValue is read by ippBorderConst alone, else it may be null. src and dst are different images.
// Checks: null -8; a step below 4 * width -16; size -6; a step that isn't a multiple of 4 -108; border above 255 -225;
// ippBorderConst with a null borderValue -8; another kind -225; a specification with an invalid kernel -5.
IppStatus ippiFilterGaussian_32f_C1R_L(const float* src, std::int64_t srcStep, float* dst, std::int64_t dstStep,
                                       std::int64_t width, std::int64_t height, std::uint32_t borderType,
                                       const float* borderValue, const void* spec, void* buffer);

// ---- Linear resize ----
// Two taps along each axis, pixel centres mapped onto pixel centres, no prefilter:
//   p = (i + 0.5) * r - 0.5 in double precision, index = floor(p), weight = p - index, r the reduced ratio of lengths;
//   h(R) = a + (b - a) * t along the rows, then h0 + (h1 - h0) * u down the columns, in single precision.
// Indices beyond an end are clamped to it. Equal sizes copy the samples bit for bit.

// Checks: null -8; a size of 0 gives 1, a negative one -6; an interpolation other than 0, 1, 2, 6, 8, 16 -23, code 0
// -14; linear with a source below 2 in a direction -6; a size beyond 32 bits -232.
IppStatus ippiResizeGetSize_32f(IppiSize srcSize, IppiSize dstSize, int interpolation, int antialiasing, int* specSize,
                                int* initBufSize);
// Checks: null -8; a size of 0 gives 1; below 1, or a source below 2, -6.
IppStatus ippiResizeLinearInit_32f(IppiSize srcSize, IppiSize dstSize, void* spec);
// Checks: null -8; a size of 0 gives 1; no specification of this family -13; channels other than 1, 3, 4 -53; size
// below 1 -6; a size beyond 32 bits -232; a dstSize beyond the specification gives 48 and the size all the same.
IppStatus ippiResizeGetBufferSize_8u(const void* spec, IppiSize dstSize, int numChannels, int* bufferSize);
// Resizes into the part of the target that starts at dstOffset. src addresses the source position floor(dstOffset * r).
// border is ippBorderRepl with flags, or ippBorderInMem; borderValue is not read. A dstSize beyond the specification is
// clipped to it, and 48 returned. src and dst are different images.
// Checks: border -225; null -8; a size of 0 gives 1; no specification of this family -13; size below 1 -6; a step that
// isn't a multiple of 4 -16; an offset outside the target -11; antialiasing -14; another interpolation -13.
IppStatus ippiResizeLinear_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiPoint dstOffset,
                                   IppiSize dstSize, int border, const void* borderValue, const void* spec,
                                   void* buffer);

}  // extern "C"
