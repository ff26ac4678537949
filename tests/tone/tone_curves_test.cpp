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

float gammaSample(float x) { return expOf(lnOf(x) * 0.45F); }

float sigmoidalSample(float x) {
  float t = 1.0F / (expOf((x - 0.3F) * -7.0F) + 1.0F);
  const float lo = 1.0F / (1.0F + expOf(7.0F * 0.3F)) - 9.99999997e-07F;
  const float hi = 1.0F / (1.0F + expOf(-7.0F * (1.0F - 0.3F))) + 9.99999997e-07F;
  t = t - lo;
  return t * (1.0F / (hi - lo));
}

float sigmoidal2Sample(float x) {
  float t = 1.0F / (expOf(x * -5.0F) + 1.0F);
  const float lo = 1.0F / (1.0F + expOf(-(5.0F * 0.1F)));
  const float hi = 1.0F / (1.0F + expOf(-(5.0F * 0.9F)));
  t = (t - lo) * (1.0F / (hi - lo));
  return t * (0.9F - 0.1F) + 0.1F;
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

float same(float x) { return x; }

const NamedOperation curves[] = {
    {"gamma", [](KivImage& t, const auto&... s) { t.ApplyGammaCurve(s..., 0.45F); }, gammaSample},
    {"gamma 1", [](KivImage& t, const auto&... s) { t.ApplyGammaCurve(s..., 1.0F); }, same},
    {"sigmoidal", [](KivImage& t, const auto&... s) { t.SigmoidalCurve(s..., 7.0F, 0.3F); }, sigmoidalSample},
    {"sigmoidal 2", [](KivImage& t, const auto&... s) { t.SigmoidalCurve2(s..., 5.0F, 0.1F, 0.9F); }, sigmoidal2Sample},
    {"contrast up", [](KivImage& t, const auto&... s) { t.Sigmoidal_Contrast(s..., contrast); }, contrastUpSample},
    {"contrast down", [](KivImage& t, const auto&... s) { t.Sigmoidal_Contrast(s..., -contrast); }, contrastDownSample},
    {"no contrast", [](KivImage& t, const auto&... s) { t.Sigmoidal_Contrast(s..., -0.5F); }, same},
};

TEST(ToneCurves, TakeTheGivenStepsInEveryTarget) {
  for (const NamedOperation& curve : curves) {
    for (const int width : {1, 5, 16, 39}) {
      SCOPED_TRACE(testing::Message() << curve.name << ", width " << width);
      const KivImage src = trickyImage(width, 3, 2, static_cast<unsigned>(width));
      curve.expectInTargets(src, mapped(src, curve.sample));
    }
  }
}

TEST(ToneCurves, FixedPoints) {
  const auto onOne = [](float value, void (*change)(KivImage&)) {
    KivImage image(&value, {1, 1}, 1);
    change(image);
    return value;
  };
  EXPECT_EQ(onOne(0.7F, [](KivImage& i) { i.ApplyGammaCurve(0.0F); }), 1.0F);
  EXPECT_EQ(onOne(0.0F, [](KivImage& i) { i.ApplyGammaCurve(2.0F); }), 0.0F);  // through minus infinity
  EXPECT_TRUE(std::isnan(onOne(0.7F, [](KivImage& i) { i.ApplyGammaCurve(NAN); })));
  EXPECT_NEAR(onOne(0.5F, [](KivImage& i) { i.SigmoidalCurve(6.0F, 0.5F); }), 0.5F, 1e-6F);
  EXPECT_NEAR(onOne(0.2F, [](KivImage& i) { i.SigmoidalCurve2(6.0F, 0.2F, 1.0F); }), 0.2F, 1e-6F);
  // A flat logistic: the division by 0 is refused, so that only low remains.
  EXPECT_EQ(onOne(0.7F, [](KivImage& i) { i.SigmoidalCurve2(0.0F, 0.25F, 1.0F); }), 0.25F);
  EXPECT_NE(onOne(0.7F, [](KivImage& i) { i.Sigmoidal_Contrast(0.51F); }), 0.7F);
}

// ---- The fused kernel

float fastExp(float x) {
  if (std::isnan(x)) return x;
  if (std::abs(x) >= 87.3F) return x < 0.0F ? 0.0F : INFINITY;
  const float n = std::nearbyint(x * 1.44269502F);
  const float y = (x - n * 0.693359375F) - n * -0.000212194442F;
  const float p = ((0.5F + y * (1.0F / 6)) + y * y * (1.0F / 24 + y * (1.0F / 120))) +
                  (y * y) * (y * y) * (1.0F / 720 + y * (1.0F / 5040));
  return std::ldexp((y + y * y * p) + 1.0F, static_cast<int>(n));
}

float fusedSample(float x, float slope, float low, float high) {
  const float lo = 1.0F / (1.0F + expOf(-(low * slope)));
  const float hi = 1.0F / (1.0F + expOf(-(high * slope)));
  const float r = 1.0F / (fastExp(x * -slope) + 1.0F);
  return ((r - lo) * (1.0F / (hi - lo))) * (high - low) + low;
}

void fused(float* dst, float* a, float*, int height, int width, int step, float slope, float low, float high) {
  ApplySigmoidalCurveKiv(dst, a, height, width, step, slope, low, high);
}

const PlaneKernel kernels[] = {
    planeKernel(
        "gentle", fused, [](float a, float) { return fusedSample(a, 5.0F, 0.1F, 0.9F); }, 5.0F, 0.1F, 0.9F),
    planeKernel(
        "steep", fused, [](float a, float) { return fusedSample(a, 120.0F, -0.2F, 0.6F); }, 120.0F, -0.2F, 0.6F),
    planeKernel(
        "falling", fused, [](float a, float) { return fusedSample(a, -3.0F, 0.0F, 1.0F); }, -3.0F, 0.0F, 1.0F),
};

TEST(SigmoidalKernel, EqualsTheFormulaBitForBit) { expectFormulasBitForBit(kernels); }

}  // namespace
