#include "tone/tone_curves.h"

#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// The primitives' functions, one sample at a time.
float expOf(float v) {
  ippiExp_32f_C1IR(&v, 4, {1, 1});
  return v;
}
float lnOf(float v) {
  ippiLn_32f_C1IR(&v, 4, {1, 1});
  return v;
}
double logisticOf(double v) { return 1.0 / (1.0 + std::exp(-v)); }

struct Curve {
  const char* name;
  void (*toTarget)(KivImage& target, const KivImage& src);
  void (*inPlace)(KivImage& image);
  float (*sample)(float x);   // the given steps
  double (*ideal)(double x);  // what they are about, for x from 0 to 1
};

void PrintTo(const Curve& curve, std::ostream* out) { *out << curve.name; }

float gammaSample(float x) { return expOf(lnOf(x) * 0.45F); }

float sigmoidalSample(float x) {
  float t = 1.0F / (expOf((x - 0.3F) * -7.0F) + 1.0F);
  const float lo = 1.0F / (1.0F + expOf(7.0F * 0.3F)) - 9.99999997e-07F;
  const float hi = 1.0F / (1.0F + expOf(-7.0F * (1.0F - 0.3F))) + 9.99999997e-07F;
  t = t - lo;
  return t * (1.0F / (hi - lo));
}
double sigmoidalIdeal(double x) {
  const double lo = logisticOf(7.0 * -0.3) - 1e-6;
  return (logisticOf(7.0 * (x - 0.3)) - lo) / (logisticOf(7.0 * 0.7) + 1e-6 - lo);
}

float sigmoidal2Sample(float x) {
  float t = 1.0F / (expOf(x * -5.0F) + 1.0F);
  const float lo = 1.0F / (1.0F + expOf(-(5.0F * 0.1F)));
  const float hi = 1.0F / (1.0F + expOf(-(5.0F * 0.9F)));
  t = (t - lo) * (1.0F / (hi - lo));
  return t * (0.9F - 0.1F) + 0.1F;
}
double sigmoidal2Ideal(double x) {
  const double lo = logisticOf(0.5);
  return (logisticOf(5.0 * x) - lo) / (logisticOf(4.5) - lo) * 0.8 + 0.1;
}

constexpr float contrast = 4.0F;
float contrastLow() { return 1.0F / (1.0F + expOf(2.0F)); }
float contrastRise() { return 1.0F / (1.0F + expOf(-2.0F)) - contrastLow(); }
float contrastUpSample(float x) {
  const float t = expOf(lnOf(expOf((x - 0.5F) * -contrast) + 1.0F) * -1.0F);
  return (t - contrastLow()) * (1.0F / contrastRise());
}
float quotient(float a, float b) { return a / (b == 0.0F ? 0.0F : b); }  // the primitive's, whatever the zero's sign
float contrastDownSample(float x) {
  const float u = x * contrastRise() + contrastLow();
  return lnOf(quotient(u, u * -1.0F + 1.0F)) * (1.0F / contrast) + 0.5F;
}
double contrastUpIdeal(double x) {
  return (logisticOf(4.0 * (x - 0.5)) - logisticOf(-2.0)) / (logisticOf(2.0) - logisticOf(-2.0));
}
double contrastDownIdeal(double x) {
  const double u = x * (logisticOf(2.0) - logisticOf(-2.0)) + logisticOf(-2.0);
  return 0.5 + std::log(u / (1.0 - u)) / 4.0;
}

