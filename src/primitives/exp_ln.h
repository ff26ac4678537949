// Exponential and natural logarithm of single-precision numbers, worked out in double precision and rounded once, for
// body files only. Made of + - * / alone, in a fixed order, so that every row, compiler and system gives the same bits,
// which no C library promises. Internal linkage throughout, see lanes.h.
//
// The double-precision steps are off by some 1e-16 of the result, so all but very few results are the correctly rounded
// ones.
#pragma once

#include "primitives/lanes.h"

namespace ROW {
namespace {

typedef std::uint64_t LongBits __attribute__((vector_size(8 * LANES)));

// ln 2 in two parts. The high part ends in 20 zero bits, so its product with an exponent is exact.
constexpr double ln2High = 0x1.62e42fee00000p-1;
constexpr double ln2Low = 0x1.a39ef35793c76p-33;

template <typename To, typename From>
inline To reinterpretBits(From from) {
  static_assert(sizeof(To) == sizeof(From), "the same bits");
  To to;
  __builtin_memcpy(&to, &from, sizeof to);
  return to;
}

// e^x for x from -104 to 89, or NaN: x = k ln 2 + r with |r| <= ln 2 / 2, e^x = 2^k * (Taylor polynomial in r).
template <typename Double, typename Bits>
inline Double expInRange(Double x) {
  constexpr double log2e = 0x1.71547652b82fep+0;
  constexpr double roundToInteger = 0x1.8p+52;  // from here on doubles are whole numbers
  const Double shifted = x * log2e + roundToInteger;
  const Double k = shifted - roundToInteger;
  const Double r = (x - k * ln2High) - k * ln2Low;

  Double sum = r * (1.0 / 6227020800.0) + 1.0 / 479001600.0;
  sum = sum * r + 1.0 / 39916800.0;
  sum = sum * r + 1.0 / 3628800.0;
  sum = sum * r + 1.0 / 362880.0;
  sum = sum * r + 1.0 / 40320.0;
  sum = sum * r + 1.0 / 5040.0;
  sum = sum * r + 1.0 / 720.0;
  sum = sum * r + 1.0 / 120.0;
  sum = sum * r + 1.0 / 24.0;
  sum = sum * r + 1.0 / 6.0;
  sum = sum * r + 0.5;
  sum = sum * r + 1.0;
  sum = sum * r + 1.0;

  // The low bits of shifted hold k; moved up, with the bias, they are the bits of 2^k.
  constexpr std::uint64_t bias = 1023;
  const Double scale = reinterpretBits<Double>((reinterpretBits<Bits>(shifted) + bias) << 52);
  return sum * scale;
}

// ln x for a finite x > 0 that is normal in double precision: x = 2^e * m with m from sqrt(1/2) to sqrt(2), and
// ln m = 2 (s + s^3/3 + s^5/5 + ...) with s = (m - 1) / (m + 1).
template <typename Double, typename Bits>
inline Double lnInRange(Double x) {
  constexpr std::uint64_t rootHalf = 0x3FE6A09E667F3BCD;  // the bits of sqrt(1/2)
  constexpr std::uint64_t one = 0x3FF0000000000000;       // the bits of 1
  constexpr std::uint64_t exponentBits = 0xFFF0000000000000;
  const Bits bits = reinterpretBits<Bits>(x);
  const Bits biased = bits - rootHalf + one;  // its exponent field is e + 1023
  const Double m = reinterpretBits<Double>(bits - (biased & exponentBits) + one);

  constexpr std::uint64_t twoTo52 = 0x4330000000000000;  // the bits of 2^52: its last bits count whole numbers
  const Double e = reinterpretBits<Double>((biased >> 52) | twoTo52) - (0x1p+52 + 1023.0);

  const Double s = (m - 1.0) / (m + 1.0);
  const Double z = s * s;
  Double sum = z * (1.0 / 23.0) + 1.0 / 21.0;
  sum = sum * z + 1.0 / 19.0;
  sum = sum * z + 1.0 / 17.0;
  sum = sum * z + 1.0 / 15.0;
  sum = sum * z + 1.0 / 13.0;
  sum = sum * z + 1.0 / 11.0;
  sum = sum * z + 1.0 / 9.0;
  sum = sum * z + 1.0 / 7.0;
  sum = sum * z + 1.0 / 5.0;
  sum = sum * z + 1.0 / 3.0;
  sum = sum * z + 1.0;
  return (s * 2.0 * sum + e * ln2Low) + e * ln2High;
}

constexpr float expLowest = -104.0F;  // rounds to 0
constexpr float expHighest = 89.0F;   // rounds to infinity

// e^x for every x: infinities and NaN included, denormal results too.
inline Floats expSingle(Floats x) {
  const Floats limited = larger(toFloats(expLowest), smaller(toFloats(expHighest), x));  // keeps a NaN
  return __builtin_convertvector((expInRange<Doubles, LongBits>(__builtin_convertvector(limited, Doubles))), Floats);
}

inline float expSingle(float x) {
  float limited = x > expHighest ? expHighest : x;
  limited = limited < expLowest ? expLowest : limited;
  return static_cast<float>(expInRange<double, std::uint64_t>(static_cast<double>(limited)));
}

// ln x for every x: minus infinity at a zero of either sign, NaN below 0.
inline Floats lnSingle(Floats x) {
  const Floats infinity = toFloats(__builtin_inff());
  const Doubles ln = lnInRange<Doubles, LongBits>(__builtin_convertvector(x, Doubles));
  Floats result = __builtin_convertvector(ln, Floats);
  result = select(x < infinity, result, x);  // infinity and NaN are their own logarithms
  result = select(x < 0.0F, toFloats(__builtin_nanf("")), result);
  return select(x == 0.0F, -infinity, result);
}

}  // namespace
}  // namespace ROW
