#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

float fromZeroToOne(float v) { return !(v >= 0.0F) ? 0.0F : std::min(v, 1.0F); }  // keeps a -0

// Sample by sample, between the two blurs.
KivImage naive(const KivImage& src, float amount, float sigma, float threshold) {
  KivImage blurred;
  blurred.Gauss_Blur(src, sigma, 5, true);
  const KivImage brighter = combined(src, blurred, [](float s, float b) { return fromZeroToOne(s - b); });
  const KivImage darker =
      combined(src, blurred, [](float s, float b) { return fromZeroToOne(b * -1.0F + 1.0F + s) * -1.0F + 1.0F; });

  KivImage hard(src.size, src.channels);
  for (int y = 0; y < src.size.height; ++y) {
    for (int x = 0; x < src.size.width; ++x) {
      float product = 1.0F;
      for (int p = 0; p < src.channels; ++p) {
        const float v = *brighter.At(p, x, y);
        product *= v < threshold ? 0.0F : (v > threshold ? 1.0F : v);
      }
      for (int p = 0; p < src.channels; ++p) *hard.At(p, x, y) = product;
    }
  }
  KivImage soft;
  soft.Gauss_Blur(hard, sigma, 5, true);

  const float factor = amount / 100.0F;
  const KivImage detail = combined(brighter, darker, [=](float pos, float neg) { return (pos - neg) * factor; });
  const KivImage sharp = combined(src, detail, [](float s, float d) { return fromZeroToOne(s + d); });
  const KivImage gated = combined(sharp, soft, [](float v, float m) { return v * m; });
  const KivImage rest = combined(src, soft, [](float s, float m) { return (m * -1.0F + 1.0F) * s; });
  return combined(gated, rest, [](float a, float b) { return a + b; });
}

struct Settings {
  int width, height, channels;
  float amount, sigma, threshold;
};

class Unsharp : public testing::TestWithParam<Settings> {};

TEST_P(Unsharp, TakesTheGivenStepsInEveryTarget) {
  const Settings& s = GetParam();
  const KivImage src = randomImage(s.width, s.height, s.channels, 1);
  expectInEveryTarget(src, src, naive(src, s.amount, s.sigma, s.threshold),
                      [&s](KivImage& target, const KivImage& from, const KivImage&) {
                        target.UsmPS(from, s.amount, s.sigma, s.threshold);
                      });
}

INSTANTIATE_TEST_SUITE_P(All, Unsharp,
                         testing::Values(Settings{1, 1, 1, 100.0F, 1.0F, 0.0F}, Settings{37, 21, 1, 150.0F, 1.3F, 0.1F},
                                         Settings{37, 21, 3, 80.0F, 0.7F, 0.02F}, Settings{20, 9, 2, 0.0F, 3.0F, 0.1F},
                                         Settings{20, 9, 4, -60.0F, 2.0F, -1.0F}));

TEST(Unsharp, AThresholdAboveOneGivesTheSourceUnclipped) {
  const KivImage src = randomImage(30, 20, 3, 1);
  KivImage result;
  result.UsmPS(src, 200.0F, 2.0F, 1.5F);
  EXPECT_TRUE(sameBits(result, src));
}

TEST(Unsharp, SharpensOnlyWhereEveryPlaneIsBrighterThanItsBlur) {
  // A bright stripe in both planes, and another one in plane 0 alone.
  KivImage src(60, 20, 2);
  fill(src, 0.25F);
  for (int y = 0; y < 20; ++y) {
    *src.At(0, 15, y) = *src.At(1, 15, y) = 0.5F;
    *src.At(0, 45, y) = 0.5F;
  }
  KivImage result;
  result.UsmPS(src, 100.0F, 1.0F, 0.05F);
  EXPECT_GT(*result.At(0, 15, 10), 0.55F);
  EXPECT_EQ(*result.At(0, 45, 10), 0.5F);
}

TEST(Unsharp, AKernelThatIsRefusedIsThrownAsItsStatus) {
  const KivImage src = randomImage(8, 8, 1, 1);
  KivImage result;
  for (const float sigma : {0.0F, -1.0F}) {
    try {
      result.UsmPS(src, 100.0F, sigma, 0.0F);
      FAIL() << sigma;
    } catch (int status) {
      EXPECT_EQ(status, ippStsBadArgErr);
    }
  }
}

}  // namespace
