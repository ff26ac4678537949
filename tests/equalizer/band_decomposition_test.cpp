#include "equalizer/band_decomposition.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "equalizer/reference_equalizer.h"
#include "support/images.h"

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

void equalize(KivImage& image, BandSettings s) {
  EqualizeIT(image, image, s.gains, s.radii, s.thresholds, s.edges, levelCount, s.baseGain);
}

BandSettings strongSettings() {
  BandSettings s;
  const float gains[] = {1.5F, 0.0F, 2.0F, -1.0F, 1.2F};
  const float radii[] = {3.0F, 2.1F, 0.7F, 1.0F, 5.0F};
  std::copy(gains, gains + 5, s.gains);
  std::copy(radii, radii + 5, s.radii);
  s.edges[2] = false;
  s.baseGain = 0.8F;
  return s;
}

TEST(EqualizeIT, EqualsTheStepsAtEverySize) {
  std::vector<IppiSize> sizes;
  for (int n = 1; n <= 40; ++n) sizes.insert(sizes.end(), {{n, 41 - n}, {n, 50}, {50, n}});
  sizes.insert(sizes.end(), {{1, 1}, {257, 130}, {301, 200}});
  for (const IppiSize size : sizes) {
    KivImage image = randomImage(size.width, size.height, 1, 1);
    KivImage expected = randomImage(size.width, size.height, 1, 1);
    equalize(image, strongSettings());
    referenceEqualize(expected, strongSettings());
    ASSERT_TRUE(sameBits(image, expected));
  }
}

// Sides of 1, 2 and above 16 give the input back; in between the residual of one sample can't be expanded again.
TEST(EqualizeIT, UnitGainsGiveTheInputBack) {
  for (const int width : {1, 2, 17, 18, 31, 32, 33, 64, 101, 250}) {
    for (const int height : {1, 2, 17, 33, 100}) {
      for (const unsigned mask : {0U, 31U, 21U, 10U, 30U}) {
        BandSettings s;
        for (unsigned i = 0; i < 5; ++i) s.edges[i] = ((mask >> i) & 1) != 0;
        KivImage image = randomImage(width, height, 1, mask);
        equalize(image, s);
        ASSERT_TRUE(within(2e-6, image, randomImage(width, height, 1, mask))) << "edges " << mask;
      }
    }
  }
}

// The same pyramid in double precision from the formulas alone, with Gaussian low-passes.
class DoublePyramid {
 public:
  struct Level {
    int w, h;
    std::vector<double> v;
    double at(int x, int y) const {
      return v[static_cast<std::size_t>(std::clamp(y, 0, h - 1) * w + std::clamp(x, 0, w - 1))];
    }
  };

  static Level gaussian(const Level& in, double sigma) {
    const int r = static_cast<int>(std::ceil(4 * sigma));
    std::vector<double> taps;
    double total = 0;
    for (int i = -r; i <= r; ++i) taps.push_back(std::exp(-i * i / (2 * sigma * sigma)));
    for (const double t : taps) total += t;
    const auto pass = [&](const Level& from, bool rows) {
      Level to{from.w, from.h, std::vector<double>(from.v.size())};
      for (int y = 0; y < from.h; ++y) {
        for (int x = 0; x < from.w; ++x) {
          double sum = 0;
          for (int i = -r; i <= r; ++i) {
            sum += taps[static_cast<std::size_t>(i + r)] * from.at(x + (rows ? i : 0), y + (rows ? 0 : i));
          }
          to.v[static_cast<std::size_t>(y * from.w + x)] = sum / total;
        }
      }
      return to;
    };
    return pass(pass(in, true), false);
  }

  static Level resized(const Level& in, int w, int h) {
    Level out{w, h, std::vector<double>(static_cast<std::size_t>(w * h))};
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const double px = (x + 0.5) * in.w / w - 0.5;
        const double py = (y + 0.5) * in.h / h - 0.5;
        const int x0 = static_cast<int>(std::floor(px));
        const int y0 = static_cast<int>(std::floor(py));
        const auto row = [&](int j) { return in.at(x0, j) + (in.at(x0 + 1, j) - in.at(x0, j)) * (px - x0); };
        out.v[static_cast<std::size_t>(y * w + x)] = row(y0) + (row(y0 + 1) - row(y0)) * (py - y0);
      }
    }
    return out;
  }

  static Level equalized(const Level& c, const BandSettings& s, int level = 0) {
    if (level == 5) {
      Level residual = c;
      for (double& v : residual.v) v *= double{s.baseGain};
      return residual;
    }
    const Level next = resized(gaussian(c, double{s.radii[level]}), (c.w + 1) / 2, (c.h + 1) / 2);
    const Level expanded = resized(next, c.w, c.h);
    Level result = resized(equalized(next, s, level + 1), c.w, c.h);
    for (std::size_t i = 0; i < result.v.size(); ++i) {
      result.v[i] += double{s.gains[level]} * (c.v[i] - expanded.v[i]);
    }
    return result;
  }
};

TEST(EqualizeIT, AgreesWithTheFormulasInDoublePrecision) {
  const int w = 101;
  const int h = 70;
  BandSettings s = strongSettings();
  std::fill(s.edges, s.edges + 5, false);
  KivImage image = randomImage(w, h, 1, 3);
  DoublePyramid::Level in{w, h, {}};
  for (int y = 0; y < h; ++y) in.v.insert(in.v.end(), image.At(0, 0, y), image.At(0, 0, y) + w);
  const DoublePyramid::Level out = DoublePyramid::equalized(in, s);
  equalize(image, s);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) ASSERT_NEAR(*image.At(0, x, y), out.at(x, y), 1e-5) << x << ", " << y;
  }
}

