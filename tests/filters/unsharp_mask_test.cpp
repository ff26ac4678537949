#include "filters/unsharp_mask.h"

#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// ---- Kernels

float detail(float s, float blurred) { return limitedToUnit(s - blurred) - (1.0F - limitedToUnit(1.0F - blurred + s)); }

constexpr PlaneKernel kernels[] = {
    {"highPass", HighPassFilterPsAuxKiv, [](float a, float b) { return a - b + 0.5F; }},
    {"unsharp",
     [](float* dst, float* a, float* b, int height, int width, int step) {
       ApplyUnsharpMaskKiv(dst, a, b, height, width, step, 1.7F);
     },
     [](float s, float b) { return limitedToUnit(s + detail(s, b) * 1.7F); }},
    {"gatedUnsharp",
     [](float* dst, float* a, float* b, int height, int width, int step) {
       ApplyUnsharpMaskPhotoshopKiv(dst, a, b, height, width, step, 0.7F, 0.05F);
     },
     [](float s, float b) {
       const float d = s - b;
       return d > 0.05F || d < -0.05F ? limitedToUnit(detail(s, b) * 0.7F + s) : s;
     }},
};

using UnsharpMaskKernels = PlaneKernels;

TEST_P(UnsharpMaskKernels, EqualTheFormulaBitForBit) { expectFormulaBitForBit(); }

INSTANTIATE_TEST_SUITE_P(All, UnsharpMaskKernels, testing::Combine(allRows(), testing::ValuesIn(kernels)), kernelName);

TEST(UnsharpMaskKernel, ClipsOnlyWhatItSharpens) {
  const auto plain = [](float s, float b, float amount) {
    ApplyUnsharpMaskKiv(&s, &s, &b, 1, 1, 1, amount);
    return s;
  };
  const auto gated = [](float s, float b, float threshold) {
    ApplyUnsharpMaskPhotoshopKiv(&s, &s, &b, 1, 1, 1, 2.0F, threshold);
    return s;
  };
  EXPECT_EQ(plain(1.5F, 0.2F, 0.0F), 1.0F);
  EXPECT_EQ(plain(-0.5F, 0.2F, 0.0F), 0.0F);
  EXPECT_EQ(plain(0.5F, 0.25F, 1.0F), 0.75F);
  EXPECT_EQ(plain(0.25F, 0.5F, 0.5F), 0.125F);
  EXPECT_EQ(gated(1.5F, 1.4F, 0.25F), 1.5F);
  EXPECT_EQ(gated(0.75F, 0.5F, 0.25F), 0.75F);  // at the threshold, not above it
  EXPECT_EQ(gated(0.25F, 0.5F, 0.25F), 0.25F);
  EXPECT_EQ(gated(0.5F, 0.25F, 0.2F), 1.0F);
  EXPECT_EQ(gated(1.5F, 1.5F, 0.0F), 1.5F);
}

}  // namespace
