#include <algorithm>
#include <limits>
#include <vector>

#include "support/images.h"

namespace {

struct Accuracy {
  double sigma;
  double share;  // of the Gaussian's peak
};
class RecursiveGaussian : public testing::TestWithParam<Accuracy> {};

// Along each axis by itself: a line across the other axis.
TEST_P(RecursiveGaussian, HasTheImpulseResponseOfAGaussian) {
  const double sigma = GetParam().sigma;
  const int centre = static_cast<int>(8 * sigma) + 10;
  const int length = 2 * centre + 1;
  KivImage across(length, 9, 1);
  fill(across, 0.0F);
  for (int y = 0; y < 9; ++y) *across.At(0, centre, y) = 1.0F;
  KivImage down;
  down.Transpose(across);
  across.Gaussian_IIR_Blur(across, sigma);
  down.Gaussian_IIR_Blur(down, sigma);

  double total = 0.0;
  for (int x = 0; x < length; ++x) total += std::exp(-(x - centre) * (x - centre) / (2.0 * sigma * sigma));
  double sum = 0.0;
  double worst = 0.0;
  for (int x = 0; x < length; ++x) {
    const double truth = std::exp(-(x - centre) * (x - centre) / (2.0 * sigma * sigma)) / total;
    const double response = double{*across.At(0, x, 4)};
    worst = std::max(worst, std::abs(response - truth));
    sum += response;
    EXPECT_NEAR(double{*down.At(0, 4, x)}, response, 1e-7) << x;
    EXPECT_NEAR(response, double{*across.At(0, length - 1 - x, 4)}, 1e-7) << "symmetry at " << x;
  }
  EXPECT_LT(worst * total, GetParam().share);
  EXPECT_NEAR(sum, 1.0, 0.001);
}

INSTANTIATE_TEST_SUITE_P(Sigmas, RecursiveGaussian,
                         testing::Values(Accuracy{1.0, 0.10}, Accuracy{2.0, 0.06}, Accuracy{3.0, 0.0401},
                                         Accuracy{5.0, 0.04}, Accuracy{7.5, 0.04}, Accuracy{10.0, 0.04},
                                         Accuracy{50.0, 0.025}));

// The recursion by itself, in its plain form, on a line.
std::vector<double> oneWay(const std::vector<double>& x, const double (&f)[3], double gain) {
  std::vector<double> w(x.size() + 3, x[0]);
  for (std::size_t n = 0; n < x.size(); ++n) {
    w[n + 3] = gain * x[n] - (f[0] * w[n + 2] + f[1] * w[n + 1] + f[2] * w[n]);
  }
  return std::vector<double>(w.begin() + 3, w.end());
}

std::vector<double> recursive(std::vector<double> x, double sigma) {
  const double q = sigma <= 2.5 ? 3.97156 - 4.14554 * std::sqrt(1 - 0.26891 * sigma) : 0.98711 * sigma - 0.9633;
  const double b0 = 1.57825 + 2.44413 * q + 1.4281 * q * q + 0.422205 * q * q * q;
  const double b1 = 2.44413 * q + 2.85619 * q * q + 1.26661 * q * q * q;
  const double b2 = -1.4281 * q * q - 1.26661 * q * q * q;
  const double b3 = 0.422205 * q * q * q;
  const double f[3] = {-b1 / b0, -b2 / b0, -b3 / b0};
  for (int direction = 0; direction < 2; ++direction) {
    x = oneWay(x, f, 1 - (b1 + b2 + b3) / b0);
    x = std::vector<double>(x.rbegin(), x.rend());
  }
  return x;
}

// Against rows that are really continued, far enough for the start to be forgotten.
TEST(RecursiveGaussianEdges, StartAsIfTheEdgeSamplesWentOnForEver) {
  for (const double sigma : {0.4, 1.0, 2.5, 2.6, 6.0, 40.0, 300.0}) {
    for (const int width : {1, 2, 3, 4, 29}) {
      KivImage image(width, 11, 2);
      for (int plane = 0; plane < 2; ++plane) {
        const KivImage row = randomImage(width, 1, 1, static_cast<unsigned>(width + plane));
        for (int y = 0; y < 11; ++y) image.ROI(0, y, width, 1).Plane(plane).Copy(row);
      }
      KivImage blurred;
      blurred.Gaussian_IIR_Blur(image, sigma);
      const auto margin = static_cast<std::size_t>(25 * sigma) + 30;
      for (int plane = 0; plane < 2; ++plane) {
        std::vector<double> line(margin, double{*image.At(plane, 0, 0)});
        for (int x = 0; x < width; ++x) line.push_back(double{*image.At(plane, x, 0)});
        line.resize(line.size() + margin, line.back());
        line = recursive(line, sigma);
        for (int x = 0; x < width; ++x) {
          EXPECT_NEAR(double{*blurred.At(plane, x, 5)}, line[margin + static_cast<std::size_t>(x)], 3e-7)
              << sigma << ", width " << width << ", " << x;
        }
      }
    }
  }
}

TEST(RecursiveGaussianRule, KeepsFlatImagesFlat) {
  for (const double sigma : {0.5, 2.0, 50.0, 1000.0, 1e5}) {
    KivImage flat(37, 23, 1);
    fill(flat, 0.7F);
    KivImage blurred;
    blurred.Gaussian_IIR_Blur(flat, sigma);
    EXPECT_TRUE(within(2e-7, blurred, flat)) << sigma;
  }
}

TEST(RecursiveGaussianRule, WorksInPlaceAndThroughViews) {
  const KivImage src = randomImage(43, 35, 3, 1);
  KivImage blurred;
  blurred.Gaussian_IIR_Blur(src, 4.0);
  KivImage parent = randomImage(50, 40, 3, 2);
  KivImage view = parent.ROI(3, 2, 43, 35);
  view = src;
  view.Gaussian_IIR_Blur(view, 4.0);
  EXPECT_TRUE(sameBits(view, blurred));
  EXPECT_TRUE(sameBits(parent.ROI(46, 0, 4, 40), randomImage(50, 40, 3, 2).ROI(46, 0, 4, 40)));
}

TEST(RecursiveGaussianRule, CopiesWhereItsFormulaDoesNotBlur) {
  const KivImage src = randomImage(20, 20, 2, 1);
  for (const double sigma :
       {0.3, 0.0, -3.0, 1e200, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    KivImage copy;
    copy.Gaussian_IIR_Blur(src, sigma);
    EXPECT_TRUE(sameBits(copy, src)) << sigma;
  }
}

}  // namespace
