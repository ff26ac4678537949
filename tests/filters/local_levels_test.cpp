// Local auto levels, local contrast and the local linear filter.

#include <algorithm>
#include <vector>

#include "filters/local_auto_levels.h"
#include "support/each_row_test.h"
#include "support/images.h"

namespace {

float levelled(float src, float low, float high) {
  const float d = high - low;
  const float t = 1.0F - d;
  return t * src + (src - low);
}

template <typename Formula>
KivImage perSample(const KivImage& like, Formula formula) {
  KivImage result(like.size, like.channels);
  for (int p = 0; p < like.channels; ++p) {
    for (int y = 0; y < like.size.height; ++y) {
      for (int x = 0; x < like.size.width; ++x) *result.At(p, x, y) = formula(p, x, y);
    }
  }
  return result;
}

std::vector<unsigned char> squareOf(int radius) {
  return std::vector<unsigned char>(static_cast<std::size_t>((2 * radius + 1) * (2 * radius + 1)), 1);
}

struct Points {
  KivImage low, high;
};

Points smoothedPoints(const KivImage& src, int radius) {
  std::vector<unsigned char> square = squareOf(radius);
  Points points;
  points.high.Dilate(src, square.data(), 2 * radius + 1, false);
  points.low.Erode(src, square.data(), 2 * radius + 1, false);
  points.high.GaussBlurDecimate(points.high, static_cast<float>(radius) * 0.7F, 4);
  points.low.GaussBlurDecimate(points.low, static_cast<float>(radius) * 0.7F, 4);
  return points;
}

float overlaid(float top, float base) {
  return base < 0.5F ? base * top * 2.0F : 1.0F - (1.0F - base) * (1.0F - top) * 2.0F;
}

class LocalLevels : public EachRow {};

TEST_P(LocalLevels, KernelFollowsTheFormulaOverWholeRows) {
  const ForcedRow forced(GetParam());
  KivImage src = randomImage(37, 5, 1, 1);
  KivImage low = randomImage(37, 5, 1, 2);
  KivImage high = randomImage(37, 5, 1, 3);
  const KivImage expected = perSample(
      src, [&](int, int x, int y) { return levelled(*src.At(0, x, y), *low.At(0, x, y), *high.At(0, x, y)); });
  KivImage dst(src.size, 1);
  LocalAutoLevelsKiv(src.planes[0], low.planes[0], high.planes[0], dst.planes[0], 5, src.stride / 4);
  EXPECT_TRUE(sameBits(dst, expected));
  LocalAutoLevelsKiv(src.planes[0], low.planes[0], high.planes[0], high.planes[0], 5, src.stride / 4);
  EXPECT_TRUE(sameBits(high, expected));
}

INSTANTIATE_TEST_SUITE_P(Rows, LocalLevels, allRows(), rowName);

class LocalAutoLevels : public testing::TestWithParam<int> {};

TEST_P(LocalAutoLevels, FollowsItsSteps) {
  const int radius = GetParam();
  const KivImage src = randomImage(70, 51, 3, 1);
  Points points = smoothedPoints(src.Plane(0), radius);
  const KivImage levels = perSample(points.low, [&](int, int x, int y) {
    return levelled(*src.At(0, x, y), *points.low.At(0, x, y), *points.high.At(0, x, y));
  });
  KivImage result = randomImage(70, 51, 3, 2);
  result.LocalAutoLevels(src, radius, false);
  EXPECT_TRUE(sameBits(result.Plane(0), levels));
  EXPECT_TRUE(sameBits(result.Plane(2), randomImage(70, 51, 3, 2).Plane(2)));

  KivImage top;
  top.HighPassPS(points.low, static_cast<float>(radius), 4);
  KivImage base;
  base.HighPassPS(points.high, static_cast<float>(radius), 4);
  const KivImage detailed = perSample(levels, [&](int, int x, int y) {
    return overlaid(overlaid(*top.At(0, x, y), *base.At(0, x, y)), *levels.At(0, x, y));
  });
  KivImage parent = randomImage(90, 60, 3, 3);
  KivImage view = parent.ROI(8, 4, 70, 51);
  view.LocalAutoLevels(src, radius, true);
  // The kernel selects its branch by a factor of 1 or 0, which may turn a zero's sign.
  EXPECT_TRUE(within(0, view.Plane(0), detailed));
  EXPECT_TRUE(sameBits(parent.ROI(78, 0, 12, 60), randomImage(90, 60, 3, 3).ROI(78, 0, 12, 60)));

  KivImage inPlace;
  inPlace = src;
  inPlace.LocalAutoLevels(inPlace, radius, false);
  EXPECT_TRUE(sameBits(inPlace.Plane(0), levels));
}

TEST(LocalAutoLevelsRule, FillsTheSizeThatTargetAndSourceShare) {
  const KivImage src = randomImage(40, 30, 1, 1);
  KivImage expected;
  expected.LocalAutoLevels(src, 3, true);
  const KivImage before = randomImage(50, 45, 1, 2);
  KivImage larger;
  larger = before;
  larger.LocalAutoLevels(src, 3, true);
  EXPECT_TRUE(sameBits(larger.ROI(0, 0, 40, 30), expected));
  EXPECT_TRUE(sameBits(larger.ROI(40, 0, 10, 45), before.ROI(40, 0, 10, 45)));
  EXPECT_TRUE(sameBits(larger.ROI(0, 30, 50, 15), before.ROI(0, 30, 50, 15)));
  KivImage smaller(20, 25, 1);
  smaller.LocalAutoLevels(src, 3, true);
  EXPECT_TRUE(sameBits(smaller, expected.ROI(0, 0, 20, 25)));
}

INSTANTIATE_TEST_SUITE_P(Radii, LocalAutoLevels, testing::Values(0, 1, 6, 60));

TEST(LocalAutoLevelsOld, FollowsItsStepsOnTheRegionThatTheyServe) {
  const int radius = 5;
  const KivImage src = randomImage(60, 49, 2, 1);
  std::vector<unsigned char> square = squareOf(radius);
  Points points;
  points.high.Dilate(src, square.data(), 2 * radius + 1, true);
  points.low.Erode(src, square.data(), 2 * radius + 1, true);
  points.high.Gaussian_IIR_Blur(points.high, double{static_cast<float>(radius) * 0.7F});
  points.low.Gaussian_IIR_Blur(points.low, double{static_cast<float>(radius) * 0.7F});
  KivImage result;
  result.LocalAutoLevelsOld(src, radius, false);
  ASSERT_EQ(result.size.width, 60 - 2 * radius - 8);
  ASSERT_EQ(result.size.height, 49 - 2 * radius - 8);
  EXPECT_TRUE(sameBits(result, perSample(result, [&](int p, int x, int y) {
                         const float s = *src.At(p, x + radius + 4, y + radius + 4);
                         const float low = *points.low.At(p, x + 4, y + 4);
                         const float range = (*points.high.At(p, x + 4, y + 4) - low) * -1.0F + 1.0F;
                         return (s - low) + range * s;
                       })));

  KivImage detailed;
  detailed.LocalAutoLevelsOld(src, radius, true);
  KivImage white = points.high.Sub_Section(2, 2);
  KivImage black = points.low.Sub_Section(2, 2);
  white.HighPassFilter(white, static_cast<float>(radius), false);
  black.HighPassFilter(black, static_cast<float>(radius), false);
  result.OverlayBlend(result, white.Sub_Section(2, 2));
  result.OverlayBlend(result, black.Sub_Section(2, 2));
  EXPECT_TRUE(sameBits(detailed, result));
  EXPECT_THROW(KivImage().LocalAutoLevelsOld(src, 21, false), NO_MEMORY_ERROR);
}

TEST(LocalContrast, MixesItsPassesByAmount) {
  const KivImage src = randomImage(50, 40, 3, 1);
  KivImage copy;
  copy.ApplyLocalContrast(src, 0.0F, 0.7F, -1.0F, 0.7F);
  EXPECT_TRUE(sameBits(copy, src));

  KivImage levels;
  levels.LocalAutoLevels(src, 7, true);
  KivImage result = randomImage(50, 40, 3, 2);
  result.ApplyLocalContrast(src, 7.9F, 0.3F, 0.0F, 0.0F);
  EXPECT_TRUE(sameBits(result.Plane(0), perSample(src.Plane(0), [&](int, int x, int y) {
                         return static_cast<float>(double{*levels.At(0, x, y) * 0.3F} +
                                                   double{*src.At(0, x, y)} * (1.0 - double{0.3F}));
                       })));
  EXPECT_TRUE(sameBits(result.Plane(1), randomImage(50, 40, 3, 2).Plane(1)));

  KivImage second;
  second.ApplyLocalContrast(src, 0.0F, 0.0F, 7.0F, 0.3F);
  EXPECT_TRUE(sameBits(second.Plane(0), result.Plane(0)));

  // The second pass works on the result of the first.
  KivImage both;
  both.ApplyLocalContrast(src, 7.0F, 0.3F, 3.0F, 0.6F);
  KivImage twice;
  twice.ApplyLocalContrast(result.Plane(0), 0.0F, 0.0F, 3.0F, 0.6F);
  EXPECT_TRUE(sameBits(both.Plane(0), twice));

  KivImage none;
  none.ApplyLocalContrast(src, 7.0F, 0.0F, 7.0F, 0.0F);
  EXPECT_TRUE(sameBits(none.Plane(0), src.Plane(0)));
  // A radius below 1 is a pass of radius 0, not a copy: the planes above plane 0 stay.
  KivImage below1 = randomImage(50, 40, 3, 2);
  below1.ApplyLocalContrast(src, 0.5F, 1.0F, 0.0F, 0.0F);
  EXPECT_TRUE(within(1e-6, below1.Plane(0), src.Plane(0)));
  EXPECT_TRUE(sameBits(below1.Plane(1), randomImage(50, 40, 3, 2).Plane(1)));
  EXPECT_THROW(none.ApplyLocalContrast(src, 3e9F, 1.0F, 0.0F, 0.0F), NO_MEMORY_ERROR);
}

// The mean over a square with repeated edges, in double precision.
std::vector<double> boxMean(const std::vector<double>& v, int w, int h, int r) {
  std::vector<double> mean(v.size());
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      double sum = 0;
      for (int j = -r; j <= r; ++j) {
        for (int i = -r; i <= r; ++i) {
          sum += v[static_cast<std::size_t>(std::clamp(y + j, 0, h - 1) * w + std::clamp(x + i, 0, w - 1))];
        }
      }
      mean[static_cast<std::size_t>(y * w + x)] = sum / ((2 * r + 1) * (2 * r + 1));
    }
  }
  return mean;
}