const Curve curves[] = {
    {"gamma", [](KivImage& t, const KivImage& s) { t.ApplyGammaCurve(s, 0.45F); },
     [](KivImage& i) { i.ApplyGammaCurve(0.45F); }, gammaSample, [](double x) { return std::pow(x, 0.45); }},
    {"gamma1", [](KivImage& t, const KivImage& s) { t.ApplyGammaCurve(s, 1.0F); },
     [](KivImage& i) { i.ApplyGammaCurve(1.0F); }, [](float x) { return x; }, [](double x) { return x; }},
    {"sigmoidal", [](KivImage& t, const KivImage& s) { t.SigmoidalCurve(s, 7.0F, 0.3F); },
     [](KivImage& i) { i.SigmoidalCurve(7.0F, 0.3F); }, sigmoidalSample, sigmoidalIdeal},
    {"sigmoidal2", [](KivImage& t, const KivImage& s) { t.SigmoidalCurve2(s, 5.0F, 0.1F, 0.9F); },
     [](KivImage& i) { i.SigmoidalCurve2(5.0F, 0.1F, 0.9F); }, sigmoidal2Sample, sigmoidal2Ideal},
    {"contrastUp", [](KivImage& t, const KivImage& s) { t.Sigmoidal_Contrast(s, contrast); },
     [](KivImage& i) { i.Sigmoidal_Contrast(contrast); }, contrastUpSample, contrastUpIdeal},
    {"contrastDown", [](KivImage& t, const KivImage& s) { t.Sigmoidal_Contrast(s, -contrast); },
     [](KivImage& i) { i.Sigmoidal_Contrast(-contrast); }, contrastDownSample, contrastDownIdeal},
    {"contrastNone", [](KivImage& t, const KivImage& s) { t.Sigmoidal_Contrast(s, -0.5F); },
     [](KivImage& i) { i.Sigmoidal_Contrast(0.5F); }, [](float x) { return x; }, [](double x) { return x; }},
};

class ToneCurves : public testing::TestWithParam<Curve> {};

TEST_P(ToneCurves, TakeTheGivenStepsInEveryTarget) {
  const Curve& curve = GetParam();
  for (const int width : {1, 5, 16, 39}) {
    const KivImage src = trickyImage(width, 3, 2, static_cast<unsigned>(width));
    const KivImage expected = mapped(src, curve.sample);
    expectInEveryTarget(src, src, expected,
                        [&](KivImage& target, const KivImage& from, const KivImage&) { curve.toTarget(target, from); });
    expectInEveryTarget(src, src, expected, [&](KivImage& target, const KivImage& from, const KivImage&) {
      target = from;
      curve.inPlace(target);
    });
  }
}

TEST_P(ToneCurves, AreTheCurvesTheySay) {
  KivImage ramp(1001, 1, 1);
  for (int x = 0; x <= 1000; ++x) *ramp.At(0, x, 0) = static_cast<float>(x) / 1000.0F;
  KivImage result;
  GetParam().toTarget(result, ramp);
  for (int x = 0; x <= 1000; ++x) {
    EXPECT_NEAR(*result.At(0, x, 0), GetParam().ideal(static_cast<double>(*ramp.At(0, x, 0))), 1e-6) << x;
  }
}

INSTANTIATE_TEST_SUITE_P(All, ToneCurves, testing::ValuesIn(curves), [](const auto& i) { return i.param.name; });

float onOne(float value, void (*change)(KivImage&)) {
  KivImage image(1, 1, 1);
  fill(image, value);
  change(image);
  return *image.At(0, 0, 0);
}

TEST(ToneCurve, FixedPoints) {
  EXPECT_EQ(onOne(0.7F, [](KivImage& i) { i.ApplyGammaCurve(0.0F); }), 1.0F);
  EXPECT_EQ(onOne(0.0F, [](KivImage& i) { i.ApplyGammaCurve(2.0F); }), 0.0F);  // through minus infinity
  EXPECT_TRUE(std::isnan(onOne(0.7F, [](KivImage& i) { i.ApplyGammaCurve(NAN); })));
  EXPECT_TRUE(std::isnan(onOne(-0.7F, [](KivImage& i) { i.ApplyGammaCurve(2.0F); })));
  EXPECT_NEAR(onOne(0.5F, [](KivImage& i) { i.SigmoidalCurve(6.0F, 0.5F); }), 0.5F, 1e-6F);
  const float atZero = onOne(0.0F, [](KivImage& i) { i.SigmoidalCurve(6.0F, 0.5F); });
  EXPECT_GT(atZero, 0.0F);
  EXPECT_LT(atZero, 2e-6F);
  EXPECT_LT(onOne(1.0F, [](KivImage& i) { i.SigmoidalCurve(6.0F, 0.5F); }), 1.0F);
  EXPECT_NEAR(onOne(0.0F, [](KivImage& i) { i.SigmoidalCurve2(6.0F, 0.0F, 1.0F); }), 0.0F, 1e-6F);
  EXPECT_NEAR(onOne(1.0F, [](KivImage& i) { i.SigmoidalCurve2(6.0F, 0.0F, 1.0F); }), 1.0F, 1e-6F);
  // A flat logistic: the division by 0 is refused, so that only low remains.
  EXPECT_EQ(onOne(0.7F, [](KivImage& i) { i.SigmoidalCurve2(0.0F, 0.25F, 1.0F); }), 0.25F);
  EXPECT_NE(onOne(0.7F, [](KivImage& i) { i.Sigmoidal_Contrast(0.51F); }), 0.7F);
}

