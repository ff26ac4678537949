// Conversions between floats and integer samples.
//
// Rounding takes the whole part, which a conversion to integers gives in every rounding mode, and looks at the rest,
// which is exact: so it needs no rounding mode of the processor. Scaling does: its own arithmetic rounds.

#include "primitives/regions.h"

#if !defined(__x86_64__)
#include <fenv.h>
#endif

namespace ROW {
namespace {

constexpr auto towardsZero = [](Ints whole, Floats) { return whole; };
// A mask is -1 where it holds, so subtracting it adds one.
constexpr auto tiesToEven = [](Ints whole, Floats rest) {
  return whole - ((rest > 0.5F) | ((rest == 0.5F) & ((whole & 1) != 0)));
};
constexpr auto tiesAwayFromZero = [](Ints whole, Floats rest) { return whole - (rest >= 0.5F); };

// NaN gives 0.
template <typename Rounding>
Ints roundedWithin(Floats v, float highest, Rounding rounding) {
  const Floats limited = smaller(larger(v, Floats{}), toFloats(highest));
  const Ints whole = __builtin_convertvector(limited, Ints);
  return rounding(whole, limited - __builtin_convertvector(whole, Floats));
}

template <typename Vector, typename Sample>
IppStatus toFloatSamples(const Sample* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  eachRow(src, srcStep, dst, dstStep, size, [&](const Sample* s, float* d) {
    mapLine<Sample, float, Vector>(s, d, size.width, Sample{0}, [](Vector samples) {
      return __builtin_convertvector(__builtin_convertvector(samples, Ints), Floats);
    });
  });
  return ippStsNoErr;
}

template <typename Vector, typename Sample, typename Rounding>
void roundRegion(const float* src, int srcStep, Sample* dst, int dstStep, IppiSize size, float highest,
                 Rounding rounding) {
  eachRow(src, srcStep, dst, dstStep, size, [&](const float* s, Sample* d) {
    mapLine<float, Sample, Floats>(s, d, size.width, 0.0F, [&](Floats v) {
      return __builtin_convertvector(roundedWithin(v, highest, rounding), Vector);
    });
  });
}

template <typename Vector, typename Sample>
IppStatus toIntegerSamples(const float* src, int srcStep, Sample* dst, int dstStep, IppiSize size, float highest,
                           IppRoundMode roundMode) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  if (roundMode == ippRndZero) {
    roundRegion<Vector>(src, srcStep, dst, dstStep, size, highest, towardsZero);
  } else if (roundMode == ippRndNear) {
    roundRegion<Vector>(src, srcStep, dst, dstStep, size, highest, tiesToEven);
  } else {
    roundRegion<Vector>(src, srcStep, dst, dstStep, size, highest, tiesAwayFromZero);
  }
  return ippStsNoErr;
}

// Arithmetic rounds to nearest during its life. The caller's mode is that of the registers that the arithmetic uses;
// on x86-64 the C library would tell that of another unit.
class RoundingToNearest {
 public:
#if defined(__x86_64__)
  RoundingToNearest() : callers(_mm_getcsr() & modeBits) { _mm_setcsr(_mm_getcsr() & ~modeBits); }
  ~RoundingToNearest() { _mm_setcsr((_mm_getcsr() & ~modeBits) | callers); }

 private:
  static constexpr unsigned modeBits = 0x6000;
  unsigned callers;
#else
  RoundingToNearest() : callers(fegetround()) { fesetround(FE_TONEAREST); }
  ~RoundingToNearest() { fesetround(callers); }

 private:
  int callers;
#endif
 public:
  RoundingToNearest(const RoundingToNearest&) = delete;
  RoundingToNearest& operator=(const RoundingToNearest&) = delete;
};

// Not inlined: compilers move arithmetic across a change of the rounding mode.
__attribute__((noinline)) void scaleToBytes(const float* src, int srcStep, unsigned char* dst, int dstStep,
                                            IppiSize size, float vMin, float vMax) {
  const float k = 255.0F / (vMax - vMin);
  const float offset = k * vMin;
  eachRow(src, srcStep, dst, dstStep, size, [&](const float* s, unsigned char* d) {
    mapLine<float, unsigned char, Floats>(s, d, size.width, vMin, [&](Floats v) {
      const Floats limited = smaller(larger(v, toFloats(vMin)), toFloats(vMax));
      return __builtin_convertvector(roundedWithin(limited * k - offset, 255.0F, tiesToEven), Bytes);
    });
  });
}

bool isEmptyRange(float vMin, float vMax) { return vMax - vMin <= 0.0F; }

}  // namespace

IppStatus ippiConvert_8u32f_C1R(const unsigned char* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return toFloatSamples<Bytes>(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiConvert_16u32f_C1R(const unsigned short* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return toFloatSamples<Words>(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiConvert_32f8u_C1R(const float* src, int srcStep, unsigned char* dst, int dstStep, IppiSize roiSize,
                                IppRoundMode roundMode) {
  return toIntegerSamples<Bytes>(src, srcStep, dst, dstStep, roiSize, 255.0F, roundMode);
}
IppStatus ippiConvert_32f16u_C1R(const float* src, int srcStep, unsigned short* dst, int dstStep, IppiSize roiSize,
                                 IppRoundMode roundMode) {
  return toIntegerSamples<Words>(src, srcStep, dst, dstStep, roiSize, 65535.0F, roundMode);
}

IppStatus ippiScale_8u32f_C1R(const unsigned char* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                              float vMin, float vMax) {
  if (isEmptyRange(vMin, vMax)) return ippStsScaleRangeErr;
  RETURN_UNLESS_OK(checkRegion(roiSize, src, dst));
  const float k = (vMax - vMin) / 255.0F;
  eachRow(src, srcStep, dst, dstStep, roiSize, [&](const unsigned char* s, float* d) {
    mapLine<unsigned char, float, Bytes>(s, d, roiSize.width, 0, [&](Bytes samples) {
      return __builtin_convertvector(__builtin_convertvector(samples, Ints), Floats) * k + vMin;
    });
  });
  return ippStsNoErr;
}
IppStatus ippiScale_32f8u_C1R(const float* src, int srcStep, unsigned char* dst, int dstStep, IppiSize roiSize,
                              float vMin, float vMax) {
  if (isEmptyRange(vMin, vMax)) return ippStsScaleRangeErr;
  RETURN_UNLESS_OK(checkRegion(roiSize, src, dst));
  const RoundingToNearest guard;
  scaleToBytes(src, srcStep, dst, dstStep, roiSize, vMin, vMax);
  return ippStsNoErr;
}

}  // namespace ROW
