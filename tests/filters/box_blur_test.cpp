#include <algorithm>
#include <limits>
#include <vector>

#include "support/targets.h"

namespace {

// The means over windows of at(plane, x, y), which continues a source beyond its edges.
template <typename Continued>
KivImage means(const KivImage& src, int radius, Continued at) {
  return imageOf(src.size, src.channels, [&](int plane, int x, int y) {
    double sum = 0.0;
    for (int j = y - radius; j <= y + radius; ++j) {
      for (int i = x - radius; i <= x + radius; ++i) sum += double{at(plane, i, j)};
    }
    return static_cast<float>(sum / ((2 * radius + 1) * (2 * radius + 1)));
  });
}

float replicated(const KivImage& src, int plane, int x, int y) {
  return *src.At(plane, std::clamp(x, 0, src.size.width - 1), std::clamp(y, 0, src.size.height - 1));
}

TEST(BoxBlur, IsTheMeanOfEachPlaneInEveryTarget) {
  const KivImage src = randomImage(41, 37, 3, 1);
  for (const int radius : {0, 1, 2, 3, 7, 18, 30}) {
    KivImage blurred = made(&KivImage::Box_Blur, src, radius);
    const KivImage expected = means(src, radius, [&](int p, int x, int y) { return replicated(src, p, x, y); });
    EXPECT_TRUE(within(radius == 0 ? 0.0 : 3e-6, blurred, expected)) << radius;
    expectInEveryTarget(src, blurred,
                        [radius](KivImage& target, const KivImage& from) { target.Box_Blur(from, radius); });
  }
}

TEST(BoxBlur, RefusesRadii) {
  KivImage target = randomImage(9, 9, 2, 2);
  target.Box_Blur(randomImage(9, 9, 2, 1), -1);
  target.ApplyBoxFilter(randomImage(9, 9, 2, 1), -1, KivImage::KIV_BORDER_REPLICATE, 0.0F, true);
  target.ApplyBoxFilter(randomImage(9, 9, 2, 1), 1, static_cast<KivImage::KivBorderType>(5), 0.0F, true);
  EXPECT_TRUE(sameBits(target, randomImage(9, 9, 2, 2)));
  EXPECT_THROW(target.Box_Blur(target, std::numeric_limits<int>::max()), NO_MEMORY_ERROR);
  EXPECT_THROW(target.Box_Blur(target, 100000), NO_MEMORY_ERROR);
}

TEST(ApplyBoxFilter, TakesTheBorderOfChoice) {
  const KivImage parent = randomImage(40, 30, 2, 3);
  const KivImage src = parent.Sub_Section(4);
  const int right = src.size.width - 1;
  const int bottom = src.size.height - 1;
  const auto expectMeans = [&](KivImage::KivBorderType border, auto continued) {
    KivImage result = made(&KivImage::ApplyBoxFilter, src, 4, border, 0.7F, false);
    EXPECT_TRUE(within(2e-6, result, means(src, 4, continued))) << border;
  };
  expectMeans(KivImage::KIV_BORDER_REPLICATE, [&](int p, int x, int y) { return replicated(src, p, x, y); });
  expectMeans(KivImage::KIV_BORDER_CONST,
              [&](int p, int x, int y) { return x < 0 || y < 0 || x > right || y > bottom ? 0.7F : *src.At(p, x, y); });
  expectMeans(KivImage::KIV_BORDER_IN_MEM, [&](int p, int x, int y) { return *src.At(p, x, y); });
  expectMeans(KivImage::KIV_BORDER_MIRROR, [&](int p, int x, int y) {
    return *src.At(p, right - std::abs(right - std::abs(x)), bottom - std::abs(bottom - std::abs(y)));
  });
}

// The division takes the target's planes, the mean the source's.
TEST(ApplyBoxFilter, DividesOnceMore) {
  const KivImage grey = flatImage({20, 20}, 2, 0.75F);
  KivImage target = flatImage({20, 20}, 3, 0.75F);
  target.ApplyBoxFilter(grey, 2, KivImage::KIV_BORDER_REPLICATE, 0.0F, true);
  EXPECT_TRUE(within(1e-7, target, flatImage({20, 20}, 3, 0.75F / 25.0F)));
}

TEST(GaussianBoxBlur, IsRepeatedBoxes) {
  const struct {
    float sigma;
    int passes;
    std::vector<int> radii;
  } cases[] = {{2.0F, 3, {1, 1, 2}}, {2.4F, 3, {2, 2, 2}},    {-2.0F, 3, {1, 1, 2}},     {0.0F, 2, {0, 0}},
               {5.0F, 1, {8}},       {4.0F, 4, {3, 3, 3, 3}}, {2.0F, 5, {1, 1, 1, 1, 1}}};  // 4.5 narrow boxes: halves
                                                                                            // are rounded up
  const KivImage src = randomImage(50, 40, 2, 5);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sigma);
    KivImage expected = copyOf(src);
    for (const int radius : c.radii) expected.Box_Blur(expected, radius);
    expectInEveryTarget(src, expected, [&c](KivImage& target, const KivImage& from) {
      target.Gaussian_Box_Blur(from, c.sigma, c.passes);
    });
  }
}

TEST(GaussianBoxBlur, LeavesTheTargetOrRefuses) {
  KivImage target = randomImage(9, 9, 1, 2);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), 2.0F, 0);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), 2.0F, -3);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), NAN, 3);
  EXPECT_TRUE(sameBits(target, randomImage(9, 9, 1, 2)));
  for (const float sigma : {1e6F, 1e20F, INFINITY}) {
    EXPECT_THROW(target.Gaussian_Box_Blur(target, sigma, 3), NO_MEMORY_ERROR);
  }
}

}  // namespace
