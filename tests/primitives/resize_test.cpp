#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "primitives/neighbourhood.h"

namespace {

// One axis by its formula.
struct Tap {
  int index;
  float weight;
};
Tap tapAt(int i, int source, int target) {
  const int g = std::gcd(source, target);
  const double r = static_cast<double>(source / g) / static_cast<double>(target / g);
  const double p = (i + 0.5) * r - 0.5;
  return {static_cast<int>(std::floor(p)), static_cast<float>(p - std::floor(p))};
}
int startOf(int offset, int source, int target) {
  const int g = std::gcd(source, target);
  return static_cast<int>(std::floor(offset * (static_cast<double>(source / g) / static_cast<double>(target / g))));
}

FencedMemory makeSpec(IppiSize source, IppiSize target) {
  int size = 0;
  int initSize = 0;
  EXPECT_EQ(ippiResizeGetSize_32f(source, target, ippLinear, 0, &size, &initSize), ippStsNoErr);
  EXPECT_EQ(size, 8 * ((target.width + 31) / 32 * 32 + (target.height + 31) / 32 * 32) + 304);
  EXPECT_EQ(initSize, 64);
  FencedMemory spec(size, 20);
  EXPECT_EQ(ippiResizeLinearInit_32f(source, target, spec.get()), ippStsNoErr);
  return spec;
}

// The target from offset on, src lying as the whole source does.
IppStatus resize(const Plane<float>& src, Plane<float>& dst, IppiPoint offset, IppiSize size, int border,
                 const FencedMemory& spec, IppiSize target) {
  int bufferSize = 0;
  ippiResizeGetBufferSize_8u(spec.get(), size, 1, &bufferSize);
  const FencedMemory buffer(bufferSize, 8);
  const float* from = &src.first()[startOf(offset.x, src.width(), target.width)] +
                      startOf(offset.y, src.height(), target.height) * (src.step() / 4);
  return ippiResizeLinear_32f_C1R(from, src.step(), &dst.at(offset.x, offset.y), dst.step(), offset, size, border,
                                  nullptr, spec.get(), buffer.get());
}

Plane<float> naive(const Plane<float>& src, Plane<float> dst, IppiPoint offset, IppiSize size, IppiSize target,
                   int border) {
  const auto rule = static_cast<unsigned>(border);
  for (int y = offset.y; y < offset.y + size.height; ++y) {
    const Tap row = tapAt(y, src.height(), target.height);
    for (int x = offset.x; x < offset.x + size.width; ++x) {
      const Tap column = tapAt(x, src.width(), target.width);
      const auto across = [&](int line) {
        line = continued(line, src.height(), rule, 16, 1, 1).n;
        const float a = src.at(continued(column.index, src.width(), rule, 64, 1, 1).n, line);
        const float b = src.at(continued(column.index + 1, src.width(), rule, 64, 1, 1).n, line);
        return a + (b - a) * column.weight;
      };
      const float h0 = across(row.index);
      const float h1 = across(row.index + 1);
      dst.at(x, y) = h0 + (h1 - h0) * row.weight;
    }
  }
  return dst;
}

void expectFormula(IppiSize source, IppiSize target, IppiPoint offset, IppiSize size, int border) {
  SCOPED_TRACE(testing::Message() << "from " << source.width << " x " << source.height << ", border " << border
                                  << ", offset " << offset.x << ", " << offset.y);
  const FencedMemory spec = makeSpec(source, target);
  const Plane<float> src(source.width, source.height, 2, static_cast<unsigned>(target.width));
  const Plane<float> before(target.width, target.height, 2, 1);
  const Plane<float> expected = naive(src, before, offset, size, target, border);
  onEachRow([&] {
    Plane<float> dst = before;
    EXPECT_EQ(resize(src, dst, offset, size, border, spec, target), ippStsNoErr);
    EXPECT_TRUE(sameBits(dst, expected));
  });
}
void expectFormula(IppiSize source, IppiSize target) { expectFormula(source, target, {0, 0}, target, ippBorderRepl); }

int between(std::mt19937& random, int lowest, int highest) {
  return lowest + static_cast<int>(random() % static_cast<unsigned>(highest - lowest + 1));
}

TEST(Resize, EqualsTheFormulaAtAllSizes) {
  std::mt19937 random(3);
  for (int sourceWidth = 2; sourceWidth <= 40; ++sourceWidth) {
    for (int targetWidth = 1; targetWidth <= 40 && !HasFailure(); ++targetWidth) {
      expectFormula({sourceWidth, between(random, 2, 40)}, {targetWidth, between(random, 1, 40)});
    }
  }
  for (const int width : {100, 127, 128, 130, 300}) {
    for (const int odd : {0, 1}) {
      expectFormula({2 * width + odd, 8 + odd}, {width, 4});
      expectFormula({width, 4}, {2 * width + odd, 8 + odd});
    }
  }
  expectFormula({100, 100}, {75, 75});
}

TEST(Resize, PartsAndNeighboursInMemory) {
  std::mt19937 random(4);
  for (int i = 0; i < 200 && !HasFailure(); ++i) {
    const IppiSize source{between(random, 2, 30), between(random, 2, 30)};
    const IppiSize target{between(random, 1, 70), between(random, 1, 70)};
    const IppiPoint offset{between(random, 0, target.width - 1), between(random, 0, target.height - 1)};
    const IppiSize size{between(random, 1, target.width - offset.x), between(random, 1, target.height - offset.y)};
    if (source.width == target.width && source.height == target.height) continue;  // the copy: see below
    for (int flags = 0; flags < 256; flags += 16) {
      expectFormula(source, target, offset, size, flags == 240 ? ippBorderInMem : flags + ippBorderRepl);
    }
  }
}

TEST(Resize, EqualSizesCopyEveryBit) {
  const float samples[] = {-0.0F, 1.0F, INFINITY, -1e-45F, 3e38F, -3e38F, NAN};
  Plane<float> src(37, 11, 2, 8);
  for (int y = 0; y < 11; ++y) {
    for (int x = 0; x < 37; ++x) src.at(x, y) = samples[(x + 3 * y) % 7];
  }
  const FencedMemory spec = makeSpec(src.size(), src.size());
  for (const int border : {1, 17, 240}) {
    Plane<float> dst = src;
    for (int y = 3; y < 10; ++y) std::fill_n(&dst.at(5, y), 9, 42.0F);
    ASSERT_EQ(resize(src, dst, {5, 3}, {9, 7}, border, spec, src.size()), ippStsNoErr);
    EXPECT_TRUE(sameBits(dst, src));
  }
}

TEST(Resize, ClipsToTheSpecificationAndSaysSo) {
  const Plane<float> src(10, 10, 0, 1);
  const Plane<float> before(20, 20, 4, 2);
  const FencedMemory spec = makeSpec(src.size(), {20, 20});
  int size = 0;
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec.get(), {23, 20}, 1, &size), ippStsSizeWrn);
  EXPECT_EQ(size, 96 + 96 + 2 * 96 + 64);
  Plane<float> dst = before;
  EXPECT_EQ(resize(src, dst, {0, 0}, {20, 23}, 1, spec, {20, 20}), ippStsSizeWrn);
  EXPECT_TRUE(sameBits(dst, naive(src, before, {0, 0}, {20, 20}, {20, 20}, 1)));
  dst = before;
  EXPECT_EQ(resize(src, dst, {15, 18}, {20, 20}, 1, spec, {20, 20}), ippStsNoErr);
  EXPECT_TRUE(sameBits(dst, naive(src, before, {15, 18}, {5, 2}, {20, 20}, 1)));
}