TEST(ToneCurve, ContrastUpAndDownGivesTheImageBack) {
  KivImage image(50, 20, 3);
  fillRandom(image, 3, 0.01F, 0.99F);
  KivImage changed;
  changed.Sigmoidal_Contrast(image, 8.0F);
  EXPECT_FALSE(within(0.05, changed, image));
  changed.Sigmoidal_Contrast(-8.0F);
  EXPECT_TRUE(within(1e-5, changed, image));
}

// ---- The fused kernel

struct FusedParameters {
  float slope, low, high;
};

float fastExp(float x) {
  if (std::isnan(x)) return x;
  if (std::abs(x) >= 87.3F) return x < 0.0F ? 0.0F : INFINITY;
  const float n = std::nearbyint(x * 1.44269502F);
  const float y = (x - n * 0.693359375F) - n * -0.000212194442F;
  const float p = ((0.5F + y * (1.0F / 6)) + y * y * (1.0F / 24 + y * (1.0F / 120))) +
                  (y * y) * (y * y) * (1.0F / 720 + y * (1.0F / 5040));
  return std::ldexp((y + y * y * p) + 1.0F, static_cast<int>(n));
}

float fusedSample(float x, FusedParameters p) {
  const float lo = 1.0F / (1.0F + expOf(-(p.low * p.slope)));
  const float hi = 1.0F / (1.0F + expOf(-(p.high * p.slope)));
  const float r = 1.0F / (fastExp(x * -p.slope) + 1.0F);
  return ((r - lo) * (1.0F / (hi - lo))) * (p.high - p.low) + p.low;
}

constexpr FusedParameters fused[] = {{5.0F, 0.1F, 0.9F}, {120.0F, -0.2F, 0.6F}, {-3.0F, 0.0F, 1.0F}};

template <int i>
constexpr PlaneKernel fusedKernel(const char* name) {
  return {name,
          [](float* dst, float* a, float*, int height, int width, int step) {
            ApplySigmoidalCurveKiv(dst, a, height, width, step, fused[i].slope, fused[i].low, fused[i].high);
          },
          [](float a, float) { return fusedSample(a, fused[i]); }};
}

using SigmoidalKernel = PlaneKernels;

TEST_P(SigmoidalKernel, EqualsTheFormulaBitForBit) { expectFormulaBitForBit(); }

INSTANTIATE_TEST_SUITE_P(All, SigmoidalKernel,
                         testing::Combine(allRows(), testing::Values(fusedKernel<0>("gentle"), fusedKernel<1>("steep"),
                                                                     fusedKernel<2>("falling"))),
                         kernelName);

TEST(FusedCurve, IsTheCurveOfTheWholeImageForm) {
  for (const float slope : {0.5F, 5.0F, 60.0F}) {
    KivImage image(500, 3, 1);
    fillRandom(image, 1, -0.5F, 1.5F);
    KivImage expected;
    expected.SigmoidalCurve2(image, slope, 0.0F, 1.0F);
    ApplySigmoidalCurveKiv(image.planes[0], image.planes[0], 3, 500, image.stride / 4, slope, 0.0F, 1.0F);
    EXPECT_TRUE(within(1e-6, image, expected)) << slope;
  }
}

}  // namespace
