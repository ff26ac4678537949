// Alpha composition of two planes with constant alphas: the products with the alphas in single precision, the rest in
// double precision, rounded once.

#include "primitives/regions.h"

namespace ROW {

IppStatus ippiAlphaCompC_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                 int dstStep, IppiSize roiSize, float alpha1, float alpha2, int alphaType) {
  RETURN_UNLESS_OK(checkRegion(roiSize, src1, src2, dst));
  if (alphaType < 0 || alphaType > 11) return ippStsAlphaTypeErr;
  if (alphaType != ippAlphaOver) return ippStsNotSupportedModeErr;
  const double rest = 1.0 - static_cast<double>(alpha1);
  for (int y = 0; y < roiSize.height; ++y) {
    mapLine2(src1, src2, dst, roiSize.width, 0.0F, [=](Floats s1, Floats s2) {
      const Doubles over = __builtin_convertvector(s1 * alpha1, Doubles);
      const Doubles under = __builtin_convertvector(s2 * alpha2, Doubles);
      return __builtin_convertvector(over + under * rest, Floats);
    });
    src1 = advance(src1, src1Step);
    src2 = advance(src2, src2Step);
    dst = advance(dst, dstStep);
  }
  return ippStsNoErr;
}

}  // namespace ROW