TEST(Resize, SizeQueriesCheckInOrder) {
  const struct {
    IppiSize source;
    IppiSize target;
    int interpolation;
    IppStatus expected;
  } cases[] = {
      {{0, -1}, {4, 4}, 3, ippStsNoOperation},
      {{4, 4}, {4, 0}, 2, ippStsNoOperation},
      {{4, -4}, {4, 4}, 3, ippStsSizeErr},
      {{4, 4}, {4, 4}, 3, ippStsInterpolationErr},
      {{1, 4}, {4, 4}, 0, ippStsNotSupportedModeErr},
      {{1, 4}, {4, 4}, 2, ippStsSizeErr},
      {{4, 1}, {4, 4}, 2, ippStsSizeErr},
      {{4, 4}, {0x7FFFFFFF, 4}, 2, ippStsSizeTooBigErr},
      {{4, 4}, {0x0FFFFFFF, 4}, 2, ippStsSizeTooBigErr},
      {{2, 2}, {1, 1}, 2, ippStsNoErr},
  };
  for (const auto& c : cases) {
    int size = -1;
    int initSize = -1;
    EXPECT_EQ(ippiResizeGetSize_32f(c.source, c.target, c.interpolation, 0, &size, &initSize), c.expected);
    EXPECT_EQ(size == -1, c.expected != ippStsNoErr);
    EXPECT_EQ(ippiResizeGetSize_32f(c.source, c.target, c.interpolation, 0, nullptr, &initSize), ippStsNullPtrErr);
  }
  alignas(64) unsigned char spec[1024] = {};
  EXPECT_EQ(ippiResizeLinearInit_32f({4, 0}, {4, 4}, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(ippiResizeLinearInit_32f({-4, 0}, {4, 4}, spec), ippStsNoOperation);
  EXPECT_EQ(ippiResizeLinearInit_32f({4, 4}, {4, -4}, spec), ippStsSizeErr);
  EXPECT_EQ(ippiResizeLinearInit_32f({4, 1}, {4, 4}, spec), ippStsSizeErr);

  int size = 0;
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {0, 4}, 2, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {0, 4}, 2, &size), ippStsNoOperation);
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {-1, 4}, 2, &size), ippStsContextMatchErr);
  ASSERT_EQ(ippiResizeLinearInit_32f({4, 4}, {7, 5}, spec), ippStsNoErr);
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {-1, 4}, 2, &size), ippStsNumChannelsErr);
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {-1, 4}, 3, &size), ippStsSizeErr);
  EXPECT_EQ(ippiResizeGetBufferSize_8u(spec, {7, 5}, 3, &size), ippStsNoErr);
  EXPECT_EQ(size, 32 + 32 + 2 * 96 + 64);
}