TEST(LocalLinearFilter, AgreesWithTheModelInDoublePrecision) {
  const int w = 40;
  const int h = 31;
  const int r = 3;
  const double eps = 0.05;
  const KivImage src = randomImage(w, h, 2, 1);
  KivImage result;
  result.ApplyLocalLinearFilter(src, r, static_cast<float>(eps));
  for (int p = 0; p < 2; ++p) {
    std::vector<double> v;
    for (int y = 0; y < h; ++y) v.insert(v.end(), src.At(p, 0, y), src.At(p, 0, y) + w);
    std::vector<double> squares = v;
    for (double& s : squares) s *= s;
    const std::vector<double> mean = boxMean(v, w, h, r);
    std::vector<double> a = boxMean(squares, w, h, r);
    std::vector<double> b = mean;
    for (std::size_t i = 0; i < a.size(); ++i) {
      const double variance = a[i] - mean[i] * mean[i];
      a[i] = variance / (variance + eps);
      b[i] = (1 - a[i]) * mean[i];
    }
    a = boxMean(a, w, h, r);
    b = boxMean(b, w, h, r);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const auto i = static_cast<std::size_t>(y * w + x);
        ASSERT_NEAR(*result.At(p, x, y), a[i] * v[i] + b[i], 1e-4);
      }
    }
  }
}

