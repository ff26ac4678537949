// Arithmetic on planes of floats: one operation per sample, rounded once.

#include "primitives/regions.h"

namespace ROW {
namespace {

template <typename Operation>
IppStatus combine(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                  IppiSize size, Operation operation) {
  RETURN_UNLESS_OK(checkRegion(size, src1, src2, dst));
  for (int y = 0; y < size.height; ++y) {
    mapLine2(src1, src2, dst, size.width, 1.0F, operation);
    src1 = advance(src1, src1Step);
    src2 = advance(src2, src2Step);
    dst = advance(dst, dstStep);
  }
  return ippStsNoErr;
}

template <typename Operation>
IppStatus apply(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, Operation operation) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  map(src, srcStep, dst, dstStep, size, operation);
  return ippStsNoErr;
}

constexpr auto sum = [](Floats first, Floats second) { return second + first; };
constexpr auto difference = [](Floats first, Floats second) { return second - first; };
constexpr auto product = [](Floats first, Floats second) { return second * first; };

// A zero divisor gives an infinity with the sign of the dividend alone.
Floats quotient(Floats divisor, Floats dividend) { return dividend / select(divisor == 0.0F, toFloats(0.0F), divisor); }

// d = second / first over a line; true when a divisor was 0.
bool divideLine(const float* first, const float* second, float* dst, int width) {
  Ints zeros{};
  mapLine2(first, second, dst, width, 1.0F, [&zeros](Floats divisor, Floats dividend) {
    zeros |= divisor == 0.0F;
    return quotient(divisor, dividend);
  });
  return anyOf(zeros);
}

IppStatus divideByConstant(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize size) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  if (value == 0.0F) return ippStsDivByZeroErr;
  const float reciprocal = 1.0F / value;
  map(src, srcStep, dst, dstStep, size, [reciprocal](Floats s) { return s * reciprocal; });
  return ippStsNoErr;
}

}  // namespace

IppStatus ippiAdd_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize) {
  return combine(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, sum);
}
IppStatus ippiAdd_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return combine(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize, sum);
}
IppStatus ippiAddC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize) {
  return apply(src, srcStep, dst, dstStep, roiSize, [value](Floats s) { return s + value; });
}
IppStatus ippiAddC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return ROW::ippiAddC_32f_C1R(srcDst, srcDstStep, value, srcDst, srcDstStep, roiSize);
}

IppStatus ippiSub_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize) {
  return combine(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, difference);
}
IppStatus ippiSub_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return combine(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize, difference);
}
IppStatus ippiSubC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize) {
  return apply(src, srcStep, dst, dstStep, roiSize, [value](Floats s) { return s - value; });
}
IppStatus ippiSubC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return ROW::ippiSubC_32f_C1R(srcDst, srcDstStep, value, srcDst, srcDstStep, roiSize);
}

IppStatus ippiMul_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize) {
  return combine(src1, src1Step, src2, src2Step, dst, dstStep, roiSize, product);
}
IppStatus ippiMul_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return combine(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, roiSize, product);
}
IppStatus ippiMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize) {
  return apply(src, srcStep, dst, dstStep, roiSize, [value](Floats s) { return s * value; });
}
IppStatus ippiMulC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return ROW::ippiMulC_32f_C1R(srcDst, srcDstStep, value, srcDst, srcDstStep, roiSize);
}

IppStatus ippiDiv_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst, int dstStep,
                          IppiSize roiSize) {
  RETURN_UNLESS_OK(checkRegion(roiSize, src1, src2, dst));
  RETURN_UNLESS_OK(checkSteps(src1Step, src2Step, dstStep));
  IppStatus status = ippStsNoErr;
  for (int y = 0; y < roiSize.height; ++y) {
    if (divideLine(src1, src2, dst, roiSize.width)) status = ippStsDivByZero;
    src1 = advance(src1, src1Step);
    src2 = advance(src2, src2Step);
    dst = advance(dst, dstStep);
  }
  return status;
}
IppStatus ippiDivC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize roiSize) {
  return divideByConstant(src, srcStep, value, dst, dstStep, roiSize);
}
IppStatus ippiDivC_32f_C1IR(float value, float* srcDst, int srcDstStep, IppiSize roiSize) {
  return divideByConstant(srcDst, srcDstStep, value, srcDst, srcDstStep, roiSize);
}
IppStatus ippsDivCRev_32f_I(float value, float* srcDst, int len) {
  RETURN_UNLESS_OK(checkRegion({len, 1}, srcDst));
  Ints zeros{};
  mapLine<float, float, Floats>(srcDst, srcDst, len, 1.0F, [&zeros, value](Floats divisor) {
    zeros |= divisor == 0.0F;
    return quotient(divisor, toFloats(value));
  });
  return anyOf(zeros) ? ippStsDivByZero : ippStsNoErr;
}

}  // namespace ROW