TEST(Resize, CallChecksInOrder) {
  Plane<float> image(8, 8, 0, 1);
  const FencedMemory spec = makeSpec({4, 4}, {8, 8});
  alignas(64) unsigned char buffer[1024];
  alignas(64) unsigned char noSpec[256] = {};
  const auto run = [&](int border, const float* src, int width, const unsigned char* with, int step, int x) {
    return ippiResizeLinear_32f_C1R(src, step, image.first(), image.step(), {x, 0}, {width, 8}, border, nullptr, with,
                                    buffer);
  };
  const float* const src = image.first();
  EXPECT_EQ(run(257, nullptr, 0, noSpec, 3, 9), ippStsBorderErr);
  EXPECT_EQ(run(-15, nullptr, 0, noSpec, 3, 9), ippStsBorderErr);
  EXPECT_EQ(run(3, nullptr, 0, noSpec, 3, 9), ippStsBorderErr);
  EXPECT_EQ(run(1, nullptr, 0, noSpec, 3, 9), ippStsNullPtrErr);
  EXPECT_EQ(run(1, src, 0, noSpec, 3, 9), ippStsNoOperation);
  EXPECT_EQ(run(1, src, -1, noSpec, 3, 9), ippStsContextMatchErr);
  EXPECT_EQ(run(1, src, -1, spec.get(), 3, 9), ippStsSizeErr);
  EXPECT_EQ(run(1, src, 8, spec.get(), 3, 9), ippStsStepErr);
  EXPECT_EQ(run(1, src, 8, spec.get(), 16, 8), ippStsOutOfRangeErr);
  EXPECT_EQ(run(1, src, 8, spec.get(), 16, -1), ippStsOutOfRangeErr);
}

}  // namespace
