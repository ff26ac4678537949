// Images for tests of pointwise primitives: a region inside a block of known bytes, with rows at any byte position, so
// that a write beyond the region shows.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "primitives/primitives.h"

template <typename Sample>
class Region {
 public:
  // The region starts offset samples into its block; padding counts bytes behind each row.
  Region(IppiSize shape, int offset, int padding, int samplesPerPixel = 1)
      : size(shape),
        step(shape.width * samplesPerPixel * static_cast<int>(sizeof(Sample)) + padding),
        rowSamples(shape.width * samplesPerPixel),
        start(64 + static_cast<std::size_t>(offset) * sizeof(Sample)),
        bytes(start + static_cast<std::size_t>(step) * static_cast<std::size_t>(shape.height) + 64) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = canary(i);
  }

  Sample* data() { return reinterpret_cast<Sample*>(bytes.data() + start); }
  Sample at(int x, int y) const {
    Sample s;
    std::memcpy(&s, bytes.data() + position(x, y), sizeof s);
    return s;
  }
  template <typename Value>
  void fill(Value value) {
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < rowSamples; ++x) set(x, y, value(x, y));
    }
  }
  void set(int x, int y, Sample s) { std::memcpy(bytes.data() + position(x, y), &s, sizeof s); }

  void appendSamplesTo(std::vector<float>& all) const {
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < rowSamples; ++x) all.push_back(static_cast<float>(at(x, y)));
    }
  }

  void expectSurroundingsIntact() const {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const bool isInRow = i >= start && (i - start) % static_cast<std::size_t>(step) < rowBytes();
      if (isInRow && i < position(0, size.height)) continue;
      ASSERT_EQ(bytes[i], canary(i)) << "byte " << i << " of the block was written";
    }
  }

  const IppiSize size;
  const int step;

 private:
  static unsigned char canary(std::size_t i) { return static_cast<unsigned char>(0xA5 ^ (i * 31)); }
  std::size_t rowBytes() const { return static_cast<std::size_t>(rowSamples) * sizeof(Sample); }
  std::size_t position(int x, int y) const {
    return start + static_cast<std::size_t>(step) * static_cast<std::size_t>(y) +
           static_cast<std::size_t>(x) * sizeof(Sample);
  }

  int rowSamples;
  std::size_t start;
  std::vector<unsigned char> bytes;
};

// Any integer; of floats small numbers, halves, and now and then a special value.
template <typename Sample>
Sample anySample(std::mt19937& bits) {
  return static_cast<Sample>(bits());
}
template <>
inline float anySample<float>(std::mt19937& bits) {
  using Limits = std::numeric_limits<float>;
  static constexpr float special[] = {NAN,     INFINITY,      -INFINITY,      0.0F,   -0.0F,    Limits::denorm_min(),
                                      -1e-40F, Limits::max(), -Limits::max(), 255.0F, 70000.0F, 1.0F,
                                      -1.0F};
  const unsigned kind = bits() % 8;
  if (kind == 0) return special[bits() % std::size(special)];
  const float whole = static_cast<float>(bits() % 512) - 128.0F;
  if (kind == 1) return whole + 0.5F;
  return whole + std::ldexp(static_cast<float>(bits() >> 8), -24);
}
