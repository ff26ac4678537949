#include <algorithm>
#include <limits>
#include <vector>

#include "support/images.h"

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// The Gaussian of the given reach in double precision, the edge samples repeated.
KivImage gaussian(const KivImage& src, double sigma, int reach) {
  std::vector<double> taps;
  double sum = 0.0;
  for (int d = -reach; d <= reach; ++d) taps.push_back(std::exp(-d * d / (2.0 * sigma * sigma)));
  for (const double tap : taps) sum += tap;
  const int w = src.size.width;
  const int h = src.size.height;
  KivImage result(src.size, src.channels);
  for (int plane = 0; plane < src.channels; ++plane) {
    std::vector<double> rows(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
    const auto row = [&](int x, int y) -> double& { return rows[static_cast<std::size_t>(y * w + x)]; };
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        for (int d = -reach; d <= reach; ++d) {
          row(x, y) +=
              taps[static_cast<std::size_t>(d + reach)] / sum * double{*src.At(plane, std::clamp(x + d, 0, w - 1), y)};
        }
      }
    }
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        double value = 0.0;
        for (int d = -reach; d <= reach; ++d) {
          value += taps[static_cast<std::size_t>(d + reach)] / sum * row(x, std::clamp(y + d, 0, h - 1));
        }
        *result.At(plane, x, y) = static_cast<float>(value);
      }
    }
  }
  return result;
}

template <typename Operation>
int thrownStatus(Operation operation) {
  try {
    operation();
  } catch (const int status) {
    return status;
  }
  return 0;
}

TEST(GaussBlur, IsTheGaussianOnAllPlanesAlsoInPlace) {
  const KivImage src = randomImage(53, 41, 3, 1);
  for (const float sigma : {0.3F, 1.0F, 2.6F, 15.0F}) {
    KivImage blurred;
    blurred.Gauss_Blur(src, sigma, 3, true);
    EXPECT_TRUE(within(2e-6, blurred, gaussian(src, double{sigma}, static_cast<int>(std::ceil(3.0F * sigma)))));
    KivImage inPlace = randomImage(53, 41, 3, 1);
    inPlace.Gauss_Blur(inPlace, sigma, 3, true);
    EXPECT_TRUE(sameBits(inPlace, blurred));
  }
}

TEST(GaussBlur, ReadsNeighboursOfAView) {
  const KivImage parent = randomImage(50, 40, 2, 2);
  KivImage whole;
  whole.Gauss_Blur(parent, 1.5F, 4, true);
  KivImage inner;
  inner.Gauss_Blur(parent.Sub_Section(6), 1.5F, 4, false);
  EXPECT_TRUE(sameBits(inner, whole.Sub_Section(6)));
}

TEST(GaussBlur, ThrowsTheStatusOfWhatIsRefused) {
  KivImage image = randomImage(9, 9, 1, 1);
  for (const float sigma : {0.0F, -2.0F, notANumber}) {
    EXPECT_EQ(thrownStatus([&] { image.Gauss_Blur(image, sigma, 4, true); }), ippStsBadArgErr) << sigma;
    EXPECT_EQ(thrownStatus([&] { image.GaussBlur16(image, sigma, 4, false); }), ippStsBadArgErr) << sigma;
    EXPECT_EQ(thrownStatus([&] { image.GaussBlur8(image, sigma, 4, true); }), ippStsBadArgErr) << sigma;
  }
  EXPECT_EQ(thrownStatus([&] { image.Gauss_Blur(image, -2.0F, -4, true); }), ippStsBadArgErr);
  EXPECT_EQ(thrownStatus([&] { image.Gauss_Blur(image, 2.0F, 0, true); }), ippStsBadArgErr);
  for (const float sigma : {1e7F, 1e9F, 3e38F, infinity}) {
    EXPECT_THROW(image.Gauss_Blur(image, sigma, 4, true), NO_MEMORY_ERROR) << sigma;
    EXPECT_THROW(image.GaussBlur16(image, sigma, 4, true), NO_MEMORY_ERROR) << sigma;
    EXPECT_THROW(image.GaussBlur8(image, sigma, 4, false), NO_MEMORY_ERROR) << sigma;
    EXPECT_THROW(image.GaussBlurDecimate(image, sigma, 4), NO_MEMORY_ERROR) << sigma;
  }
  EXPECT_TRUE(sameBits(image, randomImage(9, 9, 1, 1)));
}

