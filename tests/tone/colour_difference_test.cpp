#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// The given steps for one pixel.
float differenceOf(const float (&lab)[3], const float (&reference)[3], const float (&weights)[3]) {
  const float l = (lab[0] - reference[0]) * weights[2];
  float sum = l * l;
  const float chroma = std::sqrt(lab[1] * lab[1] + lab[2] * lab[2]);
  const float change = chroma - std::sqrt(reference[1] * reference[1] + reference[2] * reference[2]);
  const float c = (change / (chroma * 0.045F + 1.0F)) * weights[1];
  sum = sum + c * c;
  const float a = lab[1] - reference[1];
  const float b = lab[2] - reference[2];
  const float h = (std::sqrt((b * b + a * a) - change * change) / (chroma * 0.015F + 1.0F)) * weights[0];
  return std::sqrt(sum + h * h);
}

struct Difference {
  const char* name;
  float reference[3];
  float weights[3];
};

void PrintTo(const Difference& difference, std::ostream* out) { *out << difference.name; }

class ColourDifference : public testing::TestWithParam<Difference> {};

TEST_P(ColourDifference, TakesTheGivenStepsInBothForms) {
  Difference given = GetParam();
  KivImage lab(37, 8, 3);
  fillRandom(lab, 1, -100.0F, 100.0F);
  lab.Plane(0).ROI(0, 7, 37, 1) = trickyImage(37, 1, 1, 2);
  lab.ROI(0, 6, 37, 1).Plane(1) = trickyImage(37, 1, 1, 3);
  for (int c = 0; c < 3; ++c) *lab.At(c, 4, 4) = given.reference[c];
  const KivImage expected = imageOf(lab.size, 1, [&](int, int x, int y) {
    return differenceOf({*lab.At(0, x, y), *lab.At(1, x, y), *lab.At(2, x, y)}, given.reference, given.weights);
  });
  EXPECT_EQ(*expected.At(0, 4, 4), 0.0F);

  KivImage map;
  map.Delta_E(lab, given.reference, given.weights);
  EXPECT_TRUE(sameBits(map, expected));

  KivImage parent = randomImage(60, 12, 1, 4);
  KivImage around = copyOf(parent);
  around.ROI(5, 2, 37, 8) = expected;
  parent.ROI(5, 2, 37, 8).Delta_E(lab, given.reference, given.weights);
  EXPECT_TRUE(sameBits(parent, around));

  KivImage expectedInPlace = copyOf(lab);
  expectedInPlace.Plane(0) = expected;
  lab.Delta_E(given.reference, given.weights);
  EXPECT_TRUE(sameBits(lab, expectedInPlace));
}

const Difference differences[] = {
    {"plain", {50.0F, 20.0F, -30.0F}, {1.0F, 1.0F, 1.0F}},
    {"weighted", {-3.0F, 0.1F, 77.0F}, {0.5F, 2.0F, 3.0F}},
    {"fromGrey", {40.0F, 0.0F, 0.0F}, {1.0F, 1.0F, 1.0F}},
};

INSTANTIATE_TEST_SUITE_P(All, ColourDifference, testing::ValuesIn(differences),
                         [](const auto& i) { return i.param.name; });

TEST(ColourDifference, KnownValues) {
  const auto difference = [](float l, float a, float hue, float chroma, float lightness) {
    float colour[] = {l, a, 0.0F};
    float reference[] = {50.0F, 0.0F, 0.0F};
    float weights[] = {hue, chroma, lightness};
    KivImage(colour, {1, 1}, 3).Delta_E(reference, weights);
    return colour[0];
  };
  EXPECT_EQ(difference(46.0F, 0.0F, 1.0F, 1.0F, -2.0F), 8.0F);                       // lightness: |weight * dL|
  EXPECT_FLOAT_EQ(difference(50.0F, 20.0F, 9.0F, 3.0F, 9.0F), 3.0F * 20.0F / 1.9F);  // chroma alone
}

}  // namespace
