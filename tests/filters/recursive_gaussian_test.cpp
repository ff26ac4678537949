#include <vector>

#include "support/targets.h"

namespace {

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

// Against lines that are really continued, far enough for the start to be forgotten; flat across the lines.
TEST(RecursiveGaussian, StartsAsIfTheEdgeSamplesWentOnForEver) {
  for (const double sigma : {0.4, 1.0, 2.5, 2.6, 6.0, 40.0, 300.0}) {
    for (const int length : {1, 2, 3, 4, 29}) {
      KivImage expected = randomImage(length, 1, 2, static_cast<unsigned>(length));
      KivImage rows = imageOf({length, 11}, 2, [&](int p, int x, int) { return *expected.At(p, x, 0); });
      KivImage columns;
      columns.Transpose(rows);
      const auto margin = static_cast<std::size_t>(25 * sigma) + 30;
      for (int plane = 0; plane < 2; ++plane) {
        float* const samples = expected.planes[plane];
        std::vector<double> line(margin, double{samples[0]});
        line.insert(line.end(), samples, samples + length);
        line.resize(line.size() + margin, line.back());
        line = recursive(line, sigma);
        for (int x = 0; x < length; ++x) samples[x] = static_cast<float>(line[margin + static_cast<std::size_t>(x)]);
      }
      rows.Gaussian_IIR_Blur(rows, sigma);
      columns.Gaussian_IIR_Blur(columns, sigma);
      KivImage turned;
      turned.Transpose(columns);
      for (int y = 0; y < 11; ++y) {
        EXPECT_TRUE(within(3e-7, rows.ROI(0, y, length, 1), expected)) << sigma;
        EXPECT_TRUE(within(3e-7, turned.ROI(0, y, length, 1), expected)) << sigma << ", columns";
      }
    }
  }
}

TEST(RecursiveGaussian, KeepsFlatImagesFlat) {
  const KivImage flat = flatImage({37, 23}, 1, 0.7F);
  for (const double sigma : {0.5, 2.0, 50.0, 1000.0, 1e5}) {
    KivImage blurred = made(&KivImage::Gaussian_IIR_Blur, flat, sigma);
    EXPECT_TRUE(within(2e-7, blurred, flat)) << sigma;
  }
}

TEST(RecursiveGaussian, WorksInEveryTarget) {
  const KivImage src = randomImage(43, 35, 3, 1);
  KivImage blurred = made(&KivImage::Gaussian_IIR_Blur, src, 4.0);
  expectInEveryTarget(src, blurred,
                      [](KivImage& target, const KivImage& from) { target.Gaussian_IIR_Blur(from, 4.0); });
}

TEST(RecursiveGaussian, CopiesWhereItsFormulaDoesNotBlur) {
  const KivImage src = randomImage(20, 20, 2, 1);
  for (const double sigma : {0.3, 0.0, -3.0, 1e200, double{INFINITY}, double{NAN}}) {
    KivImage copy = made(&KivImage::Gaussian_IIR_Blur, src, sigma);
    EXPECT_TRUE(sameBits(copy, src)) << sigma;
  }
}

}  // namespace
