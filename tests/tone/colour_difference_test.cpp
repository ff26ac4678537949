#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// Colours with one difference each from (50, 20, 0), which the weights 9, 3 and -2 of hue, chroma and lightness count.
TEST(ColourDifference, KnownValuesInEveryTarget) {
  float reference[] = {50.0F, 20.0F, 0.0F};
  float weights[] = {9.0F, 3.0F, -2.0F};
  float colours[] = {50.0F, 46.0F, 50.0F, 50.0F,  50.0F, 47.0F,  // L
                     20.0F, 20.0F, 40.0F, 0.0F,   0.0F,  40.0F,  // a
                     0.0F,  0.0F,  0.0F,  -20.0F, 0.0F,  0.0F};  // b
  float known[] = {0.0F,
                   8.0F,
                   3.0F * 20.0F / 2.8F,              // chroma 40
                   9.0F * std::sqrt(800.0F) / 1.3F,  // of one chroma, a quarter turn away
                   3.0F * 20.0F,                     // grey
                   std::hypot(6.0F, 3.0F * 20.0F / 2.8F)};
  const KivImage lab(colours, {3, 2}, 3);
  const KivImage expected(known, {3, 2}, 1);
  KivImage map;
  map.Delta_E(lab, reference, weights);
  EXPECT_TRUE(within(1e-4, map, expected));

  KivImage parent = randomImage(9, 7, 1, 4);
  KivImage around = copyOf(parent);
  around.ROI(5, 2, 3, 2) = map;
  parent.ROI(5, 2, 3, 2).Delta_E(lab, reference, weights);
  EXPECT_TRUE(sameBits(parent, around));

  KivImage inPlace = copyOf(lab);
  inPlace.Plane(0) = map;
  KivImage(colours, {3, 2}, 3).Delta_E(reference, weights);
  EXPECT_TRUE(sameBits(lab, inPlace)) << "the planes above plane 0 stay";
}

}  // namespace