TEST(LocalLinearFilter, TakesTheGivenStepsAlsoInPlace) {
  const KivImage src = randomImage(45, 33, 2, 4);
  const int r = 4;
  const float eps = 0.02F;
  const auto boxed = [](const KivImage& image) {
    KivImage mean;
    mean.Box_Blur(image, r);
    return mean;
  };
  const KivImage mean = boxed(src);
  const KivImage squares =
      boxed(perSample(src, [&](int p, int x, int y) { return *src.At(p, x, y) * *src.At(p, x, y); }));
  const KivImage a = perSample(src, [&](int p, int x, int y) {
    const float m = *mean.At(p, x, y);
    const float variance = *squares.At(p, x, y) - m * m;
    return variance / (variance + eps);
  });
  const KivImage b =
      boxed(perSample(src, [&](int p, int x, int y) { return (*a.At(p, x, y) * -1.0F + 1.0F) * *mean.At(p, x, y); }));
  const KivImage meanOfA = boxed(a);
  const KivImage expected =
      perSample(src, [&](int p, int x, int y) { return *meanOfA.At(p, x, y) * *src.At(p, x, y) + *b.At(p, x, y); });
  KivImage image;
  image = src;
  image.ApplyLocalLinearFilter(image, r, eps);
  EXPECT_TRUE(sameBits(image, expected));
}

TEST(LocalLinearFilter, KeepsFlatImagesAndWindowsOfOneSample) {
  KivImage flat(30, 20, 1);
  fill(flat, 0.4F);
  KivImage result;
  result.ApplyLocalLinearFilter(flat, 4, 0.01F);
  EXPECT_TRUE(within(1e-6, result, flat));
  const KivImage src = randomImage(30, 20, 1, 1);
  for (const int radius : {0, -3}) {
    KivImage single;
    single.ApplyLocalLinearFilter(src, radius, 0.01F);
    EXPECT_TRUE(within(1e-6, single, src));
  }
}

}  // namespace
