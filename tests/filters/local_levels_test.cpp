// Local auto levels, local contrast and the local linear filter.

#include <algorithm>
#include <vector>

#include "filters/local_auto_levels.h"
#include "support/targets.h"

namespace {

float levelled(float src, float low, float high) {
  const float d = high - low;
  const float t = 1.0F - d;
  return t * src + (src - low);
}

KivImage levelled(const KivImage& src, const KivImage& low, const KivImage& high) {
  return imageOf(low.size, 1,
                 [&](int, int x, int y) { return levelled(*src.At(0, x, y), *low.At(0, x, y), *high.At(0, x, y)); });
}

float overlaid(float top, float base) {
  return base < 0.5F ? base * top * 2.0F : 1.0F - (1.0F - base) * (1.0F - top) * 2.0F;
}

struct Points {
  KivImage low, high;
};

Points pointsOf(const KivImage& src, int radius, bool insideOnly) {
  const int side = 2 * radius + 1;
  std::vector<unsigned char> square(static_cast<std::size_t>(side * side), 1);
  Points points;
  points.high.Dilate(src, square.data(), side, insideOnly);
  points.low.Erode(src, square.data(), side, insideOnly);
  return points;
}

class LocalLevels : public EachRow {};

TEST_P(LocalLevels, KernelFollowsTheFormulaOverWholeRows) {
  KivImage src = randomImage(37, 5, 1, 1);
  KivImage low = randomImage(37, 5, 1, 2);
  KivImage high = randomImage(37, 5, 1, 3);
  const KivImage expected = levelled(src, low, high);
  KivImage dst(src.size, 1);
  LocalAutoLevelsKiv(src.planes[0], low.planes[0], high.planes[0], dst.planes[0], 5, src.stride / 4);
  EXPECT_TRUE(sameBits(dst, expected));
  LocalAutoLevelsKiv(src.planes[0], low.planes[0], high.planes[0], high.planes[0], 5, src.stride / 4);
  EXPECT_TRUE(sameBits(high, expected));
}

INSTANTIATE_TEST_SUITE_P(Rows, LocalLevels, allRows(), rowName);

TEST(LocalAutoLevels, FollowsItsSteps) {
  const KivImage src = randomImage(70, 51, 1, 1);
  for (const int radius : {0, 1, 6, 60}) {
    const auto r = static_cast<float>(radius);
    Points points = pointsOf(src, radius, false);
    points.high.GaussBlurDecimate(points.high, r * 0.7F, 4);
    points.low.GaussBlurDecimate(points.low, r * 0.7F, 4);
    const KivImage levels = levelled(src, points.low, points.high);
    expectInEveryTarget(
        src, levels, [radius](KivImage& target, const KivImage& from) { target.LocalAutoLevels(from, radius, false); });

    KivImage top = made(&KivImage::HighPassPS, points.low, r, 4);
    KivImage base = made(&KivImage::HighPassPS, points.high, r, 4);
    KivImage detailed = made(&KivImage::LocalAutoLevels, src, radius, true);
    // The kernel selects its branch by a factor of 1 or 0, which may turn a zero's sign.
    EXPECT_TRUE(within(0, detailed, combined(combined(top, base, overlaid), levels, overlaid)));
  }
}

// One value each then, as good as unblurred.
TEST(LocalAutoLevels, TakesThePicturesOwnExtremesForARadiusFarBeyondIt) {
  const KivImage src = randomImage(24, 410, 1, 1);
  KivImage levels = made(&KivImage::LocalAutoLevels, src, 65536, false);
  EXPECT_TRUE(
      within(1e-3, levels, levelled(src, flatImage(src.size, 1, src.Min()), flatImage(src.size, 1, src.Max()))));
}

TEST(LocalAutoLevels, FillsTheSizeThatTargetAndSourceShareOnPlane0) {
  const KivImage src = randomImage(40, 30, 3, 1);
  KivImage levels = made(&KivImage::LocalAutoLevels, src, 3, true);
  KivImage larger = randomImage(50, 45, 3, 2);
  KivImage expected = copyOf(larger);
  expected.Plane(0).ROI(0, 0, 40, 30) = levels.Plane(0);
  larger.LocalAutoLevels(src, 3, true);
  EXPECT_TRUE(sameBits(larger, expected));
  KivImage smaller(20, 25, 1);
  smaller.LocalAutoLevels(src, 3, true);
  EXPECT_TRUE(sameBits(smaller, levels.Plane(0).ROI(0, 0, 20, 25)));
}

TEST(LocalAutoLevelsOld, FollowsItsStepsOnTheRegionThatTheyServe) {
  const int radius = 5;
  const KivImage src = randomImage(60, 49, 2, 1);
  const Points points = pointsOf(src, radius, true);
  KivImage high = made(&KivImage::Gaussian_IIR_Blur, points.high, double{static_cast<float>(radius) * 0.7F});
  KivImage low = made(&KivImage::Gaussian_IIR_Blur, points.low, double{static_cast<float>(radius) * 0.7F});
  KivImage expected = imageOf({60 - 2 * radius - 8, 49 - 2 * radius - 8}, 2, [&](int p, int x, int y) {
    const float s = *src.At(p, x + radius + 4, y + radius + 4);
    const float range = (*high.At(p, x + 4, y + 4) - *low.At(p, x + 4, y + 4)) * -1.0F + 1.0F;
    return (s - *low.At(p, x + 4, y + 4)) + range * s;
  });
  KivImage plain = made(&KivImage::LocalAutoLevelsOld, src, radius, false);
  EXPECT_TRUE(sameBits(plain, expected));

  KivImage detailed = made(&KivImage::LocalAutoLevelsOld, src, radius, true);
  for (const KivImage* point : {&high, &low}) {
    KivImage detail = made(&KivImage::HighPassFilter, point->Sub_Section(2, 2), static_cast<float>(radius), false);
    expected.OverlayBlend(expected, detail.Sub_Section(2, 2));
  }
  EXPECT_TRUE(sameBits(detailed, expected));
  EXPECT_THROW(KivImage().LocalAutoLevelsOld(src, 21, false), NO_MEMORY_ERROR);
}

TEST(LocalContrast, MixesItsPassesByAmount) {
  const KivImage src = randomImage(50, 40, 3, 1);
  const KivImage before = randomImage(50, 40, 3, 2);
  const auto run = [&](float radius1, float amount1, float radius2, float amount2) {
    KivImage result = copyOf(before);
    result.ApplyLocalContrast(src, radius1, amount1, radius2, amount2);
    return result;
  };
  // As a pass of this radius leaves plane 0.
  const auto mixed = [](const KivImage& image, int radius, float amount) {
    KivImage levels = made(&KivImage::LocalAutoLevels, image, radius, true);
    return combined(levels.Plane(0), image, [amount](float level, float v) {
      return static_cast<float>(double{level * amount} + double{v} * (1.0 - double{amount}));
    });
  };
  EXPECT_TRUE(sameBits(run(0.0F, 0.7F, -1.0F, 0.7F), src));

  KivImage expected = copyOf(before);
  const KivImage first = mixed(src.Plane(0), 7, 0.3F);
  expected.Plane(0) = first;
  EXPECT_TRUE(sameBits(run(7.9F, 0.3F, 0.0F, 0.0F), expected));
  // The second pass works on the result of the first.
  expected.Plane(0) = mixed(first, 3, 0.6F);
  EXPECT_TRUE(sameBits(run(7.0F, 0.3F, 3.0F, 0.6F), expected));
  // A radius below 1 is a pass of radius 0, not a copy: the planes above plane 0 stay.
  expected.Plane(0) = mixed(src.Plane(0), 0, 1.0F);
  EXPECT_TRUE(sameBits(run(0.5F, 1.0F, 0.0F, 0.0F), expected));
  // A second pass alone starts from a copy.
  expected = src;
  expected.Plane(0) = first;
  EXPECT_TRUE(sameBits(run(0.0F, 0.0F, 7.0F, 0.3F), expected));
  EXPECT_THROW(run(3e9F, 1.0F, 0.0F, 0.0F), NO_MEMORY_ERROR);
}

TEST(LocalLinearFilter, TakesTheGivenStepsInEveryTarget) {
  const KivImage src = randomImage(45, 33, 2, 4);
  const float eps = 0.02F;
  for (const int radius : {-3, 0, 4}) {
    const auto boxed = [&](const KivImage& image) {
      KivImage mean = made(&KivImage::Box_Blur, image, std::max(radius, 0));
      return mean;
    };
    const KivImage mean = boxed(src);
    const KivImage a = combined(boxed(mapped(src, [](float v) { return v * v; })), mean, [&](float square, float m) {
      const float variance = square - m * m;
      return variance / (variance + eps);
    });
    const KivImage b = boxed(combined(a, mean, [](float v, float m) { return (v * -1.0F + 1.0F) * m; }));
    const KivImage product = combined(boxed(a), src, [](float v, float s) { return v * s; });
    const KivImage expected = combined(product, b, [](float v, float w) { return v + w; });
    expectInEveryTarget(src, expected, [&](KivImage& target, const KivImage& from) {
      target.ApplyLocalLinearFilter(from, radius, eps);
    });
  }
}

}  // namespace
