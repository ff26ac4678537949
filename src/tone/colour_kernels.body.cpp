// The hot lines of colour conversion. The order of the operations is the definition of the results.

#include "tone/colour_kernels.h"

#include "primitives/exp_ln.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

// dst = operation(c0, c1, c2) over one line.
template <typename Operation>
void mapLine3(const float* c0, const float* c1, const float* c2, float* dst, int width, Operation operation) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    store(dst + x, operation(load<Floats>(c0 + x), load<Floats>(c1 + x), load<Floats>(c2 + x)));
  }
  const int rest = width - x;
  if (rest <= 0) return;
  storePart(dst + x,
            operation(loadPart<Floats>(c0 + x, rest, 1.0F), loadPart<Floats>(c1 + x, rest, 1.0F),
                      loadPart<Floats>(c2 + x, rest, 1.0F)),
            rest);
}

Floats weightedSum(Floats c0, Floats c1, Floats c2, const float weights[3]) {
  return (c0 * weights[0] + c1 * weights[1]) + c2 * weights[2];
}

// v to the power of 2.4, for v from 0.09 to infinity, NaN too: exp(2.4 ln v) in double precision, rounded once. From
// 0.0904 to 8 all but 1 of 55 million floats have the correctly rounded power.
Floats power24(Floats v) {
  constexpr float overflows = 1.2e16F;  // its power is beyond single precision, and within the exponential's range
  const Doubles ln = lnInRange<Doubles, LongBits>(__builtin_convertvector(smaller(toFloats(overflows), v), Doubles));
  const Floats power = __builtin_convertvector((expInRange<Doubles, LongBits>(ln * 2.4)), Floats);
  return select(v == v, power, v);
}

Floats decoded(Floats c) {
  constexpr float straightBelow = 0.04045F;
  return select(c < straightBelow, c * 0.0773993805F, power24((c + 0.055F) * 0.947867274F));
}

// Cube root of x above 0.008856 by the reciprocal root: an estimate from a third of the exponent, five of Newton's
// steps, and one that is written so that it takes away their rounding.
Floats lightnessRoot(Floats x) {
  const Floats xThird = 0.333333343F * x;
  Floats y = floatsOf(0x54800000 - (bitsOf(x) >> 23) * 0x2AAAAA);
  for (int step = 0; step < 5; ++step) {
    const Floats y2 = y * y;
    y = 1.33333337F * y - xThird * (y2 * y2);
  }
  const Floats y2 = y * y;
  y = y + (y - x * (y2 * y2)) * 0.333333343F;
  return x * (y * y);
}

Floats lightness(Floats luminance) {
  constexpr float straightUpTo = 0.008856F;
  const Floats root = lightnessRoot(luminance);
  return select(luminance > straightUpTo, 116.0F * root - 16.0F, 903.3F * luminance) * 0.01F;
}

void weightedSumLine(float* dst, const float* c0, const float* c1, const float* c2, int width, const float weights[3]) {
  const float own[] = {weights[0], weights[1], weights[2]};  // no store can change these
  mapLine3(c0, c1, c2, dst, width, [&own](Floats a, Floats b, Floats c) { return weightedSum(a, b, c, own); });
}

void lightnessLine(float* dst, const float* r, const float* g, const float* b, int width, const LightnessRule& rule) {
  const LightnessRule own = rule;
  if (own.decodes) {
    mapLine3(r, g, b, dst, width, [&own](Floats vr, Floats vg, Floats vb) {
      return lightness(weightedSum(decoded(vr), decoded(vg), decoded(vb), own.weights));
    });
  } else {
    mapLine3(r, g, b, dst, width,
             [&own](Floats vr, Floats vg, Floats vb) { return lightness(weightedSum(vr, vg, vb, own.weights)); });
  }
}

}  // namespace

extern const ColourKernels colourKernels = {weightedSumLine, lightnessLine};

}  // namespace ROW