TEST(GaussBlurOnIntegers, BlursEachPlaneFromItsOwn) {
  const struct {
    float largest;
    void (KivImage::*blur)(const KivImage&, float, int, bool);
  } variants[] = {{65535.0F, &KivImage::GaussBlur16}, {255.0F, &KivImage::GaussBlur8}};
  for (const auto& variant : variants) {
    KivImage parent(60, 50, 3);
    fillRandom(parent, 6, 0.0F, variant.largest);
    KivImage levels(60, 50, 3);
    for (int plane = 0; plane < 3; ++plane) {
      for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 60; ++x) *levels.At(plane, x, y) = std::floor(*parent.At(plane, x, y));
      }
    }
    // Rounded taps and two roundings: a level or two at either depth.
    const double tolerance = double{variant.largest} < 256.0 ? 2.0 : 6.0;
    KivImage blurred;
    (blurred.*variant.blur)(parent, 2.0F, 3, true);
    EXPECT_TRUE(within(tolerance, blurred, gaussian(levels, 2.0, 6)));
    EXPECT_TRUE(compare(blurred, blurred, [](float a, float) { return a == std::floor(a); })) << "whole levels";
    KivImage inner;
    (inner.*variant.blur)(parent.Sub_Section(6), 2.0F, 3, false);
    EXPECT_TRUE(sameBits(inner, blurred.Sub_Section(6)));
    (parent.*variant.blur)(parent, 2.0F, 3, true);
    EXPECT_TRUE(sameBits(parent, blurred));
  }
}

struct Decimation {
  int width, height;
  float sigma;
  int by;
};
class GaussBlurDecimate : public testing::TestWithParam<Decimation> {};

TEST_P(GaussBlurDecimate, BlursPlane0OfTheReducedImage) {
  const Decimation& c = GetParam();
  const KivImage src = randomImage(c.width, c.height, 2, 3);
  const KivImage before = randomImage(c.width, c.height, 2, 4);
  KivImage expected(src.size, 2);
  if (c.by == 1) {
    expected = before;
    expected.Plane(0).GaussBlurFast(src, c.sigma, 3);
  } else {
    KivImage reduced;
    reduced.Resize(src, c.width / c.by, c.height / c.by);
    KivImage blurred;
    blurred.GaussBlurFast(reduced, c.sigma / static_cast<float>(c.by), 3);
    expected.Plane(0).Resize(blurred.Plane(0), src.size);
    expected.Plane(1).Resize(reduced.Plane(1), src.size);
  }
  KivImage target(src.size, 2);
  target = before;
  target.GaussBlurDecimate(src, c.sigma, 3);
  EXPECT_TRUE(sameBits(target, expected));

  target = src;
  target.GaussBlurDecimate(target, c.sigma, 3);
  EXPECT_TRUE(sameBits(target.Plane(0), expected.Plane(0))) << "onto its own source";
  EXPECT_TRUE(sameBits(target.Plane(1), c.by == 1 ? src.Plane(1) : expected.Plane(1)));
}

INSTANTIATE_TEST_SUITE_P(Sizes, GaussBlurDecimate,
                         testing::Values(Decimation{1000, 1000, 20.0F, 4},  // 10 at 500, 5 at 250
                                         Decimation{1001, 803, 5.0F, 2},    // to 500 x 401
                                         Decimation{401, 900, 3.0F, 1}, Decimation{900, 400, 8.0F, 1},
                                         Decimation{401, 450, 3.1F, 2}, Decimation{60, 300, 4.0F, 1}));

// A target some rows away in the same picture.
TEST(GaussBlurDecimateRule, WritesOverAShiftedPartOfItsSource) {
  KivImage picture = randomImage(40, 130, 1, 5);
  const KivImage src = picture.ROI(0, 10, 40, 100);
  KivImage expected;
  expected.GaussBlurDecimate(src, 2.0F, 4);
  KivImage target = picture.ROI(0, 17, 40, 100);
  target.GaussBlurDecimate(src, 2.0F, 4);
  EXPECT_TRUE(sameBits(target, expected));
}

TEST(GaussBlurDecimateRule, ReducesForATargetOfFewerPlanes) {
  const KivImage src = randomImage(420, 410, 3, 5);
  KivImage expected;
  expected.GaussBlurDecimate(src, 6.0F, 4);
  KivImage target = randomImage(420, 410, 3, 6);
  KivImage first = target.ROI(0, 0, 420, 410);
  first.channels = 1;
  first.GaussBlurDecimate(src, 6.0F, 4);
  EXPECT_TRUE(sameBits(target.Plane(0), expected.Plane(0)));
  EXPECT_TRUE(sameBits(target.Plane(1), randomImage(420, 410, 3, 6).Plane(1)));
}

TEST(GaussBlurDecimateRule, LeavesTheTargetWhereTheKernelIsRefused) {
  for (const float sigma : {0.0F, -1.0F, notANumber}) {
    KivImage target = randomImage(9, 9, 1, 2);
    target.GaussBlurDecimate(randomImage(9, 9, 1, 1), sigma, 4);
    EXPECT_TRUE(sameBits(target, randomImage(9, 9, 1, 2)));
    target.GaussBlurDecimate(target, sigma, 4);
    EXPECT_TRUE(sameBits(target, randomImage(9, 9, 1, 2)));
  }
}

TEST(GaussBlurSSE, OnlyAllocates) {
  const KivImage src = randomImage(9, 7, 2, 1);
  KivImage target = randomImage(9, 7, 2, 2);
  KivImage scratch;
  target.GaussBlurSSE(src, scratch, 2.0F, 4);
  EXPECT_TRUE(sameBits(target, randomImage(9, 7, 2, 2)));
  EXPECT_EQ(scratch.channels, 2);
  EXPECT_EQ(scratch.size.width, 9);
  EXPECT_EQ(scratch.size.height, 7);
}

}  // namespace
