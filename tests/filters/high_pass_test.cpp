#include <cmath>

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

TEST(HighPass, TakesTheGivenStepsInEveryTarget) {
  const struct {
    int width, height;
    float sigma;
  } cases[] = {{1, 1, 0.4F}, {7, 5, 1.0F}, {40, 23, 3.0F}, {430, 405, 7.0F}};  // the last on a reduced image
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sigma);
    const KivImage src = randomImage(c.width, c.height, 2, 5);
    const KivImage half = combined(src, blurredPlanes(src, c.sigma),
                                   [](float s, float blurred) { return (blurred * -1.0F + 1.0F) * 0.5F + s * 0.5F; });
    expectInEveryTarget(src, half,
                        [&c](KivImage& target, const KivImage& from) { target.HighPassFilter(from, c.sigma, true); });
    const KivImage plane = copyOf(src.Plane(0));
    const KivImage full =
        combined(plane, blurredPlanes(plane, c.sigma), [](float s, float blurred) { return s - blurred + 0.5F; });
    expectInEveryTarget(plane, full,
                        [&c](KivImage& target, const KivImage& from) { target.HighPassPS(from, c.sigma, 4); });
  }
}

TEST(HighPassFilter, WorksOnThePlanesThatBothHave) {
  const KivImage src = randomImage(20, 10, 2, 1);
  KivImage result = randomImage(20, 10, 3, 2);
  KivImage expected = copyOf(result);
  for (int i = 0; i < 2; ++i) expected.Plane(i).HighPassFilter(src.Plane(i), 2.0F, true);
  result.HighPassFilter(src, 2.0F, true);
  EXPECT_TRUE(sameBits(result, expected));
}

TEST(HighPassPS, WorksOnPlane0Alone) {
  const KivImage src = randomImage(20, 10, 3, 1);
  for (const float sigma : {2.0F, 0.0F}) {
    KivImage result = randomImage(20, 10, 3, 2);
    KivImage expected = copyOf(result);
    expected.Plane(0).HighPassPS(src.Plane(0), sigma, 3);
    result.HighPassPS(src, sigma, 3);
    EXPECT_TRUE(sameBits(result, expected)) << sigma;
  }
}

TEST(HighPass, WithoutABlurItIsFlat) {
  const KivImage src = randomImage(33, 9, 3, 1);
  const KivImage grey = flatImage(src.size, 3, 0.5F);
  for (const float sigma : {0.0F, -0.0F, -3.0F, -INFINITY, NAN}) {
    KivImage half = made(&KivImage::HighPassFilter, src, sigma, false);
    EXPECT_TRUE(within(1e-6, half, grey)) << sigma;
    KivImage full = made(&KivImage::HighPassPS, src, sigma, 4);
    EXPECT_TRUE(sameBits(full.Plane(0), grey.Plane(0))) << sigma;
  }
  KivImage withoutKernel = made(&KivImage::HighPassPS, src, 2.0F, 0);
  EXPECT_TRUE(sameBits(withoutKernel.Plane(0), grey.Plane(0)));
}

}  // namespace
