// Functions of one plane of floats. Absolute value and square root are exact operations; exponential and logarithm are
// those of exp_ln.h.

#include "primitives/exp_ln.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

IppStatus checkFunction(const float* src, int srcStep, const float* dst, int dstStep, IppiSize size) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  return checkSteps(srcStep, dstStep);
}

int wholeSamples(int step) { return step & ~3; }

IppStatus absolutes(const float* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  RETURN_UNLESS_OK(checkFunction(src, srcStep, dst, dstStep, size));
  map(src, wholeSamples(srcStep), dst, wholeSamples(dstStep), size,
      [](Floats s) { return floatsOf(bitsOf(s) & INT32_MAX); });
  return ippStsNoErr;
}

// The line's status: an overflow counts before an underflow. Infinities are no overflow, nor an underflow.
IppStatus expLine(float* line, int width) {
  const float infinity = __builtin_inff();
  Ints overflows{};
  Ints underflows{};
  mapLine<float, float, Floats>(line, line, width, 1.0F, [&](Floats x) {
    overflows |= (x > 88.72283172607422F) & (x < infinity);
    underflows |= (x <= -87.33654022216797F) & (x > -infinity);
    return expSingle(x);
  });
  if (anyOf(overflows)) return ippStsOverflow;
  return anyOf(underflows) ? ippStsUnderflow : ippStsNoErr;
}

// The line's status: a zero counts before a negative.
IppStatus lnLine(const float* src, float* dst, int width) {
  Ints zeros{};
  Ints negatives{};
  mapLine<float, float, Floats>(src, dst, width, 1.0F, [&](Floats x) {
    zeros |= x == 0.0F;
    negatives |= x < 0.0F;
    return lnSingle(x);
  });
  if (anyOf(zeros)) return ippStsLnZeroArg;
  return anyOf(negatives) ? ippStsLnNegArg : ippStsNoErr;
}

IppStatus logarithms(const float* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  RETURN_UNLESS_OK(checkFunction(src, srcStep, dst, dstStep, size));
  IppStatus status = ippStsNoErr;
  eachRow(src, srcStep, dst, dstStep, size, [&](const float* s, float* d) {
    const IppStatus ofLine = lnLine(s, d, size.width);
    if (status == ippStsNoErr) status = ofLine;
  });
  return status;
}

}  // namespace

IppStatus ippiAbs_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return absolutes(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiAbs_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize) {
  return absolutes(srcDst, srcDstStep, srcDst, srcDstStep, roiSize);
}

IppStatus ippiSqrt_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  RETURN_UNLESS_OK(checkFunction(src, srcStep, dst, dstStep, roiSize));
  Ints negatives{};
  map(src, wholeSamples(srcStep), dst, wholeSamples(dstStep), roiSize, [&negatives](Floats s) {
    negatives |= s < 0.0F;
    return squareRoots(s);
  });
  return anyOf(negatives) ? ippStsSqrtNegArg : ippStsNoErr;
}

IppStatus ippiExp_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize) {
  RETURN_UNLESS_OK(checkFunction(srcDst, srcDstStep, srcDst, srcDstStep, roiSize));
  IppStatus status = ippStsNoErr;
  for (int y = 0; y < roiSize.height; ++y) {
    status = expLine(srcDst, roiSize.width);
    srcDst = advance(srcDst, srcDstStep);
  }
  return status;
}

IppStatus ippiLn_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return logarithms(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiLn_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize) {
  return logarithms(srcDst, srcDstStep, srcDst, srcDstStep, roiSize);
}

}  // namespace ROW
