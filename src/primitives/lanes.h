// Vector types of the row that a body file is compiled for, for body files only.
//
// Everything here has internal linkage: were an inline function shared between rows, the linker would keep one copy of
// it, perhaps the one that older processors can't run.
#pragma once

#if !defined(ROW) || !defined(LANES)
#error "a body file is compiled with ROW (the row's namespace) and LANES (the floats in its vector register)"
#endif

#include <cstddef>
#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#elif defined(__wasm_simd128__)
#include <wasm_simd128.h>
#endif

namespace ROW {
namespace {

typedef float Floats __attribute__((vector_size(4 * LANES)));
typedef std::int32_t Ints __attribute__((vector_size(4 * LANES)));
typedef double Doubles __attribute__((vector_size(8 * LANES)));
typedef std::int64_t LongInts __attribute__((vector_size(8 * LANES)));
typedef std::uint8_t Bytes __attribute__((vector_size(LANES)));
typedef std::uint16_t Words __attribute__((vector_size(2 * LANES)));

// The four lanes that every row has.
typedef float Floats4 __attribute__((vector_size(16)));
typedef std::int32_t Ints4 __attribute__((vector_size(16)));
typedef float Floats8 __attribute__((vector_size(32)));

// Loads and stores ask for no alignment, not even the samples' own.
template <typename Vector, typename Sample>
inline Vector load(const Sample* from) {
  Vector v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

template <typename Vector, typename Sample>
inline void store(Sample* to, Vector v) {
  __builtin_memcpy(to, &v, sizeof v);
}

// The last count samples of a line, with padding behind them.
template <typename Vector, typename Sample>
inline Vector loadPart(const Sample* from, int count, Sample padding) {
  Vector v = padding - Vector{};
  __builtin_memcpy(&v, from, static_cast<std::size_t>(count) * sizeof(Sample));
  return v;
}

template <typename Vector, typename Sample>
inline void storePart(Sample* to, Vector v, int count) {
  __builtin_memcpy(to, &v, static_cast<std::size_t>(count) * sizeof(Sample));
}

inline Floats toFloats(float value) { return value - Floats{}; }  // -0 and NaN keep their bits

// Where the mask is all ones, yes, else no.
inline Floats select(Ints mask, Floats yes, Floats no) { return mask ? yes : no; }

inline Floats smaller(Floats a, Floats b) { return select(a < b, a, b); }  // b where either is NaN
inline Floats larger(Floats a, Floats b) { return select(a > b, a, b); }   // b where either is NaN

// Limited to 0 to 1; NaN gives 0, as it does in the thresholds.
inline Floats limitedToUnit(Floats v) { return smaller(larger(v, toFloats(0.0F)), toFloats(1.0F)); }

inline Ints bitsOf(Floats v) { return reinterpret_cast<Ints>(v); }
inline Floats floatsOf(Ints v) { return reinterpret_cast<Floats>(v); }
#if LANES != 4
inline Ints4 bitsOf(Floats4 v) { return reinterpret_cast<Ints4>(v); }
inline Floats4 floatsOf(Ints4 v) { return reinterpret_cast<Floats4>(v); }
#endif

inline bool anyOf(Ints mask) {
  std::int32_t any = 0;
  for (int i = 0; i < LANES; ++i) any |= mask[i];
  return any != 0;
}

// To the nearest integer, ties to even, in the default rounding mode; what doesn't fit, and NaN, gives the most
// negative integer. The compilers' vector types have no operation for it, nor for the square root.
#if defined(__x86_64__)
inline Ints4 toNearestInts(Floats4 v) { return reinterpret_cast<Ints4>(_mm_cvtps_epi32(v)); }
#if LANES == 8
inline Ints toNearestInts(Floats v) { return reinterpret_cast<Ints>(_mm256_cvtps_epi32(v)); }
inline Floats squareRoots(Floats v) { return _mm256_sqrt_ps(v); }
#elif LANES == 16
// The masked forms, all lanes on: g++ 12 warns about its own plain ones.
inline Ints toNearestInts(Floats v) { return reinterpret_cast<Ints>(_mm512_maskz_cvtps_epi32(0xFFFF, v)); }
inline Floats squareRoots(Floats v) { return _mm512_maskz_sqrt_ps(0xFFFF, v); }
#else
inline Floats squareRoots(Floats v) { return _mm_sqrt_ps(v); }
#endif
#elif defined(__aarch64__)
inline Ints4 toNearestInts(Floats4 v) {
  // Saturates, and makes 0 of NaN.
  const auto nearest = reinterpret_cast<Ints4>(vcvtnq_s32_f32(v));
  return v < 2147483648.0F ? nearest : INT32_MIN - Ints4{};
}
inline Floats squareRoots(Floats v) { return vsqrtq_f32(v); }
#elif defined(__wasm_simd128__)
inline Ints4 toNearestInts(Floats4 v) {
  // Saturates, and makes 0 of NaN.
  const auto nearest =
      reinterpret_cast<Ints4>(wasm_i32x4_trunc_sat_f32x4(wasm_f32x4_nearest(reinterpret_cast<v128_t>(v))));
  return v < 2147483648.0F ? nearest : INT32_MIN - Ints4{};
}
inline Floats squareRoots(Floats v) { return reinterpret_cast<Floats>(wasm_f32x4_sqrt(reinterpret_cast<v128_t>(v))); }
#else
inline std::int32_t toNearestInt(float v) {
  return v >= -2147483648.0F && v < 2147483648.0F ? static_cast<std::int32_t>(__builtin_rintf(v)) : INT32_MIN;
}
inline Ints4 toNearestInts(Floats4 v) {
  return Ints4{toNearestInt(v[0]), toNearestInt(v[1]), toNearestInt(v[2]), toNearestInt(v[3])};
}
inline Floats squareRoots(Floats v) {
  for (int i = 0; i < LANES; ++i) v[i] = __builtin_sqrtf(v[i]);
  return v;
}
#endif

// Samples picked from neighbouring ones: lane i of the result is from[indices[i]]. As far as a row of bodies has such
// an instruction: permutesLanes tells.
#if defined(__AVX512F__)
constexpr bool permutesLanes = true;
// 0 <= indices < 2 * LANES; reads 2 * LANES samples.
inline Floats pickFromTwo(const float* from, Ints indices) {
  return _mm512_permutex2var_ps(load<Floats>(from), reinterpret_cast<__m512i>(indices), load<Floats>(from + LANES));
}
// 0 <= indices < LANES; reads LANES samples.
inline Floats pickFromOne(const float* from, Ints indices) {
  return _mm512_maskz_permutexvar_ps(0xFFFF, reinterpret_cast<__m512i>(indices), load<Floats>(from));
}
#elif defined(__AVX2__)
constexpr bool permutesLanes = true;
inline Floats pickFromOne(const float* from, Ints indices) {
  return _mm256_permutevar8x32_ps(load<Floats>(from), reinterpret_cast<__m256i>(indices));
}
inline Floats pickFromTwo(const float* from, Ints indices) {
  return select(indices < LANES, pickFromOne(from, indices), pickFromOne(from + LANES, indices));
}
#else
constexpr bool permutesLanes = false;
inline Floats pickFromOne(const float* from, Ints indices) {
  Floats v;
  for (int i = 0; i < LANES; ++i) v[i] = from[indices[i]];
  return v;
}
inline Floats pickFromTwo(const float* from, Ints indices) { return pickFromOne(from, indices); }
#endif

}  // namespace
}  // namespace ROW
