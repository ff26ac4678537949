// The Gaussian weight of a tap, for body files only. Columns that go together, before width - width mod 4, round the
// exponent to nearest; the last ones truncate it and associate its factors differently.
#pragma once

#include "primitives/lanes.h"

namespace ROW {
namespace {

// The exponential by the layout of a float (Schraudolph, Neural Computation 11, 1999): e * 2^23 / ln 2 as an integer
// is its exponent field, and the mantissa interpolates linearly. The offset scales all weights alike (0.971 for e = 0).
constexpr float exponentScale = 12102203.0F;
constexpr std::int32_t exponentOffset = 0x3F7893F5;
constexpr float smallestExponent = -87.0F;

// exp(e) for each lane, 0 below the smallest exponent. scaled is e * exponentScale.
template <typename Vector>
inline Vector fastExponential(Vector e, Vector scaled) {
  const auto dropped = e < smallestExponent;
  return floatsOf((toNearestInts(scaled) + exponentOffset) & ~dropped);
}
#if defined(__AVX512F__)
// The compilers make two instructions of the mask and its use; the processor has one. clang takes it for integers
// alone, and is kept from looking through the bits to the float.
template <>
inline Floats fastExponential(Floats e, Floats scaled) {
  const __mmask16 kept = _mm512_cmp_ps_mask(e, _mm512_set1_ps(smallestExponent), _CMP_NLT_UQ);
  __m512i bits =
      _mm512_maskz_add_epi32(kept, reinterpret_cast<__m512i>(toNearestInts(scaled)), _mm512_set1_epi32(exponentOffset));
#if defined(__clang__)
  asm("" : "+v"(bits));
#endif
  return _mm512_castsi512_ps(bits);
}
#endif

}  // namespace
}  // namespace ROW
