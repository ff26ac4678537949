// The bilateral filter, one line of outputs at a time. For each output: norm = sum of weights, sum = sum of samples by
// weights, over the square's rows from top to bottom and its columns from left to right; the output is sum / norm.
// Outputs side by side share the lanes of a vector, each with sums of its own, so the width of the vector doesn't show
// in the result. What shows is where a line is cut: columns before width - width mod 4 have another weight than the
// last ones (bilateral_weight.h).

#include "equalizer/bilateral_kernels.h"

#include "equalizer/bilateral_pairs.h"
#include "equalizer/bilateral_weight.h"

namespace ROW {
namespace {

inline float floatOf(std::int32_t bits) {
  float value;
  __builtin_memcpy(&value, &bits, sizeof value);
  return value;
}

// Vector arithmetic for the columns that go together. A vector type holds one output per lane.
template <typename Vector>
struct GaussianWeight {
  float kr;
  Vector operator()(Vector difference, float spatial) const {
    const Vector e = spatial + (difference * difference) * kr;
    return fastExponential<Vector>(e, e * exponentScale);
  }
};

// One output: the same weight with its own association, and the conversion truncates.
struct GaussianWeightOfOne {
  float kr;
  float operator()(float difference, float spatial) const {
    const float e = difference * (kr * difference) + spatial;
    if (e < smallestExponent) return 0.0F;
    const float scaled = e * exponentScale;
    // What no integer holds (a NaN, here) becomes the most negative one, as the processor's conversion has it.
    const bool fits = scaled >= -2147483648.0F && scaled < 2147483648.0F;
    return floatOf((fits ? static_cast<std::int32_t>(scaled) : INT32_MIN) + exponentOffset);
  }
};

template <typename Vector>
struct TrapezoidWeight {
  float reach;
  float flat;
  Vector operator()(Vector difference, float) const {
    const Vector zero{};
    const Vector distance = difference < 0.0F ? -difference : difference;
    const Vector slope = reach - distance;
    const Vector limited = slope < flat ? slope : flat - zero;
    return limited > 0.0F ? limited : zero;
  }
};

// The spatial exponent of a tap, from offsets held as floats.
struct Distance {
  float ks;
  float operator()(int dy, int dx) const {
    const float y = static_cast<float>(dy);
    const float x = static_cast<float>(dx);
    return (x * x + y * y) * ks;
  }
};

// The same from offsets held as integers: past 4096 samples the squares round differently.
struct DistanceOfOne {
  float ks;
  float operator()(int dy, int dx) const { return static_cast<float>(dx * dx + dy * dy) * ks; }
};

struct NoDistance {
  float operator()(int, int) const { return 0.0F; }
};

template <typename Vector>
inline Vector loadLanes(const float* from) {
  return load<Vector>(from);
}
template <>
inline float loadLanes<float>(const float* from) {
  return *from;
}

// count vectors of neighbouring outputs, which share the spatial term of each tap.
template <typename Vector, int count, typename Weight, typename Spatial>
inline void filterColumns(const float* top, std::ptrdiff_t blockStep, int window, float* dst, Weight weight,
                          Spatial spatial) {
  constexpr int lanes = sizeof(Vector) / sizeof(float);
  const float* middle = top + window * blockStep + window;
  Vector centre[count];
  Vector sum[count];
  Vector norm[count];
  for (int i = 0; i < count; ++i) {
    centre[i] = loadLanes<Vector>(middle + i * lanes);
    sum[i] = Vector{};
    norm[i] = Vector{};
  }
  for (int dy = -window; dy <= window; ++dy) {
    const float* row = middle + dy * blockStep;
    for (int dx = -window; dx <= window; ++dx) {
      const float distance = spatial(dy, dx);
      for (int i = 0; i < count; ++i) {
        const Vector v = loadLanes<Vector>(row + dx + i * lanes);
        const Vector w = weight(v - centre[i], distance);
        norm[i] += w;
        sum[i] += v * w;
      }
    }
  }
  for (int i = 0; i < count; ++i) {
    const Vector result = sum[i] / norm[i];
    __builtin_memcpy(dst + i * lanes, &result, sizeof result);
  }
}

// A line: as many wide groups as fit, then groups of four, then single columns by their own rule.
template <template <typename> class Weight, typename WeightOfOne, typename Spatial, typename SpatialOfOne,
          typename... Parameters>
inline void filterLine(const float* top, std::ptrdiff_t blockStep, int window, float* dst, int width, Spatial spatial,
                       SpatialOfOne spatialOfOne, Parameters... parameters) {
  constexpr int vectors = 4;  // enough sums in flight to hide the latency of their additions
  const int grouped = width - width % 4;
  int x = 0;
  for (; x <= grouped - vectors * LANES; x += vectors * LANES) {
    filterColumns<Floats, vectors>(top + x, blockStep, window, dst + x, Weight<Floats>{parameters...}, spatial);
  }
  for (; x <= grouped - LANES; x += LANES) {
    filterColumns<Floats, 1>(top + x, blockStep, window, dst + x, Weight<Floats>{parameters...}, spatial);
  }
  for (; x < grouped; x += 4) {
    filterColumns<Floats4, 1>(top + x, blockStep, window, dst + x, Weight<Floats4>{parameters...}, spatial);
  }
  for (; x < width; ++x) {
    filterColumns<float, 1>(top + x, blockStep, window, dst + x, WeightOfOne{parameters...}, spatialOfOne);
  }
}

void bilateralStdLine(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                      int width) {
  filterLine<GaussianWeight, GaussianWeightOfOne>(top, blockStep, window, dst, width, Distance{factors.ks},
                                                  DistanceOfOne{factors.ks}, factors.kr);
}

void bilateralTrpLine(const float* top, std::ptrdiff_t blockStep, int window, float reach, float flat, float* dst,
                      int width) {
  filterLine<TrapezoidWeight, TrapezoidWeight<float>>(top, blockStep, window, dst, width, NoDistance{}, NoDistance{},
                                                      reach, flat);
}

}  // namespace

extern const BilateralKernels bilateralKernels = {bilateralStdLine, bilateralTrpLine, bilateralStdRows,
                                                  bilateralStdRowsScratch, bilateralStdRowsPays};

}  // namespace ROW
