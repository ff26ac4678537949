#include "filters/unsharp_mask.h"

#include "support/targets.h"

namespace {

float detail(float s, float blurred) { return limitedToUnit(s - blurred) - (1.0F - limitedToUnit(1.0F - blurred + s)); }

float gated(float s, float b) {
  const float d = s - b;
  return d > 0.05F || d < -0.05F ? limitedToUnit(detail(s, b) * 0.7F + s) : s;
}

const PlaneKernel kernels[] = {
    planeKernel("highPass", HighPassFilterPsAuxKiv, [](float a, float b) { return a - b + 0.5F; }),
    planeKernel(
        "unsharp", ApplyUnsharpMaskKiv, [](float s, float b) { return limitedToUnit(s + detail(s, b) * 1.7F); }, 1.7F),
    planeKernel("gatedUnsharp", ApplyUnsharpMaskPhotoshopKiv, gated, 0.7F, 0.05F),
};

TEST(UnsharpMaskKernels, EqualTheFormulaBitForBit) { expectFormulasBitForBit(kernels); }

TEST(UnsharpMaskKernel, TakesMoreThanTheThreshold) {
  const auto kernel = [](float s, float b, float threshold) {
    ApplyUnsharpMaskPhotoshopKiv(&s, &s, &b, 1, 1, 1, 2.0F, threshold);
    return s;
  };
  EXPECT_EQ(kernel(1.5F, 1.4F, 0.25F), 1.5F);  // not clipped
  EXPECT_EQ(kernel(0.75F, 0.5F, 0.25F), 0.75F);
  EXPECT_EQ(kernel(0.25F, 0.5F, 0.25F), 0.25F);
  EXPECT_EQ(kernel(0.5F, 0.25F, 0.2F), 1.0F);
}

}  // namespace
