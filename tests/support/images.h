// Pictures for tests, and comparison bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "image/kiv_image.h"

// Of the values of sample(plane, x, y).
template <typename Sample>
KivImage imageOf(IppiSize size, int channels, Sample sample) {
  KivImage image(size, channels);
  for (int plane = 0; plane < channels; ++plane) {
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) *image.At(plane, x, y) = sample(plane, x, y);
    }
  }
  return image;
}

// What an operation makes of an empty image.
template <typename... Parameters, typename... Arguments>
KivImage made(void (KivImage::*operation)(const KivImage&, Parameters...), const KivImage& src,
              const Arguments&... arguments) {
  KivImage image;
  (image.*operation)(src, arguments...);
  return image;
}

inline KivImage copyOf(const KivImage& image) {
  KivImage copy;
  copy = image;
  return copy;
}

inline void fillRandom(KivImage& image, unsigned seed, float low = -0.25F, float high = 1.25F) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> samples(low, high);
  for (int plane = 0; plane < image.channels; ++plane) {
    for (int y = 0; y < image.size.height; ++y) {
      for (int x = 0; x < image.size.width; ++x) *image.At(plane, x, y) = samples(random);
    }
  }
}

inline KivImage flatImage(IppiSize size, int channels, float value) {
  return imageOf(size, channels, [value](int, int, int) { return value; });
}

inline KivImage randomImage(int width, int height, int channels, unsigned seed) {
  KivImage image(width, height, channels);
  fillRandom(image, seed);
  return image;
}

inline std::uint32_t bitsOf(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// NaN's payload may differ.
inline bool sameBits(float a, float b) { return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b)); }

// The first sample at which close(a, b) is false, or success.
template <typename Close>
testing::AssertionResult compare(const KivImage& a, const KivImage& b, Close close) {
  if (a.channels != b.channels || a.size.width != b.size.width || a.size.height != b.size.height) {
    return testing::AssertionFailure() << "shapes differ";
  }
  for (int plane = 0; plane < a.channels; ++plane) {
    for (int y = 0; y < a.size.height; ++y) {
      for (int x = 0; x < a.size.width; ++x) {
        const float va = *a.At(plane, x, y);
        const float vb = *b.At(plane, x, y);
        if (!close(va, vb)) {
          return testing::AssertionFailure() << a.size.width << " x " << a.size.height << ": plane " << plane << ", ("
                                             << x << ", " << y << "): " << va << " and " << vb;
        }
      }
    }
  }
  return testing::AssertionSuccess();
}

inline testing::AssertionResult sameBits(const KivImage& a, const KivImage& b) {
  return compare(a, b, [](float x, float y) { return sameBits(x, y); });
}

inline testing::AssertionResult within(double tolerance, const KivImage& a, const KivImage& b) {
  return compare(a, b, [tolerance](float x, float y) { return std::abs(double{x} - double{y}) <= tolerance; });
}
