#include "equalizer/band_equalizer.h"

#include <omp.h>

#include <vector>

#include "equalizer/band_decomposition.h"
#include "host/ps_database.h"
#include "support/each_row_test.h"
#include "support/images.h"

namespace {

OrbelBandEqualizerGuiParams defaults() {
  return {{100, 100, 100, 100, 100}, {3, 3, 3, 3, 3}, {255, 10, 10, 10, 10}, {0, 1, 1, 1, 1}, 100, 0, 1, 0};
}

OrbelBandEqualizerGuiParams strong() {
  return {{150, 80, 120, 0, 130}, {2, 3, 1, 1, 2}, {255, 13, 30, 7, 14}, {0, 1, 0, 1, 1}, 90, 0, 1, 0};
}

void run(OrbelBandEqualizerGuiParams params, KivImage& image) {
  PS_Database unused = {};
  OrbelBandEqualizer(unused, params, image);
}

// EqualizeIT on one plane, with the parameters scaled by hand.
void equalizePlane(KivImage plane, const OrbelBandEqualizerGuiParams& p) {
  float gains[5];
  float thresholds[5];
  float radii[5];
  bool edges[5];
  for (int i = 0; i < 5; ++i) {
    gains[i] = p.contrast[i] * 0.01F;
    radii[i] = p.radius[i];
    thresholds[i] = p.threshold[i] * (1.0F / 255.0F);
    edges[i] = p.edge[i] == 1;
  }
  EqualizeIT(plane, plane, gains, radii, thresholds, edges, 5, p.factor * 0.01F);
}

TEST(BandEqualizer, PlanesPathEqualizesEachPlaneByItself) {
  OrbelBandEqualizerGuiParams p = strong();
  p.lumi = 0;
  KivImage image = randomImage(67, 45, 3, 1);
  KivImage expected = randomImage(67, 45, 3, 1);
  run(p, image);
  for (int i = 0; i < 3; ++i) equalizePlane(expected.Plane(i), p);
  EXPECT_TRUE(sameBits(image, expected));
}

TEST(BandEqualizer, LuminancePathAddsTheChangeOfLuminance) {
  KivImage image = randomImage(67, 45, 3, 1);
  const KivImage before = randomImage(67, 45, 3, 1);
  run(strong(), image);

  KivImage luma(67, 45, 1);
  for (int y = 0; y < 45; ++y) {
    for (int x = 0; x < 67; ++x) {
      *luma.At(0, x, y) = (*before.At(0, x, y) * 0.299F + *before.At(1, x, y) * 0.587F) + *before.At(2, x, y) * 0.114F;
    }
  }
  KivImage changed;
  changed = luma;
  equalizePlane(changed.Plane(0), strong());
  for (int i = 0; i < 3; ++i) {
    KivImage expected(67, 45, 1);
    for (int y = 0; y < 45; ++y) {
      for (int x = 0; x < 67; ++x) {
        *expected.At(0, x, y) = *before.At(i, x, y) + (*changed.At(0, x, y) - *luma.At(0, x, y)) * 1.0F;
      }
    }
    EXPECT_TRUE(sameBits(image.Plane(i), expected));
  }
}

// A switch is on at 1 alone.
TEST(BandEqualizer, SwitchesOfOtherValuesAreOff) {
  OrbelBandEqualizerGuiParams off = strong();
  off.lumi = 0;
  off.edge[1] = 0;
  OrbelBandEqualizerGuiParams odd = off;
  odd.lumi = 2;
  odd.half = 255;
  odd.edge[1] = 3;
  KivImage expected = randomImage(40, 30, 3, 1);
  KivImage image = randomImage(40, 30, 3, 1);
  run(off, expected);
  run(odd, image);
  EXPECT_TRUE(sameBits(image, expected));
}

TEST(BandEqualizer, DefaultsGiveThePictureBackOnEitherPath) {
  for (const int lumi : {0, 1}) {
    OrbelBandEqualizerGuiParams p = defaults();
    p.lumi = static_cast<unsigned char>(lumi);
    KivImage image = randomImage(100, 75, 3, 2);
    run(p, image);
    EXPECT_TRUE(within(2e-6, image, randomImage(100, 75, 3, 2)));
  }
}

TEST(BandEqualizer, HalfComesBeforeTheOverlay) {
  OrbelBandEqualizerGuiParams p = strong();
  KivImage expected = randomImage(60, 40, 3, 1);
  run(p, expected);
  expected = expected + 0.5F;
  expected.CrossIt_I(7);
  p.half = 1;
  p.width = 7;
  KivImage image = randomImage(60, 40, 3, 1);
  run(p, image);
  EXPECT_TRUE(sameBits(image, expected));
}

TEST(BandEqualizer, FlatDetailIsMidGreyOnThePlanesPath) {
  OrbelBandEqualizerGuiParams p = defaults();
  p.factor = 0;
  p.half = 1;
  p.lumi = 0;
  KivImage image(50, 50, 3);
  fill(image, 0.8F);
  run(p, image);
  KivImage grey(50, 50, 3);
  fill(grey, 0.5F);
  EXPECT_TRUE(within(1e-6, image, grey));
}

TEST(BandEqualizer, ViewsAndWrappedImagesGiveTheBitsOfAnOwner) {
  for (const int lumi : {0, 1}) {
    OrbelBandEqualizerGuiParams p = strong();
    p.lumi = static_cast<unsigned char>(lumi);
    p.half = 1;
    p.width = 2;
    KivImage owner = randomImage(45, 35, 3, 1);
    run(p, owner);

    KivImage parent = randomImage(70, 50, 3, 9);
    KivImage view = parent.ROI(11, 4, 45, 35);
    view = randomImage(45, 35, 3, 1);
    run(p, view);
    EXPECT_TRUE(sameBits(view, owner));
    EXPECT_TRUE(sameBits(parent.ROI(56, 0, 14, 50), randomImage(70, 50, 3, 9).ROI(56, 0, 14, 50)));

    std::vector<float> samples(45 * 35 * 3 + 1, 42.0F);
    KivImage wrapped(samples.data(), {45, 35}, 3);
    wrapped = randomImage(45, 35, 3, 1);
    run(p, wrapped);
    EXPECT_TRUE(sameBits(wrapped, owner));
    EXPECT_EQ(samples.back(), 42.0F);
  }
}

class WholeRun : public EachRow {};

TEST_P(WholeRun, GivesTheBaselinesBitsOnAnyNumberOfThreads) {
  for (const int lumi : {0, 1}) {
    OrbelBandEqualizerGuiParams p = strong();
    p.lumi = static_cast<unsigned char>(lumi);
    p.half = 1;
    p.width = 3;
    KivImage expected = randomImage(131, 87, 3, 1);
    {
      const ForcedRow baseline(0);
      omp_set_num_threads(1);
      run(p, expected);
    }
    const ForcedRow forced(GetParam());
    for (const int threads : {1, 2, 4, 7}) {
      omp_set_num_threads(threads);
      KivImage image = randomImage(131, 87, 3, 1);
      run(p, image);
      ASSERT_EQ(ippJumpIndexForMergedLibs, GetParam());
      EXPECT_TRUE(sameBits(image, expected)) << threads << " threads";
    }
  }
  omp_set_num_threads(omp_get_num_procs());
}

INSTANTIATE_TEST_SUITE_P(Rows, WholeRun, allRows(), rowName);

struct Selector {
  int selector;
  float w0, w1, w2;
};

class LuminanceWeights : public testing::TestWithParam<Selector> {};

TEST_P(LuminanceWeights, SumInTheGivenOrderAndWriteTheWidthAlone) {
  const Selector s = GetParam();
  for (const int width : {1, 3, 4, 15, 16, 17, 50}) {
    KivImage planes = randomImage(width + 3, 4, 3, 1);
    KivImage y = randomImage(width + 3, 4, 1, 2);
    ExtractYChannelKiv(y.planes[0], planes.planes[0], planes.planes[1], planes.planes[2], 4, width, y.stride / 4,
                       s.selector);
    KivImage expected = randomImage(width + 3, 4, 1, 2);
    for (int r = 0; r < 4; ++r) {
      for (int x = 0; x < width; ++x) {
        *expected.At(0, x, r) = (*planes.At(0, x, r) * s.w0 + *planes.At(1, x, r) * s.w1) + *planes.At(2, x, r) * s.w2;
      }
    }
    EXPECT_TRUE(sameBits(y, expected));

    KivImage changed = randomImage(width + 3, 4, 3, 1);
    const KivImage after = randomImage(width + 3, 4, 1, 3);
    SetYChannelOutputKiv(changed.planes[0], changed.planes[1], changed.planes[2], y.planes[0], after.planes[0], 4,
                         width, y.stride / 4, 0.7F);
    for (int r = 0; r < 4; ++r) {
      for (int x = 0; x < width; ++x) {
        *planes.At(2, x, r) += (*after.At(0, x, r) - *y.At(0, x, r)) * 0.7F;
      }
    }
    EXPECT_TRUE(sameBits(changed.Plane(2), planes.Plane(2)));
  }
}

INSTANTIATE_TEST_SUITE_P(All, LuminanceWeights,
                         testing::Values(Selector{1, 0.25F, 0.5F, 0.25F}, Selector{2, 0.299F, 0.587F, 0.114F},
                                         Selector{3, 0.213F, 0.715F, 0.072F}, Selector{4, 0.299F, 0.587F, 0.114F},
                                         Selector{0, 0.25F, 0.5F, 0.25F}, Selector{-7, 0.25F, 0.5F, 0.25F}));

}  // namespace
