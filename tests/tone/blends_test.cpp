#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"
#include "tone/blend_kernels.h"

namespace {

// ---- Kernels

float overlay(float top, float base) {
  const float m = base < 0.5F ? 1.0F : 0.0F;
  return base * top * 2.0F * m + (1.0F - (1.0F - base) * (1.0F - top) * 2.0F) * (1.0F - m);
}

float tonalMask(float x, float filtered, float shadows, float midtones, float highlights) {
  const float t = 1.0F - 2.0F * x;
  const float d = t > 0.0F ? t : 0.0F;
  const float l = -t > 0.0F ? -t : 0.0F;
  const float w = limitedToUnit(d * shadows + ((1.0F - (d + l)) * midtones + l * highlights));
  return filtered * w + x * (1.0F - w);
}

constexpr PlaneKernel kernels[] = {
    {"overlay", BlendModeOverlayKiv, overlay},
    {"linearBurn", BlendModeLinearBurnKiv, [](float a, float b) { return limitedToUnit(b + a - 1.0F); }},
    {"linearDodge", BlendModeLinearDodgeKiv, [](float a, float b) { return limitedToUnit(b + a); }},
    {"mergeGrain", CalcDetailsLayerMergeGrain, [](float a, float b) { return a - b + 0.5F; }},
    {"linearLight",
     [](float* dst, float* a, float* b, int height, int width, int step) {
       CalcDetailsLayerLinearLight(dst, a, b, height, width, step, 0.1F);
     },
     [](float a, float b) { return (a - b) * 0.5F + (0.1F + 0.5F); }},
    {"tonalMask",
     [](float* dst, float* a, float* b, int height, int width, int step) {
       ApplyTonalMaskKiv(dst, a, b, height, width, step, 1.3F, 0.4F, -0.2F);
     },
     [](float a, float b) { return tonalMask(a, b, 1.3F, 0.4F, -0.2F); }},
};

using BlendKernels = PlaneKernels;

TEST_P(BlendKernels, EqualTheFormulaBitForBit) { expectFormulaBitForBit(); }

INSTANTIATE_TEST_SUITE_P(All, BlendKernels, testing::Combine(allRows(), testing::ValuesIn(kernels)), kernelName);

TEST(BlendKernel, KnownValues) {
  const auto at = [](int kernel, float a, float b) {
    float result = 0.0F;
    kernels[kernel].run(&result, &a, &b, 1, 1, 1);
    return result;
  };
  EXPECT_EQ(at(0, 0.5F, 0.25F), 0.25F);  // a grey top leaves the base
  EXPECT_EQ(at(0, 0.5F, 0.75F), 0.75F);
  EXPECT_EQ(at(0, 2.0F, 0.75F), 1.5F);  // nothing is clipped
  EXPECT_EQ(at(1, 0.25F, 0.25F), 0.0F);
  EXPECT_EQ(at(2, 0.75F, 0.75F), 1.0F);
  EXPECT_EQ(at(3, 0.3F, 0.3F), 0.5F);
  EXPECT_EQ(at(4, 0.3F, 0.3F), 0.1F + 0.5F);
}

TEST(TonalMaskKernel, WeightRunsFromShadowsOverMidtonesToHighlights) {
  const auto weight = [](float base, float shadows, float midtones, float highlights) {
    float zero = 0.0F;  // of what is filtered: what remains is base * (1 - w)
    float result = 0.0F;
    ApplyTonalMaskKiv(&result, &base, &zero, 1, 1, 1, shadows, midtones, highlights);
    return 1.0F - result / base;
  };
  EXPECT_NEAR(weight(1e-6F, 0.75F, 0.5F, 0.25F), 0.75F, 1e-5F);
  EXPECT_NEAR(weight(0.25F, 0.75F, 0.5F, 0.0F), 0.625F, 1e-6F);
  EXPECT_NEAR(weight(0.5F, 0.75F, 0.5F, 0.25F), 0.5F, 1e-6F);
  EXPECT_NEAR(weight(1.0F, 0.75F, 0.5F, 0.25F), 0.25F, 1e-6F);
  EXPECT_EQ(weight(0.01F, 2.0F, 0.0F, 0.0F), 1.0F);  // 1.96, limited
}

// ---- Whole images

// Both branches, half each at 0.5.
float overlayWithMiddle(float base, float top) {
  const float product = top * 2.0F * base;
  const float screen = (top * -1.0F + 1.0F) * (base * -1.0F + 1.0F) * 2.0F * -1.0F + 1.0F;
  const float mask = !(base >= 0.5F) ? 0.0F : (base > 0.5F ? 1.0F : base);
  return product * (mask * -1.0F + 1.0F) + screen * mask;
}

float atLeast0(float v) { return v >= 0.0F ? v : 0.0F; }  // NaN becomes 0

float linearLight(float first, float second) {
  return ((first * 2.0F + second) - 1.0F) * 0.3F + second * (1.0F - 0.3F);
}

float alpha(float a, float b) {
  return static_cast<float>(static_cast<double>(a * 0.3F) + static_cast<double>(b) * (1.0 - static_cast<double>(0.3F)));
}

struct Blend {
  const char* name;
  void (*run)(KivImage& target, const KivImage& a, const KivImage& b);
  float (*sample)(float a, float b);
  int planes;  // of those that take part
  bool allocates;
};

void PrintTo(const Blend& blend, std::ostream* out) { *out << blend.name; }

class Blends : public testing::TestWithParam<Blend> {};

TEST_P(Blends, TakeTheGivenStepsInEveryTarget) {
  const Blend& blend = GetParam();
  for (const int width : {1, 7, 16, 37}) {
    const KivImage a = trickyImage(width, 4, blend.planes, 1);
    const KivImage b = trickyImage(width, 4, blend.planes, 2);
    expectInEveryTarget(a, b, combined(a, b, blend.sample), blend.run, blend.allocates);
  }
}

const Blend blends[] = {
    {"OverlayBlend", [](KivImage& t, const KivImage& a, const KivImage& b) { t.OverlayBlend(a, b); }, overlayWithMiddle,
     3, true},
    {"OverlayBlend_R", [](KivImage& t, const KivImage& a, const KivImage& b) { t = a.OverlayBlend_R(b); },
     overlayWithMiddle, 2, true},
    {"OverlayBlendSSE", [](KivImage& t, const KivImage& a, const KivImage& b) { t.OverlayBlendSSE(a, b); },
     [](float base, float top) { return overlay(top, base); }, 1, true},
    {"Blend_R", [](KivImage& t, const KivImage& a, const KivImage& b) { t = a.Blend_R(b, 0.3F); }, linearLight, 3,
     true},
    {"AlphaCombine", [](KivImage& t, const KivImage& a, const KivImage& b) { t.AlphaCombine(a, b, 0.3F); }, alpha, 1,
     false},
    {"ApplyTonalMask",
     [](KivImage& t, const KivImage& a, const KivImage& b) { t.ApplyTonalMask(a, b, 1.3F, 0.4F, 0.2F); },
     [](float base, float filtered) {
       const float d = atLeast0(base * 2.0F * -1.0F + 1.0F);
       const float l = atLeast0(base * 2.0F - 1.0F);
       const float w = limitedToUnit((d * 1.3F + l * 0.2F) + ((d + l) - 1.0F) * -0.4F);
       return filtered * w + base * (w * -1.0F + 1.0F);
     },
     1, true},
};

INSTANTIATE_TEST_SUITE_P(All, Blends, testing::ValuesIn(blends), [](const auto& tested) { return tested.param.name; });

TEST(OverlayBlend, OnePlaneOfBaseServesAll) {
  const KivImage base = randomImage(9, 5, 1, 1);
  const KivImage top = randomImage(9, 5, 3, 2);
  KivImage target(9, 5, 3);
  target.OverlayBlend(base, top);
  EXPECT_TRUE(sameBits(target, combined(top, base, [](float t, float b) { return overlayWithMiddle(b, t); })));
}

TEST(OverlayBlend, FusedFormIsTheSameCurveOnPlane0) {
  KivImage base = randomImage(40, 30, 3, 1);
  *base.At(0, 3, 3) = 0.5F;
  const KivImage top = randomImage(40, 30, 3, 2);
  KivImage whole;
  whole.OverlayBlend(base, top);
  KivImage fused;
  fused = base;
  fused.OverlayBlendSSE(base, top);
  EXPECT_TRUE(within(1e-6, fused.Plane(0), whole.Plane(0)));
  EXPECT_TRUE(sameBits(fused.Plane(1), base.Plane(1)));
}

TEST(AlphaCombine, WeightsOfOneAndZeroPickAnOperand) {
  const KivImage b = randomImage(9, 5, 2, 2);
  KivImage image = randomImage(9, 5, 2, 1);
  image.AlphaCombine(b, 1.0F);
  EXPECT_TRUE(sameBits(image, randomImage(9, 5, 2, 1)));
  image.AlphaCombine(b, 0.0F);
  EXPECT_TRUE(sameBits(image.Plane(0), b.Plane(0)));
  EXPECT_TRUE(sameBits(image.Plane(1), randomImage(9, 5, 2, 1).Plane(1)));
  KivImage empty;
  empty.AlphaCombine(b, b, 0.5F);
  EXPECT_EQ(empty.channels, 0);
}

TEST(Blend, AmountZeroOrAGreyFirstGivesSecond) {
  KivImage first = randomImage(9, 5, 2, 1);
  const KivImage second = randomImage(9, 5, 2, 2);
  KivImage image;
  image = first.Blend_R(second, 0.0F);
  EXPECT_TRUE(within(1e-6, image, second));
  fill(first, 0.5F);
  image = first.Blend_R(second, 0.7F);
  EXPECT_TRUE(within(1e-6, image, second));
}

TEST(TonalMask, OneMaskServesAllPlanes) {
  for (const int channels : {2, 3, 4}) {
    KivImage base = randomImage(11, 7, channels, 1);
    const KivImage filtered = randomImage(11, 7, channels, 2);
    KivImage result;
    result.ApplyTonalMask(base, filtered, 0.9F, 0.3F, 0.6F);
    for (int y = 0; y < 7; ++y) {
      for (int x = 0; x < 11; ++x) {
        const auto sample = [&](int plane) { return static_cast<double>(*base.At(plane, x, y)); };
        const double luma = channels == 3 ? 0.299 * sample(0) + 0.587 * sample(1) + 0.114 * sample(2) : sample(0);
        const double d = std::max(1 - 2 * luma, 0.0);
        const double l = std::max(2 * luma - 1, 0.0);
        const double w = std::min(std::max(d * 0.9 + (1 - d - l) * 0.3 + l * 0.6, 0.0), 1.0);
        for (int p = 0; p < channels; ++p) {
          EXPECT_NEAR(*result.At(p, x, y), static_cast<double>(*filtered.At(p, x, y)) * w + sample(p) * (1 - w), 1e-6);
        }
      }
    }
    // Onto its own operand.
    base.ApplyTonalMask(base, filtered, 0.9F, 0.3F, 0.6F);
    EXPECT_TRUE(sameBits(base, result));
  }
}

TEST(TonalMask, FullAndNoWeightPickAnOperand) {
  const KivImage base = randomImage(11, 7, 3, 1);
  const KivImage filtered = randomImage(11, 7, 3, 2);
  KivImage result;
  result.ApplyTonalMask(base, filtered, 0.0F, 0.0F, 0.0F);
  EXPECT_TRUE(sameBits(result, base));
  result.ApplyTonalMask(base, filtered, 1.0F, 1.0F, 1.0F);
  EXPECT_TRUE(within(1e-6, result, filtered));
}

}  // namespace
