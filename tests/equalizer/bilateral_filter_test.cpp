#include "equalizer/bilateral_filter.h"

#include <cstring>
#include <tuple>

#include "equalizer/bilateral_kernels.h"
#include "image/parallel.h"
#include "image/scratch.h"
#include "support/each_row_test.h"
#include "support/images.h"

namespace {

enum { replicate = 1, mirror = 2 };
enum { standard = 0, trapezoid = 2 };

// Where a padded position reads, by the words of the contract rather than by its code.
int columnOf(int x, int width, int padding) {
  if (padding == replicate) return x < 0 ? 0 : (x >= width ? width - 1 : x);
  const int period = 2 * width;
  const int m = ((x % period) + period) % period;
  return m < width ? m : period - 1 - m;
}

int rowOf(int y, int height, int padding) {
  if (padding == replicate) return columnOf(y, height, replicate);
  if (y < 0) return rowOf(-y, height, padding);
  if (y >= height) return rowOf(2 * height - 1 - y, height, padding);
  return y;
}

float floatOf(int bits) {
  float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// The weight of a tap, one sample at a time. grouped: the rule of the columns that go four at a time.
float gaussianWeight(float d, int dx, int dy, float ks, float kr, bool grouped) {
  const float fx = static_cast<float>(dx);
  const float fy = static_cast<float>(dy);
  const float range = grouped ? (d * d) * kr : d * (kr * d);
  const float spatial = grouped ? (fx * fx + fy * fy) * ks : static_cast<float>(dx * dx + dy * dy) * ks;
  const float e = range + spatial;
  if (!(e >= -87.0F)) return 0.0F;  // NaN too: its sample makes the sum NaN all the same
  const float scaled = e * 12102203.0F;
  return floatOf(static_cast<int>(grouped ? std::nearbyint(scaled) : scaled) + 0x3F7893F5);
}

float trapezoidWeight(float d, float threshold) {
  const float reach = threshold + threshold;
  return std::max(0.0F, std::min(reach - std::abs(d), reach - 0.5F * threshold));
}

KivImage naive(const KivImage& src, int window, float sigma, float threshold, int variant, int padding) {
  const int w = src.size.width;
  const int h = src.size.height;
  const float ks = -1.0F / ((sigma + sigma) * sigma);
  const float kr = -1.0F / ((threshold + threshold) * threshold);
  KivImage dst(src.size, 1);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const bool grouped = x < w - w % 4;
      float sum = 0;
      float norm = 0;
      for (int dy = -window; dy <= window; ++dy) {
        for (int dx = -window; dx <= window; ++dx) {
          const float v = *src.At(0, columnOf(x + dx, w, padding), rowOf(y + dy, h, padding));
          const float d = v - *src.At(0, x, y);
          const float weight =
              variant == standard ? gaussianWeight(d, dx, dy, ks, kr, grouped) : trapezoidWeight(d, threshold);
          norm += weight;
          sum += v * weight;
        }
      }
      *dst.At(0, x, y) = sum / norm;
    }
  }
  return dst;
}

// Packed rows, which both variants accept.
KivImage filtered(const KivImage& src, int window, float sigma, float threshold, int variant, int padding) {
  std::vector<float> packed;
  for (int y = 0; y < src.size.height; ++y)
    packed.insert(packed.end(), src.At(0, 0, y), src.At(0, 0, y) + src.size.width);
  BilateralFilterKiv(packed.data(), packed.data(), static_cast<unsigned>(src.size.height),
                     static_cast<unsigned>(src.size.width), static_cast<unsigned>(src.size.width),
                     static_cast<unsigned short>(window), sigma, threshold, static_cast<unsigned char>(variant),
                     static_cast<unsigned char>(padding));
  const KivImage wrapped(packed.data(), src.size, 1);
  KivImage result;
  result = wrapped;
  return result;
}

class Bilateral : public testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(Bilateral, EqualsTheNaiveSumBitForBit) {
  const auto [variant, padding, window] = GetParam();
  // Widths round every cut of a line: none to three single columns, groups of four, several vectors.
  for (const int width : {1, 2, 3, 4, 5, 7, 8, 11, 16, 18, 35, 71, 133}) {
    for (const int height : {1, 2, 9}) {
      KivImage src = randomImage(width, height, 1, static_cast<unsigned>(width * 10 + height));
      if (width == 71) *src.At(0, 20, height / 2) = NAN;  // spreads as far as the window alone
      for (const float threshold : {0.04F, 0.3F, -0.3F, 1.0F}) {
        EXPECT_TRUE(sameBits(filtered(src, window, 1.7F, threshold, variant, padding),
                             naive(src, window, 1.7F, threshold, variant, padding)))
            << "height " << height << ", threshold " << threshold;
      }
    }
  }
}

