#include "equalizer/working_size.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double leastShortSide = 64;

int divided(int length, double scale) { return std::max(1, static_cast<int>(std::lround(length / scale))); }

}  // namespace

WorkingSize workingSize(IppiSize picture, int referenceEdge) {
  if (referenceEdge == 0) return {picture, 1};
  const double wanted = static_cast<double>(std::max(picture.width, picture.height)) / referenceEdge;
  const double most = std::max(1.0, std::min(picture.width, picture.height) / leastShortSide);
  const double scale = std::min(wanted, most);
  return {{divided(picture.width, scale), divided(picture.height, scale)}, wanted / scale};
}
