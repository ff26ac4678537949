#include <algorithm>

#include "image/kiv_image.h"
#include "support/targets.h"
#include "tone/blend_kernels.h"

namespace {

// ---- Kernels

float overlay(float top, float base) {
  const float m = base < 0.5F ? 1.0F : 0.0F;
  return base * top * 2.0F * m + (1.0F - (1.0F - base) * (1.0F - top) * 2.0F) * (1.0F - m);
}

float tonalMask(float x, float filtered) {
  const float t = 1.0F - 2.0F * x;
  const float d = t > 0.0F ? t : 0.0F;
  const float l = -t > 0.0F ? -t : 0.0F;
  const float w = limitedToUnit(d * 1.3F + ((1.0F - (d + l)) * 0.4F + l * -0.2F));
  return filtered * w + x * (1.0F - w);
}

const PlaneKernel kernels[] = {
    planeKernel("overlay", BlendModeOverlayKiv, overlay),
    planeKernel("linearBurn", BlendModeLinearBurnKiv, [](float a, float b) { return limitedToUnit(b + a - 1.0F); }),
    planeKernel("linearDodge", BlendModeLinearDodgeKiv, [](float a, float b) { return limitedToUnit(b + a); }),
    planeKernel("mergeGrain", CalcDetailsLayerMergeGrain, [](float a, float b) { return a - b + 0.5F; }),
    planeKernel(
        "linearLight", CalcDetailsLayerLinearLight, [](float a, float b) { return (a - b) * 0.5F + (0.1F + 0.5F); },
        0.1F),
    planeKernel("tonalMask", ApplyTonalMaskKiv, tonalMask, 1.3F, 0.4F, -0.2F),
};

TEST(BlendKernels, EqualTheFormulaBitForBit) { expectFormulasBitForBit(kernels); }

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

float maskedInSteps(float base, float filtered) {
  const float d = atLeast0(base * 2.0F * -1.0F + 1.0F);
  const float l = atLeast0(base * 2.0F - 1.0F);
  const float w = limitedToUnit((d * 1.3F + l * 0.2F) + ((d + l) - 1.0F) * -0.4F);
  return filtered * w + base * (w * -1.0F + 1.0F);
}

TEST(Blends, TakeTheGivenStepsInEveryTarget) {
  const struct {
    const char* name;
    int planes;  // of those that take part
    void (*run)(KivImage& target, const KivImage& a, const KivImage& b);
    float (*sample)(float a, float b);
    bool allocates = true;
  } blends[] = {
      {"overlay", 3, [](auto& t, auto& a, auto& b) { t.OverlayBlend(a, b); }, overlayWithMiddle},
      {"noted overlay", 2, [](auto& t, auto& a, auto& b) { t = a.OverlayBlend_R(b); }, overlayWithMiddle},
      {"fused overlay", 1, [](auto& t, auto& a, auto& b) { t.OverlayBlendSSE(a, b); },
       [](float base, float top) { return overlay(top, base); }},
      {"linear light", 3, [](auto& t, auto& a, auto& b) { t = a.Blend_R(b, 0.3F); }, linearLight},
      {"alpha", 1, [](auto& t, auto& a, auto& b) { t.AlphaCombine(a, b, 0.3F); }, alpha, false},
      {"tonal mask", 1, [](auto& t, auto& a, auto& b) { t.ApplyTonalMask(a, b, 1.3F, 0.4F, 0.2F); }, maskedInSteps},
  };
  for (const auto& blend : blends) {
    for (const int width : {1, 7, 16, 37}) {
      SCOPED_TRACE(testing::Message() << blend.name << ", width " << width);
      const KivImage a = trickyImage(width, 4, blend.planes, 1);
      const KivImage b = trickyImage(width, 4, blend.planes, 2);
      expectInEveryTarget(a, b, combined(a, b, blend.sample), blend.run, blend.allocates);
    }
  }
}

TEST(OverlayBlend, OnePlaneOfBaseServesAll) {
  const KivImage base = randomImage(9, 5, 1, 1);
  const KivImage top = randomImage(9, 5, 3, 2);
  KivImage target(9, 5, 3);
  target.OverlayBlend(base, top);
  EXPECT_TRUE(sameBits(target, combined(top, base, [](float t, float b) { return overlayWithMiddle(b, t); })));
}

TEST(OverlayBlend, FusedFormWorksOnPlane0Alone) {
  const KivImage base = randomImage(40, 30, 3, 1);
  KivImage fused = copyOf(base);
  fused.OverlayBlendSSE(base, randomImage(40, 30, 3, 2));
  EXPECT_FALSE(sameBits(fused.Plane(0), base.Plane(0)));
  EXPECT_TRUE(sameBits(fused.Plane(1), base.Plane(1)));
}

TEST(AlphaCombine, WeightsOfOneAndZeroPickAnOperand) {
  const KivImage a = randomImage(9, 5, 2, 1);
  const KivImage b = randomImage(9, 5, 2, 2);
  KivImage image = copyOf(a);
  image.AlphaCombine(b, 1.0F);
  EXPECT_TRUE(sameBits(image, a));
  image.AlphaCombine(b, 0.0F);
  EXPECT_TRUE(sameBits(image.Plane(0), b.Plane(0)));
  EXPECT_TRUE(sameBits(image.Plane(1), a.Plane(1)));
  KivImage empty;
  empty.AlphaCombine(b, b, 0.5F);
  EXPECT_EQ(empty.channels, 0);
}

TEST(TonalMask, OneMaskServesAllPlanes) {
  for (const int channels : {1, 2, 3, 4}) {
    KivImage base = randomImage(11, 7, channels, 1);
    const KivImage filtered = randomImage(11, 7, channels, 2);
    const KivImage expected = imageOf(base.size, channels, [&](int p, int x, int y) {
      const auto sample = [&](int plane) { return double{*base.At(plane, x, y)}; };
      const double luma = channels == 3 ? 0.299 * sample(0) + 0.587 * sample(1) + 0.114 * sample(2) : sample(0);
      const double dark = std::max(1 - 2 * luma, 0.0);
      const double light = std::max(2 * luma - 1, 0.0);
      const double w = std::clamp(dark * 0.9 + (1 - dark - light) * 0.3 + light * 0.6, 0.0, 1.0);
      return static_cast<float>(double{*filtered.At(p, x, y)} * w + sample(p) * (1 - w));
    });
    KivImage result;
    result.ApplyTonalMask(base, filtered, 0.9F, 0.3F, 0.6F);
    EXPECT_TRUE(within(1e-6, result, expected));
    base.ApplyTonalMask(base, filtered, 0.9F, 0.3F, 0.6F);
    EXPECT_TRUE(sameBits(base, result)) << "onto its own operand";
  }
}

}  // namespace
