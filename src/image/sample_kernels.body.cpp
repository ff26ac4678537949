// Conversions of a line of samples: a loop over samples at a distance, and what becomes of one of them.

#include "image/sample_kernels.h"

namespace ROW {
namespace {

template <typename Sample>
Sample load(const unsigned char* at) {
  Sample sample;
  __builtin_memcpy(&sample, at, sizeof sample);
  return sample;
}
template <typename Sample>
void store(unsigned char* at, Sample sample) {
  __builtin_memcpy(at, &sample, sizeof sample);
}

// The usual distances, of samples that are packed or of interleaved channels, are constants of loops of their own: the
// compiler has vector code for those.
template <typename Sample, typename Loop>
void withStep(std::ptrdiff_t step, Loop loop) {
  constexpr std::ptrdiff_t size = sizeof(Sample);
  if (step == size) {
    loop([](int i) { return i * size; });
  } else if (step == 3 * size) {
    loop([](int i) { return i * 3 * size; });
  } else if (step == 4 * size) {
    loop([](int i) { return i * 4 * size; });
  } else {
    loop([step](int i) { return i * step; });
  }
}

template <typename Sample, typename Rule>
void toFloats(const unsigned char* from, std::ptrdiff_t step, float* to, int count, double scale) {
  const auto factor = static_cast<typename Rule::Scale>(scale);
  withStep<Sample>(step, [=](auto offset) {
    for (int i = 0; i < count; ++i) to[i] = Rule::toFloat(load<Sample>(from + offset(i)), factor);
  });
}
template <typename Sample, typename Rule>
void fromFloats(const float* from, unsigned char* to, std::ptrdiff_t step, int count, double scale) {
  const auto factor = static_cast<typename Rule::Scale>(scale);
  withStep<Sample>(step, [=](auto offset) {
    for (int i = 0; i < count; ++i) store(to + offset(i), static_cast<Sample>(Rule::fromFloat(from[i], factor)));
  });
}

template <int most>
struct HostRule {
  using Scale = float;
  static float toFloat(int sample, float scale) { return static_cast<float>(sample) * scale; }
  static std::int32_t fromFloat(float sample, float scale) {
    float value = sample * scale;
    // Beyond 32 bits and NaN, conversion gives the most negative integer, and so 0; written out, since C++ leaves it
    // open.
    value = value < 2147483648.0F ? value : 0.0F;
    value = value > static_cast<float>(most) ? static_cast<float>(most) : value;
    value = value > 0.0F ? value : 0.0F;
    // From 2^23 on floats are whole numbers: the sum is rounded to nearest, ties to even. Unlike rint this becomes
    // vector code on every processor.
    return static_cast<std::int32_t>((value + 8388608.0F) - 8388608.0F);
  }
};

struct FileRule {
  using Scale = double;
  static float toFloat(int sample, double scale) { return static_cast<float>(sample * scale); }
  static std::int32_t fromFloat(float sample, double scale) {
    double value = static_cast<double>(sample) * scale;
    value = value > 0 ? value : 0;
    value = value < scale ? value + 0.5 : scale;
    return static_cast<std::int32_t>(value);
  }
};

struct Same {
  using Scale = float;
  static float toFloat(float sample, float) { return sample; }
  static float fromFloat(float sample, float) { return sample; }
};

template <typename Sample, typename Rule>
constexpr SampleKernels::Pair pairOf() {
  return {toFloats<Sample, Rule>, fromFloats<Sample, Rule>};
}

}  // namespace

extern const SampleKernels sampleKernels = {pairOf<std::uint8_t, HostRule<255>>(),
                                            pairOf<std::uint16_t, HostRule<65535>>(), pairOf<std::uint16_t, FileRule>(),
                                            pairOf<float, Same>()};

}  // namespace ROW
