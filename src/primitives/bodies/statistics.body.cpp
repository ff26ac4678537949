// Smallest and largest sample of a plane. A comparison with NaN is false, which leaves NaN samples out.

#include <cfloat>

#include "primitives/regions.h"

namespace ROW {
namespace {

constexpr auto smallerOf = [](Floats sample, Floats soFar) { return smaller(sample, soFar); };
constexpr auto largerOf = [](Floats sample, Floats soFar) { return larger(sample, soFar); };

// choose(sample, soFar) picks one of the two; start is what a region of NaN alone gives.
template <typename Choose>
IppStatus extreme(const float* src, int srcStep, IppiSize size, float* result, float start, Choose choose) {
  RETURN_UNLESS_OK(checkRegion(size, src, result));
  // Four chains of choices, since one waits for the choice before it.
  constexpr int chains = 4;
  Floats soFar[chains] = {toFloats(start), toFloats(start), toFloats(start), toFloats(start)};
  for (int y = 0; y < size.height; ++y) {
    int x = 0;
    for (; x <= size.width - chains * LANES; x += chains * LANES) {
      for (int i = 0; i < chains; ++i) soFar[i] = choose(load<Floats>(src + x + i * LANES), soFar[i]);
    }
    for (; x <= size.width - LANES; x += LANES) soFar[0] = choose(load<Floats>(src + x), soFar[0]);
    if (x < size.width) soFar[0] = choose(loadPart<Floats>(src + x, size.width - x, start), soFar[0]);
    src = advance(src, srcStep);
  }

  const Floats merged = choose(choose(soFar[0], soFar[1]), choose(soFar[2], soFar[3]));
  Floats winner = toFloats(merged[0]);
  for (int i = 1; i < LANES; ++i) winner = choose(toFloats(merged[i]), winner);
  // Of zeros with both signs, which one won depends on the lanes.
  store(result, winner[0] == 0.0F ? 0.0F : winner[0]);
  return ippStsNoErr;
}

}  // namespace

IppStatus ippiMin_32f_C1R(const float* src, int srcStep, IppiSize roiSize, float* min) {
  return extreme(src, srcStep, roiSize, min, FLT_MAX, smallerOf);
}
IppStatus ippiMax_32f_C1R(const float* src, int srcStep, IppiSize roiSize, float* max) {
  return extreme(src, srcStep, roiSize, max, -FLT_MAX, largerOf);
}

}  // namespace ROW