TEST(EqualizeIT, RunsTheSameInAViewAndOnAnyNumberOfThreads) {
  KivImage expected = randomImage(90, 61, 1, 5);
  omp_set_num_threads(1);
  equalize(expected, strongSettings());
  for (const int threads : {2, 4, 7}) {
    omp_set_num_threads(threads);
    KivImage parent = randomImage(120, 80, 1, 6);
    KivImage view = parent.ROI(13, 7, 90, 61);
    view = randomImage(90, 61, 1, 5);
    equalize(view, strongSettings());
    EXPECT_TRUE(sameBits(view, expected)) << threads << " threads";
    EXPECT_TRUE(sameBits(parent.ROI(103, 0, 17, 80), randomImage(120, 80, 1, 6).ROI(103, 0, 17, 80)));
  }
  omp_set_num_threads(omp_get_num_procs());
}

TEST(EqualizeIT, GainsAndBaseGainWeighWhatTheySay) {
  BandSettings detailOnly;
  detailOnly.baseGain = 0;
  KivImage flat(70, 50, 1);
  fill(flat, 0.7F);
  equalize(flat, detailOnly);
  KivImage zero(70, 50, 1);
  fill(zero, 0.0F);
  EXPECT_TRUE(within(1e-6, flat, zero));

  // Detail and residual add up to the whole.
  BandSettings residualOnly;
  std::fill(residualOnly.gains, residualOnly.gains + 5, 0.0F);
  KivImage detail = randomImage(70, 50, 1, 1);
  KivImage residual = randomImage(70, 50, 1, 1);
  equalize(detail, detailOnly);
  equalize(residual, residualOnly);
  detail += residual;
  EXPECT_TRUE(within(2e-6, detail, randomImage(70, 50, 1, 1)));
}

TEST(EqualizeIT, KeepsEdgesOnlyWhereTheByteIsOne) {
  BandSettings s = strongSettings();
  s.edges[1] = false;
  KivImage expected = randomImage(40, 30, 1, 1);
  equalize(expected, s);
  const unsigned char two = 2;
  std::memcpy(&s.edges[1], &two, 1);
  KivImage image = randomImage(40, 30, 1, 1);
  EqualizeIT(image, image, s.gains, s.radii, s.thresholds, s.edges, levelCount, s.baseGain);
  EXPECT_TRUE(sameBits(image, expected));
}

struct Setting {
  const char* name;
  bool edge;
  float radius, threshold;
};

class IdleLevel : public testing::TestWithParam<Setting> {};

// The low-pass is then the level image itself, as a Gaussian far below a sample's size has it.
TEST_P(IdleLevel, PassesTheLevelOn) {
  BandSettings s = strongSettings();
  BandSettings reference = s;
  reference.edges[1] = false;
  reference.radii[1] = 1e-3F;  // all other taps are 0
  s.edges[1] = GetParam().edge;
  s.radii[1] = GetParam().radius;
  s.thresholds[1] = GetParam().threshold;
  KivImage image = randomImage(77, 66, 1, 1);
  KivImage expected = randomImage(77, 66, 1, 1);
  equalize(image, s);
  equalize(expected, reference);
  EXPECT_TRUE(sameBits(image, expected));
}

INSTANTIATE_TEST_SUITE_P(All, IdleLevel,
                         testing::Values(Setting{"radius_0", false, 0, 1}, Setting{"radius_negative", false, -3, 1},
                                         Setting{"radius_nan", false, nan, 1}, Setting{"edge_radius_0", true, 0, 1},
                                         Setting{"edge_radius_nan", true, nan, 1}, Setting{"threshold_0", true, 3, 0},
                                         Setting{"threshold_nan", true, 3, nan},
                                         Setting{"tiny_radius", true, 1e-25F, 1},
                                         Setting{"tiny_threshold", true, 3, 1e-25F},
                                         // the rule above comes before the size
                                         Setting{"threshold_0_endless_radius", true, infinity, 0}),
                         [](const auto& tested) { return tested.param.name; });

TEST(EqualizeIT, ANegativeThresholdIsAThreshold) {
  BandSettings s;
  KivImage expected = randomImage(77, 66, 1, 1);
  equalize(expected, s);
  s.thresholds[2] = -s.thresholds[2];
  KivImage image = randomImage(77, 66, 1, 1);
  equalize(image, s);
  EXPECT_TRUE(sameBits(image, expected));
}

class ImpossibleLevel : public testing::TestWithParam<Setting> {};

TEST_P(ImpossibleLevel, ThrowsBeforeAnyWork) {
  BandSettings s;
  s.edges[4] = GetParam().edge;
  s.radii[4] = GetParam().radius;
  KivImage image = randomImage(77, 66, 1, 1);
  EXPECT_THROW(equalize(image, s), NO_MEMORY_ERROR);
  if (GetParam().edge) {
    EXPECT_TRUE(sameBits(image, randomImage(77, 66, 1, 1)));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ImpossibleLevel,
    testing::Values(Setting{"window_beyond_16_bits", true, 16385, 1}, Setting{"block_beyond_16_bits", true, 8191.5F, 1},
                    Setting{"endless_window", true, infinity, 1}, Setting{"endless_gaussian", false, infinity, 1},
                    Setting{"kernel_beyond_32_bits", false, 4e8F, 1}, Setting{"buffer_beyond_32_bits", false, 1e8F, 1}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
