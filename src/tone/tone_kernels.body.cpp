// The hot lines of tone and blending. The order of the operations is the definition of the results.

#include "tone/tone_kernels.h"

#include "primitives/exp_ln.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

float exponential(float x) { return expSingle(x); }

// e^x in single precision: x = n ln 2 + y with |y| <= ln 2 / 2, the series of e^y to its seventh power, and n put into
// the exponent field. From 87.3 on infinity and from -87.3 down 0, before n leaves that field. NaN stays NaN.
Floats fastExp(Floats x) {
  constexpr float perLn2 = 1.44269502F;
  constexpr float highLn2 = 0.693359375F;  // so few bits that its product with n is exact
  constexpr float lowLn2 = -0.000212194442F;
  constexpr float reach = 87.3F;
  const Ints inRange = (x < reach) & (x > -reach);
  const Floats v = select(inRange, x, toFloats(0.0F));

  // To the nearest whole number: 2^23 leaves no room for a fraction. Below 0 it takes -2^23, or halves would survive.
  const Floats scaled = v * perLn2;
  const Floats shift = select(scaled < 0.0F, toFloats(-0x1p+23F), toFloats(0x1p+23F));
  const Floats n = (scaled + shift) - shift;
  const Floats y = (v - n * highLn2) - n * lowLn2;

  const Floats y2 = y * y;
  const Floats p = ((0.5F + y * (1.0F / 6.0F)) + y2 * (1.0F / 24.0F + y * (1.0F / 120.0F))) +
                   (y2 * y2) * (1.0F / 720.0F + y * (1.0F / 5040.0F));
  constexpr std::int32_t bias = 127;
  constexpr std::int32_t mantissaBits = 23;
  const Floats powerOfTwo = floatsOf((__builtin_convertvector(n, Ints) + bias) << mantissaBits);
  const Floats result = ((y + y2 * p) + 1.0F) * powerOfTwo;

  const Floats beyond = select(x < 0.0F, toFloats(0.0F), select(x > 0.0F, toFloats(__builtin_inff()), x));
  return select(inRange, result, beyond);
}

void sigmoidalLine(float* dst, const float* src, int width, const SigmoidalLine& curve) {
  mapLine<float, float, Floats>(src, dst, width, 1.0F, [&curve](Floats x) {
    const Floats logistic = 1.0F / (fastExp(x * curve.minusSlope) + 1.0F);
    return ((logistic - curve.bottom) * curve.scale) * curve.range + curve.low;
  });
}

void overlayLine(float* dst, const float* top, const float* base, int width) {
  mapLine2(top, base, dst, width, 1.0F, [](Floats t, Floats b) {
    const Floats dark = select(b < 0.5F, toFloats(1.0F), toFloats(0.0F));
    return ((b * t) * 2.0F) * dark + (1.0F - ((1.0F - b) * (1.0F - t)) * 2.0F) * (1.0F - dark);
  });
}

void linearBurnLine(float* dst, const float* a, const float* b, int width) {
  mapLine2(a, b, dst, width, 1.0F, [](Floats va, Floats vb) { return limitedToUnit((vb + va) - 1.0F); });
}

void linearDodgeLine(float* dst, const float* a, const float* b, int width) {
  mapLine2(a, b, dst, width, 1.0F, [](Floats va, Floats vb) { return limitedToUnit(vb + va); });
}

void mergeGrainLine(float* dst, const float* a, const float* b, int width) {
  mapLine2(a, b, dst, width, 1.0F, [](Floats va, Floats vb) { return (va - vb) + 0.5F; });
}

void linearLightLine(float* dst, const float* a, const float* b, int width, float centre) {
  mapLine2(a, b, dst, width, 1.0F, [centre](Floats va, Floats vb) { return (va - vb) * 0.5F + centre; });
}

void tonalMaskLine(float* dst, const float* base, const float* filtered, int width, const TonalWeights& weights) {
  mapLine2(base, filtered, dst, width, 1.0F, [&weights](Floats x, Floats f) {
    const Floats zero{};
    const Floats t = 1.0F - 2.0F * x;
    const Floats dark = larger(t, zero);
    const Floats light = larger(-t, zero);
    const Floats w = limitedToUnit(dark * weights.shadows +
                                   ((1.0F - (dark + light)) * weights.midtones + light * weights.highlights));
    return f * w + x * (1.0F - w);
  });
}

}  // namespace

extern const ToneKernels toneKernels = {exponential,     sigmoidalLine,  overlayLine,     linearBurnLine,
                                        linearDodgeLine, mergeGrainLine, linearLightLine, tonalMaskLine};

}  // namespace ROW
