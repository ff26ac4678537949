#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

float outside(float x) { return !(x >= 0.25F) ? -7.0F : (x > 0.5F ? 9.0F : x); }
float fromZero(float x) { return !(x >= 0.0F) ? 0.0F : std::min(x, 0.8F); }

const NamedOperation limits[] = {
    {"outside", [](KivImage& t, const auto&... s) { t.Threshold(s..., 0.25F, -7.0F, 0.5F, 9.0F); }, outside},
    {"fromZero", [](KivImage& t, const KivImage& s) { (t = s).Threshold_I(0.8F); }, fromZero},
    {"above", [](KivImage& t, const KivImage& s) { t.Threshold_GT(s, 0.3F); },
     [](float x) { return x <= 0.3F ? x : 0.3F; }},
    {"below", [](KivImage& t, const KivImage& s) { t.Threshold_LT(s, 0.3F); },
     [](float x) { return x >= 0.3F ? x : 0.3F; }},
    {"stretch", [](KivImage& t, const KivImage& s) { (t = s).Stretch_Range(0.2F, 0.7F); },
     [](float x) { return (x - 0.2F) * (1.0F / (0.7F - 0.2F)); }},
};

TEST(Limits, MatchTheFormulaInEveryTarget) {
  const KivImage src = trickyImage(37, 5, 3, 1);
  for (const NamedOperation& limit : limits) {
    SCOPED_TRACE(limit.name);
    limit.expectInTargets(src, mapped(src, limit.sample));
  }
}

TEST(Thresholds, ReversedOnesAreRefused) {
  KivImage image = randomImage(9, 2, 1, 1);
  image.Threshold(0.6F, 0.0F, 0.4F, 1.0F);
  image.Threshold_I(-1.0F);
  EXPECT_TRUE(sameBits(image, randomImage(9, 2, 1, 1)));
}

TEST(StretchRange, TakesItsRangeFromPlane0) {
  KivImage image = randomImage(20, 10, 2, 1);
  *image.At(1, 4, 4) = 50.0F;
  const float low = image.Min();
  const float high = image.Max();
  const KivImage expected = mapped(image, [=](float x) { return (x - low) * (1.0F / (high - low)); });
  image.Stretch_Range();
  EXPECT_TRUE(sameBits(image, expected));
  EXPECT_EQ(image.Min(), 0.0F);
  EXPECT_NEAR(image.Max(), 1.0F, 1e-6F);
}

TEST(StretchRange, AFlatPlaneBecomesZero) {
  KivImage image = flatImage({8, 3}, 2, 0.25F);
  *image.At(1, 2, 2) = 0.75F;
  image.Stretch_Range();
  EXPECT_EQ(image.Max(), 0.0F);
  EXPECT_EQ(*image.At(1, 2, 2), 0.5F);  // not divided
}

TEST(ApplyLut, TakesTheNearestEntry) {
  float table[] = {10.0F, 11.0F, 12.0F, 13.0F, 14.0F};  // for a count of 4
  const struct {
    float sample, entry;
  } cases[] = {{0.0F, 10.0F},   {0.12F, 10.0F},    {0.13F, 11.0F}, {0.5F, 12.0F},     {0.87F, 13.0F},
               {0.88F, 14.0F},  {1.0F, 14.0F},     {1.5F, 14.0F},  {-3.0F, 10.0F},    {1e30F, 14.0F},
               {-1e30F, 10.0F}, {INFINITY, 14.0F}, {NAN, 10.0F},   {-INFINITY, 10.0F}};
  for (const auto& c : cases) {
    KivImage parent = randomImage(5, 3, 2, 1);
    KivImage image = parent.ROI(1, 1, 2, 1);
    image = flatImage(image.size, 2, c.sample);
    KivImage expected = copyOf(parent);
    expected.ROI(1, 1, 2, 1) = mapped(image, [](float v) { return v * 3.999F; });
    expected.Plane(0).ROI(1, 1, 2, 1) = flatImage(image.size, 1, c.entry);
    image.Apply_Lut(table, 4);
    EXPECT_TRUE(sameBits(parent, expected)) << c.sample;
  }
}

TEST(ApplyLut, WithoutATableNothingChanges) {
  float table[] = {5.0F};
  KivImage image = randomImage(5, 3, 2, 1);
  image.Apply_Lut(nullptr, 4);
  image.Apply_Lut(table, -1);
  image.ApplyLut(image, table, table, 0);
  EXPECT_TRUE(sameBits(image, randomImage(5, 3, 2, 1)));
  image.Apply_Lut(table, 0);  // one entry for all
  EXPECT_EQ(image.Min(), 5.0F);
}

}  // namespace
