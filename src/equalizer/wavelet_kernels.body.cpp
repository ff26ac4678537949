// Edge-avoiding wavelets: 25 taps, row by row from the top left, in that order.

#include "equalizer/wavelet_kernels.h"

#include "primitives/lanes.h"

namespace ROW {
namespace {

constexpr int reach = 2;
constexpr float spline[] = {1.0F / 16, 4.0F / 16, 6.0F / 16, 4.0F / 16, 1.0F / 16};

// Floats or one float: the same operations.
template <typename Vector>
inline Vector smoothed(const float* const* rows, int spacing, float steepness, int x) {
  const Vector centre = load<Vector>(rows[reach] + x);
  Vector sum = centre - centre;
  Vector weights = sum;
  for (int j = -reach; j <= reach; ++j) {
    for (int i = -reach; i <= reach; ++i) {
      const Vector difference = load<Vector>(rows[reach + j] + x + i * spacing) - centre;
      const Vector weight = spline[reach + j] * spline[reach + i] / (1.0F + difference * difference * steepness);
      sum += weight * difference;
      weights += weight;
    }
  }
  return centre + sum / weights;
}

void smoothLine(float* to, const float* const* rows, int spacing, float steepness, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(to + x, smoothed<Floats>(rows, spacing, steepness, x));
  for (; x < width; ++x) to[x] = smoothed<float>(rows, spacing, steepness, x);
}

}  // namespace

extern const WaveletKernels waveletKernels = {smoothLine};

}  // namespace ROW
