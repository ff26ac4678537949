// Images for tests of primitives: a region inside a block of known bytes, with rows at any byte position, so that a
// write beyond the region shows.
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
  void set(int x, int y, Sample s) { std::memcpy(bytes.data() + position(x, y), &s, sizeof s); }

  template <typename Value>
  void fill(Value value) {
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < rowSamples; ++x) set(x, y, value(x, y));
    }
  }
  std::vector<float> samples() const {
    std::vector<float> all;
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < rowSamples; ++x) all.push_back(static_cast<float>(at(x, y)));
    }
    return all;
  }

  void expectSurroundingsIntact() const {
    std::vector<bool> inside(bytes.size());
    for (int y = 0; y < size.height; ++y) {
      for (std::size_t i = 0; i < static_cast<std::size_t>(rowSamples) * sizeof(Sample); ++i) {
        inside[position(0, y) + i] = true;
      }
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (inside[i]) continue;
      ASSERT_EQ(bytes[i], canary(i)) << "byte " << i << " of the block was written";
    }
  }

  const IppiSize size;
  const int step;

 private:
  static unsigned char canary(std::size_t i) { return static_cast<unsigned char>(0xA5 ^ (i * 31)); }
  std::size_t position(int x, int y) const {
    return start + static_cast<std::size_t>(step) * static_cast<std::size_t>(y) +
           static_cast<std::size_t>(x) * sizeof(Sample);
  }

  int rowSamples;
  std::size_t start;
  std::vector<unsigned char> bytes;
};

// Samples of every kind: small numbers, halves, and now and then a special value.
class RandomSamples {
 public:
  explicit RandomSamples(unsigned seed) : bits(seed) {}
  template <typename Sample>
  Sample next() {
    return static_cast<Sample>(bits());
  }

 private:
  std::mt19937 bits;
};

template <>
inline float RandomSamples::next<float>() {
  using Limits = std::numeric_limits<float>;
  static constexpr float special[] = {Limits::quiet_NaN(),
                                      Limits::infinity(),
                                      -Limits::infinity(),
                                      0.0F,
                                      -0.0F,
                                      Limits::denorm_min(),
                                      -1e-40F,
                                      Limits::max(),
                                      -Limits::max(),
                                      255.0F,
                                      70000.0F,
                                      1.0F,
                                      -1.0F};
  const unsigned kind = bits() % 8;
  if (kind == 0) return special[bits() % std::size(special)];
  const float whole = static_cast<float>(bits() % 512) - 128.0F;
  if (kind == 1) return whole + 0.5F;
  return whole + std::ldexp(static_cast<float>(bits() >> 8), -24);
}

inline bool sameBits(float a, float b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}
