#include <limits>
#include <vector>

#include "support/images.h"

namespace {

// The mean over the window, with the source continued by its nearest sample or by value.
double meanAt(const KivImage& src, int plane, int x, int y, int radius, bool isConstant, double value) {
  double sum = 0.0;
  const auto clamp = [](int n, int length) { return n < 0 ? 0 : n < length ? n : length - 1; };
  for (int j = y - radius; j <= y + radius; ++j) {
    for (int i = x - radius; i <= x + radius; ++i) {
      const int cx = clamp(i, src.size.width);
      const int cy = clamp(j, src.size.height);
      sum += isConstant && (cx != i || cy != j) ? value : double{*src.At(plane, cx, cy)};
    }
  }
  return sum / ((2 * radius + 1) * (2 * radius + 1));
}

KivImage means(const KivImage& src, int radius, bool isConstant = false, double value = 0.0) {
  KivImage result(src.size, src.channels);
  for (int plane = 0; plane < src.channels; ++plane) {
    for (int y = 0; y < src.size.height; ++y) {
      for (int x = 0; x < src.size.width; ++x) {
        *result.At(plane, x, y) = static_cast<float>(meanAt(src, plane, x, y, radius, isConstant, value));
      }
    }
  }
  return result;
}

TEST(BoxBlur, IsTheMeanOfEachPlaneAlsoInPlaceAndThroughViews) {
  const KivImage parent = randomImage(60, 50, 3, 1);
  const KivImage src = parent.ROI(3, 2, 41, 37);
  for (const int radius : {0, 1, 2, 3, 7, 18, 30}) {
    KivImage blurred;
    blurred.Box_Blur(src, radius);
    EXPECT_TRUE(within(3e-6, blurred, means(src, radius))) << radius;
    EXPECT_TRUE(radius > 0 || sameBits(blurred, src));
    KivImage inPlace = randomImage(60, 50, 3, 1);
    KivImage view = inPlace.ROI(3, 2, 41, 37);
    view.Box_Blur(view, radius);
    EXPECT_TRUE(sameBits(view, blurred)) << radius;
    EXPECT_TRUE(sameBits(inPlace.ROI(44, 0, 16, 50), parent.ROI(44, 0, 16, 50)));
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
  KivImage result(src.size, 2);
  result.ApplyBoxFilter(src, 4, KivImage::KIV_BORDER_REPLICATE, 9.0F, false);
  EXPECT_TRUE(within(2e-6, result, means(src, 4)));
  result.ApplyBoxFilter(src, 4, KivImage::KIV_BORDER_CONST, 0.7F, false);
  EXPECT_TRUE(within(2e-6, result, means(src, 4, true, double{0.7F})));
  result.ApplyBoxFilter(src, 4, KivImage::KIV_BORDER_IN_MEM, 9.0F, false);
  EXPECT_TRUE(within(2e-6, result, means(parent, 4).Sub_Section(4)));

  KivImage mirrored(40, 30, 2);
  for (int i = 0; i < 2; ++i) {
    ippiCopyMirrorBorder_32f_C1R(src.planes[i], src.stride, src.size, mirrored.planes[i], mirrored.stride,
                                 mirrored.size, 4, 4);
  }
  result.ApplyBoxFilter(src, 4, KivImage::KIV_BORDER_MIRROR, 9.0F, false);
  EXPECT_TRUE(within(2e-6, result, means(mirrored, 4).Sub_Section(4)));
}

TEST(ApplyBoxFilter, CountsTheShareOutsideAndDividesOnceMore) {
  KivImage black(20, 20, 1);
  fill(black, 0.0F);
  KivImage result;
  result.ApplyBoxFilter(black, 2, KivImage::KIV_BORDER_CONST, 0.5F, false);
  EXPECT_NEAR(*result.At(0, 0, 0), 0.5F * 16.0F / 25.0F, 1e-6F);
  EXPECT_EQ(*result.At(0, 10, 10), 0.0F);

  KivImage grey(20, 20, 2);
  fill(grey, 0.75F);
  KivImage divided;
  divided.ApplyBoxFilter(grey, 2, KivImage::KIV_BORDER_REPLICATE, 0.0F, true);
  KivImage expected(20, 20, 2);
  fill(expected, 0.75F / 25.0F);
  EXPECT_TRUE(within(1e-7, divided, expected));

  // The division takes the target's planes, the mean the source's.
  KivImage more(20, 20, 3);
  fill(more, 0.75F);
  more.ApplyBoxFilter(grey, 2, KivImage::KIV_BORDER_REPLICATE, 0.0F, true);
  EXPECT_NEAR(*more.At(2, 10, 10), 0.75F / 25.0F, 1e-7F);
}

struct BoxCase {
  float sigma;
  int passes;
  std::vector<int> radii;
};
class GaussianBoxBlur : public testing::TestWithParam<BoxCase> {};

TEST_P(GaussianBoxBlur, IsRepeatedBoxes) {
  const KivImage src = randomImage(50, 40, 2, 5);
  KivImage expected(src.size, 2);
  expected = src;
  for (const int radius : GetParam().radii) expected.Box_Blur(expected, radius);
  KivImage blurred;
  blurred.Gaussian_Box_Blur(src, GetParam().sigma, GetParam().passes);
  EXPECT_TRUE(sameBits(blurred, expected));
  blurred = src;
  blurred.Gaussian_Box_Blur(blurred, GetParam().sigma, GetParam().passes);
  EXPECT_TRUE(sameBits(blurred, expected));
}

INSTANTIATE_TEST_SUITE_P(Boxes, GaussianBoxBlur,
                         testing::Values(BoxCase{2.0F, 3, {1, 1, 2}}, BoxCase{2.4F, 3, {2, 2, 2}},
                                         BoxCase{-2.0F, 3, {1, 1, 2}}, BoxCase{0.0F, 2, {0, 0}}, BoxCase{5.0F, 1, {8}},
                                         BoxCase{4.0F, 4, {3, 3, 3, 3}},
                                         // 4.5 narrow boxes: halves are rounded up
                                         BoxCase{2.0F, 5, {1, 1, 1, 1, 1}}));

TEST(GaussianBoxBlurRule, HasTheVarianceOfTheGaussian) {
  for (const float sigma : {3.0F, 7.3F, 20.0F}) {
    KivImage line(301, 1, 1);
    fill(line, 0.0F);
    *line.At(0, 150, 0) = 1.0F;
    line.Gaussian_Box_Blur(line, sigma, 4);
    double variance = 0.0;
    for (int x = 0; x < 301; ++x) variance += (x - 150) * (x - 150) * double{*line.At(0, x, 0)};
    // Half of what one box of the larger side adds.
    const double ideal = std::sqrt(3.0 * double{sigma} * double{sigma} + 1.0);
    EXPECT_NEAR(variance, double{sigma} * double{sigma}, (ideal + 1.0) / 6.0 + 0.01);
  }
}

TEST(GaussianBoxBlurRule, LeavesTheTargetOrRefuses) {
  KivImage target = randomImage(9, 9, 1, 2);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), 2.0F, 0);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), 2.0F, -3);
  target.Gaussian_Box_Blur(randomImage(9, 9, 1, 1), std::numeric_limits<float>::quiet_NaN(), 3);
  EXPECT_TRUE(sameBits(target, randomImage(9, 9, 1, 2)));
  for (const float sigma : {1e6F, 1e20F, std::numeric_limits<float>::infinity()}) {
    EXPECT_THROW(target.Gaussian_Box_Blur(target, sigma, 3), NO_MEMORY_ERROR);
  }
}

}  // namespace
