#include <algorithm>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// The documented formula in double precision, between the two blurs.
KivImage formula(const KivImage& src, float amount, float sigma, float threshold) {
  KivImage blurred = made(&KivImage::Gauss_Blur, src, sigma, 5, true);
  KivImage mask = imageOf(src.size, 1, [&](int, int x, int y) {
    bool isBrighter = true;
    for (int p = 0; p < src.channels; ++p) {
      isBrighter = isBrighter && std::max(0.0F, *src.At(p, x, y) - *blurred.At(p, x, y)) > threshold;
    }
    return isBrighter ? 1.0F : 0.0F;
  });
  mask.Gauss_Blur(mask, sigma, 5, true);
  return imageOf(src.size, src.channels, [&](int p, int x, int y) {
    const double s{*src.At(p, x, y)};
    const double m{*mask.At(0, x, y)};
    const double detail = std::clamp(s - double{*blurred.At(p, x, y)}, -1.0, 1.0);
    return static_cast<float>(std::clamp(s + double{amount} / 100 * detail, 0.0, 1.0) * m + s * (1 - m));
  });
}

TEST(Unsharp, FollowsItsFormulaInEveryTarget) {
  const struct {
    int width, height, channels;
    float amount, sigma, threshold;
  } cases[] = {{1, 1, 1, 100.0F, 1.0F, 0.0F},   {37, 21, 1, 150.0F, 1.3F, 0.1F},
               {37, 21, 3, 80.0F, 0.7F, 0.02F}, {20, 9, 2, 0.0F, 3.0F, 0.1F},
               {20, 9, 4, -60.0F, 2.0F, -1.0F}, {30, 20, 3, 200.0F, 2.0F, 1.5F}};  // above 1: the source, not limited
  for (const auto& c : cases) {
    const KivImage src = randomImage(c.width, c.height, c.channels, 1);
    const auto run = [&c](KivImage& target, const KivImage& from) {
      target.UsmPS(from, c.amount, c.sigma, c.threshold);
    };
    KivImage sharp;
    run(sharp, src);
    EXPECT_TRUE(within(1e-5, sharp, formula(src, c.amount, c.sigma, c.threshold)));
    EXPECT_TRUE(c.threshold < 1.0F || sameBits(sharp, src));
    expectInEveryTarget(src, sharp, run);
  }
}

}  // namespace
