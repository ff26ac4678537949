#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "primitives/neighbourhood.h"

namespace {

// A position of the extended image: the real sample that stands for n, or none where the constant does.
struct Position {
  bool isConstant;
  int n;
};
Position resolve(int n, int length, unsigned kind, bool lowInMemory, bool highInMemory) {
  while ((n < 0 && !lowInMemory) || (n >= length && !highInMemory)) {
    if (kind == ippBorderConst) return {true, 0};
    if (kind == ippBorderRepl) return {false, n < 0 ? 0 : length - 1};
    if (length == 1 && !lowInMemory && !highInMemory) return {false, 0};
    n = n < 0 ? -n : 2 * (length - 1) - n;
  }
  return {false, n};
}

// The whole filter from its definition: a row function and a column function over the values under the taps.
template <typename Sample, typename Sum, typename RowSum, typename ColumnSum>
Plane<Sample> naive(const Plane<Sample>& src, Plane<Sample> dst, int k, unsigned border, Sample value, RowSum rowSum,
                    ColumnSum columnSum) {
  const int r = k / 2;
  std::vector<Sum> taken(static_cast<std::size_t>(k));
  const auto across = [&](int x, int y) {
    const Position row = resolve(y, src.height(), border & 15, (border & 16) != 0, (border & 32) != 0);
    if (row.isConstant) return static_cast<Sum>(value);
    for (int i = 0; i < k; ++i) {
      const Position column = resolve(x - r + i, src.width(), border & 15, (border & 64) != 0, (border & 128) != 0);
      taken[static_cast<std::size_t>(i)] = static_cast<Sum>(column.isConstant ? value : src.at(column.n, row.n));
    }
    return rowSum(taken);
  };
  for (int x = 0; x < src.width(); ++x) {
    std::vector<Sum> rows;
    for (int y = -r; y < src.height() + r; ++y) rows.push_back(across(x, y));
    for (int y = 0; y < src.height(); ++y) {
      dst.at(x, y) = static_cast<Sample>(columnSum(std::vector<Sum>(rows.begin() + y, rows.begin() + y + k)));
    }
  }
  return dst;
}

std::size_t middle(const std::vector<float>& taps) { return taps.size() / 2; }

float partnersFirst(const std::vector<float>& a, const std::vector<float>& taps) {
  const std::size_t r = middle(a);
  float acc = (a[0] + a[2 * r]) * taps[0];
  for (std::size_t j = 1; j < r; ++j) acc = acc + (a[j] + a[2 * r - j]) * taps[j];
  return acc + a[r] * taps[r];
}
float ascending(const std::vector<float>& a, const std::vector<float>& taps) {
  float acc = a[0] * taps[0];
  for (std::size_t i = 1; i < a.size(); ++i) acc = acc + a[i] * taps[i];
  return acc;
}

struct SpecAndBuffer {
  FencedMemory spec;
  FencedMemory buffer;
};

// ---- Border per call

constexpr int typesOfImage[] = {ipp32f, 1};

SpecAndBuffer makeBandSpec(int width, int height, int k, float sigma) {
  std::int64_t specSize = 0;
  std::int64_t initSize = 0;
  std::int64_t bufferSize = 0;
  EXPECT_EQ(ippiFilterGaussianGetSpecSize_L(k, ipp32f, 1, &specSize, &initSize), ippStsNoErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize_L(width, height, k, ipp32f, 1, 1, &bufferSize), ippStsNoErr);
  const std::int64_t stride = (width * 4 + 63) / 64 * 64;
  EXPECT_EQ(specSize, (k + 1) / 2 * 4 + 128);
  EXPECT_EQ(bufferSize, (k + 1) * stride + 12 * k + 64);
  SpecAndBuffer made{FencedMemory(specSize, 16), FencedMemory(bufferSize, 24)};
  FencedMemory init(initSize);
  EXPECT_EQ(ippiFilterGaussianInit_L(width, height, k, 1, ipp32f, 1, made.spec.get(), init.get(), sigma), ippStsNoErr);
  return made;
}

template <typename Tap>
std::vector<Tap> tapsAt(const unsigned char* spec, std::size_t alignment, std::size_t stride, int count) {
  const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(spec) + 20;
  const unsigned char* at = spec + 20 + (alignment - address % alignment) % alignment;
  std::vector<Tap> taps(static_cast<std::size_t>(count));
  for (Tap& tap : taps) {
    std::memcpy(&tap, at, sizeof tap);
    at += stride;
  }
  return taps;
}

std::vector<float> bandTaps(const FencedMemory& spec, int k) { return tapsAt<float>(spec.get(), 64, 4, k / 2 + 1); }

IppStatus filterBand(const Plane<float>& src, Plane<float>& dst, int y, int height, unsigned border, float value,
                     const SpecAndBuffer& with) {
  return ippiFilterGaussian_32f_C1R_L(&src.first()[0] + y * (src.step() / 4), src.step(), &dst.at(0, y), dst.step(),
                                      src.width(), height, border, &value, with.spec.get(), with.buffer.get());
}

TEST(GaussianBand, TapsAreThoseOfTheFormula) {
  for (const float sigma : {1e-30F, 0.1F, 0.8F, 3.0F, 1000.0F, 3e38F}) {
    for (const int k : {3, 7, 25}) {
      const SpecAndBuffer made = makeBandSpec(10, 10, k, sigma);
      const std::vector<float> taps = bandTaps(made.spec, k);
      double sum = 1.0;
      const auto weight = [sigma](int x) { return std::exp(-x * x / (2.0 * double{sigma} * double{sigma})); };
      for (int x = 1; x <= k / 2; ++x) sum += 2.0 * weight(x);
      for (int x = 0; x <= k / 2; ++x) {
        EXPECT_NEAR(double{taps[static_cast<std::size_t>(k / 2 - x)]}, weight(x) / sum, 3e-7) << sigma << ' ' << x;
      }
    }
  }
  const SpecAndBuffer three = makeBandSpec(10, 10, 3, 0.7F);
  const std::vector<float> taps = bandTaps(three.spec, 3);
  const float w = std::exp(-1.0F / (0.7F * 1.4F));
  EXPECT_FLOAT_EQ(taps[0], w / (1.0F + 2.0F * w));
  EXPECT_FLOAT_EQ(taps[1], 1.0F / (1.0F + 2.0F * w));
}

constexpr unsigned borders[] = {1, 3, 6, 17, 33, 49, 65, 129, 193, 19, 35, 67, 131, 22, 38, 54, 70, 134, 115, 240};

// Widths through all kinds of line ends, for every border.
template <typename Check>
void forManyShapes(Check check) {
  std::mt19937 random(11);
  constexpr int kernels[] = {3, 5, 7, 9, 25, 61};
  std::vector<int> widths = {47, 63, 64, 65, 127, 128, 129, 131, 300};
  for (int width = 1; width <= 40; ++width) widths.push_back(width);
  for (const int width : widths) {
    for (const unsigned border : borders) {
      const int height = static_cast<int>(random() % (width < 100 ? 40 : 5)) + 1;
      check(width, height, kernels[random() % 6], border);
      if (testing::Test::HasFailure()) FAIL() << width << " x " << height << ", border " << border;
    }
  }
}

TEST(GaussianBand, EqualsTheFormulaOnEveryRowOfBodies) {
  forManyShapes([](int width, int height, int k, unsigned border) {
    const SpecAndBuffer made = makeBandSpec(width, height, k, 0.2F * static_cast<float>(k));
    const std::vector<float> taps = bandTaps(made.spec, k);
    const Plane<float> src(width, height, k / 2, static_cast<unsigned>(width));
    const Plane<float> before(width, height, 4, 5);
    const auto sum = [&taps](const std::vector<float>& a) { return partnersFirst(a, taps); };
    const Plane<float> expected = naive<float, float>(src, before, k, border, 0.75F, sum, sum);
    onEachRow([&] {
      Plane<float> dst = before;
      EXPECT_EQ(filterBand(src, dst, 0, height, border, 0.75F, made), ippStsNoErr);
      EXPECT_TRUE(sameBits(dst, expected)) << "k " << k;
    });
  });
}

TEST(GaussianBand, BandsEqualTheWhole) {
  for (const unsigned kind : {1U, 3U, 6U}) {
    for (const int bandHeight : {1, 3, 8, 20}) {
      const Plane<float> src(150, 41, 0, 3);
      const SpecAndBuffer made = makeBandSpec(150, 41, 9, 2.0F);
      Plane<float> whole(150, 41, 2, 4);
      Plane<float> pieces = whole;
      ASSERT_EQ(filterBand(src, whole, 0, 41, kind, 0.5F, made), ippStsNoErr);
      for (int y = 0; y < 41;) {
        int height = bandHeight;
        unsigned border = kind + (y > 0 ? 16 : 0);
        if (41 - y - height < 4) {
          height = 41 - y;
        } else {
          border += 32;
        }
        // A low band has fewer than r real rows above it as long as it is near the top: only wholes of r rows split.
        if (y > 0 && y < 4) border -= 16, height = 4;
        if ((border & 16) == 0 && y > 0) {
          y = 4;
          continue;
        }
        ASSERT_EQ(filterBand(src, pieces, y, height, border, 0.5F, made), ippStsNoErr);
        y += height;
      }
      if (bandHeight >= 4) {
        EXPECT_TRUE(sameBits(pieces, whole)) << kind << ' ' << bandHeight;
      }
    }
  }
}

}  // namespace
