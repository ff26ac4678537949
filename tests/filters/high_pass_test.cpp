#include <cmath>
#include <tuple>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// GaussBlurDecimate on each plane by itself.
KivImage blurredPlanes(const KivImage& src, float sigma) {
  KivImage result(src.size, src.channels);
  for (int i = 0; i < src.channels; ++i) {
    KivImage plane = result.Plane(i);
    plane.GaussBlurDecimate(src.Plane(i), sigma, 4);
  }
  return result;
}

// Width, height, sigma. The last one is blurred on a reduced image.
class HighPass : public testing::TestWithParam<std::tuple<int, int, float>> {
 protected:
  static KivImage source(int channels) {
    return randomImage(std::get<0>(GetParam()), std::get<1>(GetParam()), channels, 5);
  }
  static float sigma() { return std::get<2>(GetParam()); }
};

TEST_P(HighPass, HalfStrengthTakesTheGivenStepsInEveryTarget) {
  const KivImage src = source(2);
  const KivImage expected = combined(src, blurredPlanes(src, sigma()),
                                     [](float s, float blurred) { return (blurred * -1.0F + 1.0F) * 0.5F + s * 0.5F; });
  expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
    target.HighPassFilter(from, sigma(), true);
  });
}

TEST_P(HighPass, FullStrengthTakesTheGivenStepsInEveryTarget) {
  const KivImage src = source(1);
  const KivImage expected =
      combined(src, blurredPlanes(src, sigma()), [](float s, float blurred) { return s - blurred + 0.5F; });
  expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
    target.HighPassPS(from, sigma(), 4);
  });
  KivImage half;
  half.HighPassFilter(src, sigma(), false);
  EXPECT_TRUE(within(1e-6, half, mapped(expected, [](float v) { return 0.5F + (v - 0.5F) * 0.5F; })));
}

TEST_P(HighPass, OfAFlatImageIsGrey) {
  KivImage src = source(3);
  fill(src, 0.3F);
  KivImage grey(src.size, 3);
  fill(grey, 0.5F);
  KivImage result;
  result.HighPassFilter(src, sigma(), true);
  EXPECT_TRUE(within(1e-6, result, grey));
  result.HighPassPS(src, sigma(), 5);
  EXPECT_TRUE(within(1e-6, result.Plane(0), grey.Plane(0)));
}

INSTANTIATE_TEST_SUITE_P(All, HighPass,
                         testing::Values(std::tuple(1, 1, 0.4F), std::tuple(7, 5, 1.0F), std::tuple(40, 23, 3.0F),
                                         std::tuple(430, 405, 7.0F)));

TEST(HighPassPS, WorksOnPlane0Alone) {
  const KivImage src = randomImage(20, 10, 3, 1);
  for (const float sigma : {2.0F, 0.0F}) {
    KivImage result = randomImage(20, 10, 3, 2);
    result.HighPassPS(src, sigma, 3);
    KivImage expected;
    expected.HighPassPS(src.Plane(0), sigma, 3);
    EXPECT_TRUE(sameBits(result.Plane(0), expected));
    EXPECT_TRUE(sameBits(result.Plane(2), randomImage(20, 10, 3, 2).Plane(2))) << sigma;
  }
}

TEST(HighPass, WithoutABlurItIsFlat) {
  for (const float sigma : {0.0F, -0.0F, -3.0F, -INFINITY, NAN}) {
    const KivImage src = randomImage(33, 9, 3, 1);
    KivImage grey(33, 9, 3);
    fill(grey, 0.5F);
    KivImage result;
    result.HighPassFilter(src, sigma, true);
    EXPECT_TRUE(within(1e-6, result, grey)) << sigma;
    KivImage full;
    full.HighPassPS(src, sigma, 4);
    EXPECT_TRUE(sameBits(full.Plane(0), grey.Plane(0))) << sigma;
  }
  KivImage image = randomImage(33, 9, 1, 1);
  KivImage grey(33, 9, 1);
  fill(grey, 0.5F);
  image.HighPassPS(image, 2.0F, 0);
  EXPECT_TRUE(sameBits(image, grey));
}

}  // namespace
