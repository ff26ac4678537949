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

  const KivImage hard = imageOf(src.size, src.channels, [&](int, int x, int y) {
    float product = 1.0F;
    for (int p = 0; p < src.channels; ++p) {
      const float v = *brighter.At(p, x, y);
      product *= v < threshold ? 0.0F : (v > threshold ? 1.0F : v);
    }
    return product;
  });
  KivImage soft;
  soft.Gauss_Blur(hard, sigma, 5, true);

  const float factor = amount / 100.0F;
  const KivImage detail = combined(brighter, darker, [=](float pos, float neg) { return (pos - neg) * factor; });
  const KivImage sharp = combined(src, detail, [](float s, float d) { return fromZeroToOne(s + d); });
  const KivImage gated = combined(sharp, soft, [](float v, float m) { return v * m; });
  const KivImage rest = combined(src, soft, [](float s, float m) { return (m * -1.0F + 1.0F) * s; });
  return combined(gated, rest, [](float a, float b) { return a + b; });
}

TEST(Unsharp, TakesTheGivenStepsInEveryTarget) {
  const struct {
    int width, height, channels;
    float amount, sigma, threshold;
  } cases[] = {{1, 1, 1, 100.0F, 1.0F, 0.0F},   {37, 21, 1, 150.0F, 1.3F, 0.1F},
               {37, 21, 3, 80.0F, 0.7F, 0.02F}, {20, 9, 2, 0.0F, 3.0F, 0.1F},
               {20, 9, 4, -60.0F, 2.0F, -1.0F}, {30, 20, 3, 200.0F, 2.0F, 1.5F}};  // above 1: the source, not limited
  for (const auto& c : cases) {
    const KivImage src = randomImage(c.width, c.height, c.channels, 1);
    const KivImage expected = naive(src, c.amount, c.sigma, c.threshold);
    EXPECT_TRUE(c.threshold < 1.0F || sameBits(expected, src));
    expectInEveryTarget(src, expected, [&c](KivImage& target, const KivImage& from) {
      target.UsmPS(from, c.amount, c.sigma, c.threshold);
    });
  }
}

TEST(Unsharp, AKernelThatIsRefusedIsThrownAsItsStatus) {
  const KivImage src = randomImage(8, 8, 1, 1);
  for (const float sigma : {0.0F, -1.0F}) {
    try {
      KivImage().UsmPS(src, 100.0F, sigma, 0.0F);
      FAIL() << sigma;
    } catch (int status) {
      EXPECT_EQ(status, ippStsBadArgErr);
    }
  }
}

}  // namespace
