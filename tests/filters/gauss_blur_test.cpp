#include <algorithm>
#include <vector>

#include "support/targets.h"

namespace {

// The Gaussian of the given reach in double precision, the edge samples repeated.
KivImage gaussian(const KivImage& src, double sigma, int reach) {
  std::vector<double> taps;
  double total = 0.0;
  for (int d = -reach; d <= reach; ++d) {
    taps.push_back(std::exp(-d * d / (2.0 * sigma * sigma)));
    total += taps.back();
  }
  return imageOf(src.size, src.channels, [&](int plane, int x, int y) {
    double sum = 0.0;
    for (int j = 0; j <= 2 * reach; ++j) {
      const int line = std::clamp(y + j - reach, 0, src.size.height - 1);
      for (int i = 0; i <= 2 * reach; ++i) {
        const int column = std::clamp(x + i - reach, 0, src.size.width - 1);
        sum += taps[static_cast<std::size_t>(i)] * taps[static_cast<std::size_t>(j)] *
               double{*src.At(plane, column, line)};
      }
    }
    return static_cast<float>(sum / (total * total));
  });
}

using Blur = void (KivImage::*)(const KivImage&, float, int, bool);

TEST(GaussBlur, IsTheGaussianOnAllPlanesInEveryTarget) {
  const KivImage src = randomImage(53, 41, 3, 1);
  for (const float sigma : {0.3F, 1.0F, 2.6F, 15.0F}) {
    KivImage blurred = made(&KivImage::Gauss_Blur, src, sigma, 3, true);
    EXPECT_TRUE(within(2e-6, blurred, gaussian(src, double{sigma}, static_cast<int>(std::ceil(3.0F * sigma)))));
    expectInEveryTarget(src, blurred,
                        [sigma](KivImage& target, const KivImage& from) { target.Gauss_Blur(from, sigma, 3, true); });
  }
}

TEST(GaussBlur, OnIntegersBlursEachPlaneFromItsOwn) {
  const struct {
    float largest;
    Blur blur;
    double tolerance;  // rounded taps and two roundings: a level or two at either depth
  } variants[] = {{65535.0F, &KivImage::GaussBlur16, 6.0}, {255.0F, &KivImage::GaussBlur8, 2.0}};
  for (const auto& variant : variants) {
    KivImage src(60, 50, 3);
    fillRandom(src, 6, 0.0F, variant.largest);
    const auto whole = [](float v) { return std::floor(v); };
    KivImage blurred;
    (blurred.*variant.blur)(src, 2.0F, 3, true);
    EXPECT_TRUE(within(variant.tolerance, blurred, gaussian(mapped(src, whole), 2.0, 6)));
    EXPECT_TRUE(sameBits(blurred, mapped(blurred, whole)));
    (src.*variant.blur)(src, 2.0F, 3, true);
    EXPECT_TRUE(sameBits(src, blurred)) << "in place";

    KivImage fraction = flatImage({9, 9}, 1, 100.75F);
    (fraction.*variant.blur)(fraction, 2.0F, 3, true);
    EXPECT_TRUE(sameBits(fraction, flatImage({9, 9}, 1, 100.0F))) << "the whole part counts";
  }
}

TEST(GaussBlur, ReadsNeighboursOfAView) {
  KivImage parent(60, 50, 3);
  fillRandom(parent, 6, 0.0F, 255.0F);
  for (const Blur blur : {&KivImage::Gauss_Blur, &KivImage::GaussBlur16, &KivImage::GaussBlur8}) {
    KivImage whole;
    (whole.*blur)(parent, 1.5F, 4, true);
    KivImage inner;
    (inner.*blur)(parent.Sub_Section(6), 1.5F, 4, false);
    EXPECT_TRUE(sameBits(inner, whole.Sub_Section(6)));
  }
}

TEST(GaussBlur, ThrowsTheStatusOfWhatIsRefused) {
  KivImage image = randomImage(9, 9, 1, 1);
  for (const Blur blur : {&KivImage::Gauss_Blur, &KivImage::GaussBlur16, &KivImage::GaussBlur8}) {
    for (const float sigma : {0.0F, -2.0F, NAN}) {
      EXPECT_EQ(thrownStatus([&] { (image.*blur)(image, sigma, 4, true); }), ippStsBadArgErr) << sigma;
    }
    EXPECT_EQ(thrownStatus([&] { (image.*blur)(image, -2.0F, -4, true); }), ippStsBadArgErr);
    EXPECT_EQ(thrownStatus([&] { (image.*blur)(image, 2.0F, 0, true); }), ippStsBadArgErr);
    for (const float sigma : {1e7F, 1e9F, 3e38F, INFINITY}) {
      for (const bool replicates : {false, true}) {
        EXPECT_THROW((image.*blur)(image, sigma, 4, replicates), NO_MEMORY_ERROR) << sigma;
      }
      EXPECT_THROW(image.GaussBlurDecimate(image, sigma, 4), NO_MEMORY_ERROR) << sigma;
    }
  }
  EXPECT_TRUE(sameBits(image, randomImage(9, 9, 1, 1)));
}

TEST(GaussBlurDecimate, BlursPlane0OfTheReducedImage) {
  const struct {
    int width, height;
    float sigma;
    int by;
  } cases[] = {{1000, 1000, 20.0F, 4},  // 10 at 500, 5 at 250
               {1001, 803, 5.0F, 2},    // to 500 x 401
               {401, 900, 3.0F, 1},    {900, 400, 8.0F, 1}, {401, 450, 3.1F, 2}, {60, 300, 4.0F, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
    const KivImage src = randomImage(c.width, c.height, 2, 3);
    KivImage target = randomImage(c.width, c.height, 2, 4);
    KivImage expected = copyOf(target);
    if (c.by == 1) {
      expected.Plane(0).GaussBlurFast(src, c.sigma, 3);
    } else {
      KivImage reduced;
      reduced.Resize(src, c.width / c.by, c.height / c.by);
      KivImage blurred = copyOf(reduced);
      blurred.GaussBlurFast(reduced, c.sigma / static_cast<float>(c.by), 3);
      expected.Resize(blurred, src.size);
    }
    target.GaussBlurDecimate(src, c.sigma, 3);
    EXPECT_TRUE(sameBits(target, expected));

    target = src;
    target.GaussBlurDecimate(target, c.sigma, 3);
    EXPECT_TRUE(sameBits(target.Plane(0), expected.Plane(0))) << "onto its own source";
    EXPECT_TRUE(sameBits(target.Plane(1), c.by == 1 ? src.Plane(1) : expected.Plane(1)));

    target = src;
    target.Plane(0).GaussBlurDecimate(src, c.sigma, 3);
    EXPECT_TRUE(sameBits(target.Plane(0), expected.Plane(0))) << "onto fewer planes";
    EXPECT_TRUE(sameBits(target.Plane(1), src.Plane(1)));
  }
}

// Under a kernel that reaches beyond the plane.
TEST(GaussBlurDecimate, OfOneValueHasTheBitsOfTheFilter) {
  KivImage zeros = flatImage({23, 17}, 1, -0.0F);
  *zeros.At(0, 9, 9) = 0.0F;
  KivImage bump = flatImage({23, 17}, 1, 0.3F);
  *bump.At(0, 22, 16) = 0.4F;
  const KivImage sources[] = {flatImage(zeros.size, 1, 0.3F),
                              flatImage(zeros.size, 1, -0.0F),
                              flatImage(zeros.size, 1, -INFINITY),
                              flatImage(zeros.size, 1, NAN),
                              std::move(zeros),
                              std::move(bump)};
  for (const KivImage& src : sources) {
    KivImage expected = made(&KivImage::GaussBlurFast, src, 30.0F, 4);
    KivImage target = made(&KivImage::GaussBlurDecimate, src, 30.0F, 4);
    EXPECT_TRUE(sameBits(target, expected)) << *src.At(0, 0, 0);
  }
}

// A target some rows away in the same picture.
TEST(GaussBlurDecimate, WritesOverAShiftedPartOfItsSource) {
  KivImage picture = randomImage(40, 130, 1, 5);
  const KivImage src = picture.ROI(0, 10, 40, 100);
  KivImage expected = made(&KivImage::GaussBlurDecimate, src, 2.0F, 4);
  KivImage target = picture.ROI(0, 17, 40, 100);
  target.GaussBlurDecimate(src, 2.0F, 4);
  EXPECT_TRUE(sameBits(target, expected));
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
