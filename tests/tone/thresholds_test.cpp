#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

struct Limit {
  const char* name;
  void (*toTarget)(KivImage& target, const KivImage& src);
  void (*inPlace)(KivImage& image);
  float (*sample)(float x);
};

void PrintTo(const Limit& limit, std::ostream* out) { *out << limit.name; }

class Limits : public testing::TestWithParam<Limit> {};

TEST_P(Limits, MatchTheFormulaInEveryTarget) {
  const KivImage src = trickyImage(37, 5, 3, 1);
  const KivImage expected = mapped(src, GetParam().sample);
  expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
    GetParam().toTarget(target, from);
  });
  expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
    target = from;
    GetParam().inPlace(target);
  });
}

float outside(float x) { return !(x >= 0.25F) ? -7.0F : (x > 0.5F ? 9.0F : x); }
float fromZero(float x) { return !(x >= 0.0F) ? 0.0F : std::min(x, 0.8F); }

const Limit limits[] = {
    {"outside", [](KivImage& t, const KivImage& s) { t.Threshold(s, 0.25F, -7.0F, 0.5F, 9.0F); },
     [](KivImage& i) { i.Threshold(0.25F, -7.0F, 0.5F, 9.0F); }, outside},
    {"fromZero", [](KivImage& t, const KivImage& s) { t.Threshold(s, 0.0F, 0.0F, 0.8F, 0.8F); },
     [](KivImage& i) { i.Threshold_I(0.8F); }, fromZero},
    {"above", [](KivImage& t, const KivImage& s) { t.Threshold_GT(s, 0.3F); },
     [](KivImage& i) { i.Threshold_GT(i, 0.3F); }, [](float x) { return x <= 0.3F ? x : 0.3F; }},
    {"below", [](KivImage& t, const KivImage& s) { t.Threshold_LT(s, 0.3F); },
     [](KivImage& i) { i.Threshold_LT(i, 0.3F); }, [](float x) { return x >= 0.3F ? x : 0.3F; }},
    {"stretch",
     [](KivImage& t, const KivImage& s) {
       t = s;
       t.Stretch_Range(0.2F, 0.7F);
     },
     [](KivImage& i) { i.Stretch_Range(0.2F, 0.7F); }, [](float x) { return (x - 0.2F) * (1.0F / (0.7F - 0.2F)); }},
};

INSTANTIATE_TEST_SUITE_P(All, Limits, testing::ValuesIn(limits), [](const auto& tested) { return tested.param.name; });

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
  KivImage image(8, 3, 2);
  fill(image, 0.25F);
  *image.At(1, 2, 2) = 0.75F;
  image.Stretch_Range();
  EXPECT_EQ(image.Max(), 0.0F);
  EXPECT_EQ(*image.At(1, 2, 2), 0.5F);  // not divided
}

TEST(ApplyLut, TakesTheNearestEntry) {
  float table[] = {10.0F, 11.0F, 12.0F, 13.0F, 14.0F};  // for a count of 4
  const struct {
    float sample, entry;
  } cases[] = {{0.0F, 10.0F},     {0.12F, 10.0F}, {0.13F, 11.0F},     {0.5F, 12.0F},   {0.87F, 13.0F},
               {0.88F, 14.0F},    {1.0F, 14.0F},  {1.5F, 14.0F},      {-0.01F, 10.0F}, {-3.0F, 10.0F},
               {INFINITY, 14.0F}, {1e30F, 14.0F}, {-INFINITY, 10.0F}, {-1e30F, 10.0F}, {NAN, 10.0F}};
  for (const auto& c : cases) {
    KivImage parent = randomImage(5, 3, 2, 1);
    KivImage image = parent.ROI(1, 1, 2, 1);
    for (int p = 0; p < 2; ++p) *image.At(p, 0, 0) = *image.At(p, 1, 0) = c.sample;
    image.Apply_Lut(table, 4);
    EXPECT_EQ(*image.At(0, 0, 0), c.entry) << c.sample;
    EXPECT_EQ(*image.At(0, 1, 0), c.entry) << c.sample;
    if (std::isfinite(c.sample)) {
      EXPECT_EQ(*image.At(1, 0, 0), c.sample * 3.999F);
    }
    image = randomImage(5, 3, 2, 1).ROI(1, 1, 2, 1);
    EXPECT_TRUE(sameBits(parent, randomImage(5, 3, 2, 1)));
  }
}

TEST(ApplyLut, TheIdentityOfAByteTableKeepsBytes) {
  float table[256];
  KivImage image(256, 1, 1);
  for (int i = 0; i < 256; ++i) *image.At(0, i, 0) = table[i] = static_cast<float>(i) / 255.0F;
  KivImage expected;
  expected = image;
  image.Apply_Lut(table, 255);
  EXPECT_TRUE(sameBits(image, expected));
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
