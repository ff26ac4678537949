#include "equalizer/band_equalizer.h"

#include <vector>

#include "equalizer/band_decomposition.h"
#include "host/ps_database.h"
#include "image/parallel.h"
#include "support/each_row_test.h"
#include "support/images.h"

namespace {

// A switch is on at 1 alone: the third edge isn't.
OrbelBandEqualizerGuiParams strong(int lumi, int half = 0, int width = 0) {
  const auto byte = [](int value) { return static_cast<unsigned char>(value); };
  return {{150, 80, 120, 0, 130},
          {2, 3, 1, 1, 2},
          {255, 13, 30, 7, 14},
          {0, 1, 3, 1, 1},
          90,
          byte(half),
          byte(lumi),
          width};
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

KivImage luminanceOf(const KivImage& image) {
  KivImage luma(image.size, 1);
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x) {
      *luma.At(0, x, y) = (*image.At(0, x, y) * 0.299F + *image.At(1, x, y) * 0.587F) + *image.At(2, x, y) * 0.114F;
    }
  }
  return luma;
}

// What a run makes of an image, step by step.
void runBySteps(const OrbelBandEqualizerGuiParams& p, KivImage& image) {
  if (p.lumi == 1) {
    const KivImage before = luminanceOf(image);
    KivImage change;
    change = before;
    equalizePlane(change.Plane(0), p);
    change = change - before;
    for (int i = 0; i < 3; ++i) image.Plane(i) += change;
  } else {
    for (int i = 0; i < 3; ++i) equalizePlane(image.Plane(i), p);
  }
  if (p.half == 1) image = image + 0.5F;
  if (p.width > 0) image.CrossIt_I(p.width);
}

TEST(WholeRun, EqualsTheStepsInEveryTargetOnAnyNumberOfThreads) {
  for (const IppiSize size : {IppiSize{131, 87}, IppiSize{20, 35}}) {  // the smaller one has levels of one sample
    for (const auto& p : {strong(0), strong(1), strong(0, 1, 7), strong(1, 1, 3), strong(2, 255)}) {
      KivImage expected = randomImage(size.width, size.height, 3, 1);
      runBySteps(p, expected);
      onEachRow([&] {
        const int row = ippJumpIndexForMergedLibs;
        for (const int threads : {1, 4, 7}) {
          const Team team(threads);
          KivImage parent = randomImage(size.width + 9, size.height + 5, 3, 9);
          std::vector<float> samples(static_cast<std::size_t>(size.width * size.height * 3 + 1), 42.0F);
          KivImage targets[] = {KivImage(size, 3), parent.ROI(5, 2, size.width, size.height),
                                KivImage(samples.data(), size, 3)};
          for (KivImage& image : targets) {
            image = randomImage(size.width, size.height, 3, 1);
            run(p, image);
            ASSERT_EQ(ippJumpIndexForMergedLibs, row);
            EXPECT_TRUE(sameBits(image, expected))
                << threads << " threads, luminance " << int{p.lumi} << ", target " << &image - targets;
          }
          targets[1] = randomImage(size.width + 9, size.height + 5, 3, 9).ROI(5, 2, size.width, size.height);
          EXPECT_TRUE(sameBits(parent, randomImage(size.width + 9, size.height + 5, 3, 9))) << "beside the view";
          EXPECT_EQ(samples.back(), 42.0F);
        }
      });
    }
  }
}

struct Selector {
  int selector;
  float w0, w1, w2;
};

TEST(Luminance, SumsInTheGivenOrderAndWritesTheWidthAlone) {
  for (const Selector s :
       {Selector{1, 0.25F, 0.5F, 0.25F}, Selector{2, 0.299F, 0.587F, 0.114F}, Selector{3, 0.213F, 0.715F, 0.072F},
        Selector{4, 0.299F, 0.587F, 0.114F}, Selector{-7, 0.25F, 0.5F, 0.25F}}) {
    for (const int width : {1, 4, 17, 50}) {
      KivImage planes = randomImage(width + 3, 4, 3, 1);
      KivImage y = randomImage(width + 3, 4, 1, 2);
      KivImage expected = randomImage(width + 3, 4, 1, 2);
      const KivImage after = randomImage(width + 3, 4, 1, 3);
      KivImage changed = randomImage(width + 3, 4, 3, 1);
      ExtractYChannelKiv(y.planes[0], planes.planes[0], planes.planes[1], planes.planes[2], 4, width, y.stride / 4,
                         s.selector);
      SetYChannelOutputKiv(changed.planes[0], changed.planes[1], changed.planes[2], y.planes[0], after.planes[0], 4,
                           width, y.stride / 4, 0.7F);
      for (int i = 0; i < 4 * width; ++i) {
        const int x = i % width;
        const int r = i / width;
        *expected.At(0, x, r) = (*planes.At(0, x, r) * s.w0 + *planes.At(1, x, r) * s.w1) + *planes.At(2, x, r) * s.w2;
        for (int p = 0; p < 3; ++p) *planes.At(p, x, r) += (*after.At(0, x, r) - *y.At(0, x, r)) * 0.7F;
      }
      EXPECT_TRUE(sameBits(y, expected)) << s.selector;
      EXPECT_TRUE(sameBits(changed, planes));
    }
  }
}

}  // namespace