// Window 12 is wider than many of the images: reflections go to and fro.
INSTANTIATE_TEST_SUITE_P(All, Bilateral,
                         testing::Combine(testing::Values(standard, trapezoid), testing::Values(replicate, mirror),
                                          testing::Values(0, 1, 4, 12)));

// The form that shares weights between rows, at sizes where the filter itself wouldn't take it, too.
class BilateralPairs : public EachRow {};
INSTANTIATE_TEST_SUITE_P(Rows, BilateralPairs, allRows(), rowName);

TEST_P(BilateralPairs, HaveTheBitsOfSingleLines) {
  const BilateralKernels& kernels = bilateralKernels();
  for (const int window : {2, 3, 4, 13, largestPairWindow}) {
    for (const int columns : {4, 20, 68, 132}) {
      for (const int rows : {1, 3, 14}) {
        if (window == largestPairWindow && columns * rows != 20) continue;
        KivImage block = randomImage(columns + 2 * window, rows + 2 * window, 1, static_cast<unsigned>(columns + rows));
        if (window == 3) *block.At(0, window + columns / 2, window) = NAN;
        const GaussianFactors factors = {-0.05F, window == 4 ? -700.0F : -9.0F};
        const std::ptrdiff_t step = block.stride / 4;
        KivImage expected(columns, rows, 1);
        for (int y = 0; y < rows; ++y) {
          kernels.stdLine(block.At(0, 0, y), step, window, factors, expected.At(0, 0, y), columns);
        }
        // Around the outputs, samples that must stay.
        KivImage parent = randomImage(columns + 9, rows + 2, 1, 3);
        KivImage before;
        before = parent;
        KivImage actual = parent.ROI(5, 1, columns, rows);
        const Scratch scratch = makeScratch(kernels.stdRowsScratch(columns, window) * std::int64_t{sizeof(float)});
        for (int row = 0; row < rows + 2 * window; ++row) {
          kernels.stdRows(block.planes[0], step, window, factors, actual.planes[0], actual.stride / 4, columns, rows,
                          row, static_cast<float*>(scratch.get()));
        }
        ASSERT_TRUE(sameBits(actual, expected)) << "window " << window;
        actual.Copy(before.ROI(5, 1, columns, rows));
        ASSERT_TRUE(sameBits(parent, before)) << columns << " x " << rows << ", window " << window;
      }
    }
  }
}

// Large enough for the filter to take that form, on every number of threads that cuts the image differently.
TEST_P(BilateralPairs, ServeTheFilterOnAnyNumberOfThreads) {
  const auto pays = bilateralKernels().stdRowsPays;
  ASSERT_TRUE(pays(403 - 3, 40, 4));
  EXPECT_TRUE(pays(40000, 40000, largestPairWindow));
  EXPECT_FALSE(pays(40000, 40000, largestPairWindow + 1)) << "it has no room for such windows";
  const KivImage src = randomImage(403, 160, 1, 8);
  const KivImage expected = naive(src, 4, 1.3F, 0.2F, standard, replicate);
  for (const int count : {1, 2, 3, 7}) {
    const Team team(count);
    EXPECT_TRUE(sameBits(filtered(src, 4, 1.3F, 0.2F, standard, replicate), expected)) << count << " threads";
  }
}

TEST(BilateralStd, WideRangeIsAGaussian) {
  const KivImage src = randomImage(30, 30, 1, 4);
  KivImage gaussian = made(&KivImage::GaussBlurFast, src, 2.0F, 4);
  // The fast exponential is up to 6 % off a true one, in either direction.
  EXPECT_TRUE(within(0.01, filtered(src, 8, 2.0F, 1e6F, standard, replicate), gaussian));
}

TEST(Bilateral, RefusesWhatItCannotServe) {
  std::vector<float> data(16, 1.0F);
  const std::vector<float> before = data;
  BilateralFilterKiv(data.data(), data.data(), 4, 4, 4, 2, 1.0F, 1.0F, 1, 1);  // no such variant
  EXPECT_EQ(data, before);
  EXPECT_THROW(BilateralFilterKiv(data.data(), data.data(), 4, 4, 4, 32766, 1.0F, 1.0F, 0, 1), NO_MEMORY_ERROR);
  EXPECT_THROW(Bilateral_trp(data.data(), data.data(), 65536, 1, 0, 1.0F, 1.0F, 1), NO_MEMORY_ERROR);
  EXPECT_THROW(Bilateral_std(data.data(), data.data(), 65533, 1, 1, 2, 1.0F, 1.0F, 1), NO_MEMORY_ERROR);
  EXPECT_EQ(data, before);
  EXPECT_DEATH(BilateralFilterKiv(data.data(), data.data(), 4, 4, 4, 2, 1.0F, 1.0F, 0, 3), "");
}

}  // namespace
