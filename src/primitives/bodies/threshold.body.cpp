// Thresholds on planes of floats. The comparisons are those that pass a sample equal to the threshold with its own
// sign, and send NaN to the given value.

#include "primitives/regions.h"

namespace ROW {
namespace {

template <typename Operation>
IppStatus limit(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, Operation operation) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  map(src, srcStep, dst, dstStep, size, operation);
  return ippStsNoErr;
}

IppStatus replaceOutside(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, float thresholdLT,
                         float valueLT, float thresholdGT, float valueGT) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  if (thresholdLT > thresholdGT) return ippStsThresholdErr;
  map(src, srcStep, dst, dstStep, size, [=](Floats s) {
    const Floats limitedAbove = select(s > thresholdGT, toFloats(valueGT), s);
    return select((s < thresholdLT) | (s != s), toFloats(valueLT), limitedAbove);
  });
  return ippStsNoErr;
}

}  // namespace

IppStatus ippiThreshold_GT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                   float threshold) {
  return limit(src, srcStep, dst, dstStep, roiSize,
               [threshold](Floats s) { return select(s <= threshold, s, toFloats(threshold)); });
}
IppStatus ippiThreshold_LT_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                   float threshold) {
  return limit(src, srcStep, dst, dstStep, roiSize,
               [threshold](Floats s) { return select(s >= threshold, s, toFloats(threshold)); });
}
IppStatus ippiThreshold_LTValGTVal_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                           float thresholdLT, float valueLT, float thresholdGT, float valueGT) {
  return replaceOutside(src, srcStep, dst, dstStep, roiSize, thresholdLT, valueLT, thresholdGT, valueGT);
}
IppStatus ippiThreshold_LTValGTVal_32f_C1IR(float* srcDst, int srcDstStep, IppiSize roiSize, float thresholdLT,
                                            float valueLT, float thresholdGT, float valueGT) {
  return replaceOutside(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, thresholdLT, valueLT, thresholdGT, valueGT);
}

}  // namespace ROW
