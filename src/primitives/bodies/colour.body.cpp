// CIE L*a*b* from linear RGB and back, and the affine transformation of three planes. One value per step, in single
// precision and in the order that primitives.h gives.

#include "primitives/regions.h"

namespace ROW {
namespace {

struct Colours {
  Floats first, second, third;
};

// Cube root of x from 0.008856 to 1, NaN too. A third of the bits as an integer, moved, are those of an estimate within
// 3.3 %; Halley's step leaves 2.2e-5 of the root, and the series of (1 + d)^(1/3) in double precision nothing but one
// rounding to single precision: the result is the correctly rounded root (0.5 ulp) of each of the 57.6 million floats
// of that range.
inline Floats cubeRoots(Floats x) {
  constexpr std::int32_t estimateOffset = 0x2A5119F2;
  const Floats third = __builtin_convertvector(bitsOf(x), Floats) * (1.0F / 3.0F);
  Floats y = floatsOf(__builtin_convertvector(third, Ints) + estimateOffset);
  const Floats cube = y * y * y;
  y = y * (cube + 2.0F * x) / (2.0F * cube + x);

  const Doubles root = __builtin_convertvector(y, Doubles);
  const Doubles rootCubed = root * root * root;
  const Doubles d = (__builtin_convertvector(x, Doubles) - rootCubed) / rootCubed;
  const Doubles correction = d * (1.0 / 3.0 - d * (1.0 / 9.0 - d * (5.0 / 81.0)));
  return __builtin_convertvector(root + root * correction, Floats);
}

constexpr float linearUpTo = 0.008856F;

inline Floats labCurve(Floats t) {
  const Ints curved = t > linearUpTo;
  return select(curved, cubeRoots(select(curved, t, toFloats(1.0F))), 7.787F * t + 0.137931034F);
}

inline Floats atMost1(Floats v) { return smaller(toFloats(1.0F), v); }  // keeps a NaN

inline Colours labOf(Colours rgb) {
  const Floats r = rgb.first;
  const Floats g = rgb.second;
  const Floats b = rgb.third;
  const Floats y = atMost1(0.212671F * r + 0.71516F * g + 0.072169F * b);
  const Floats x = atMost1((0.412453F * r + 0.35758F * g + 0.180423F * b) / 0.950456F);
  const Floats z = atMost1((0.019334F * r + 0.119193F * g + 0.950227F * b) / 1.0887539F);
  const Floats fx = labCurve(x);
  const Floats fy = labCurve(y);
  const Floats fz = labCurve(z);
  return {select(y > linearUpTo, 116.0F * fy - 16.0F, 903.3F * y), 500.0F * (fx - fy), 200.0F * (fy - fz)};
}

inline Floats cubed(Floats v) { return v * v * v; }

inline Colours rgbOf(Colours lab) {
  const Floats fy = (lab.first + 16.0F) / 116.0F;
  const Floats fx = fy + lab.second / 500.0F;
  const Floats fz = fy - lab.third / 200.0F;
  const Floats x = 0.950456F * cubed(fx);
  const Floats y = cubed(fy);
  const Floats z = 1.0887539F * cubed(fz);
  return {3.240479F * x - 1.53715F * y - 0.498535F * z, -0.969256F * x + 1.875991F * y + 0.041556F * z,
          0.055648F * x - 0.204043F * y + 1.057311F * z};
}

// count pixels, from and to interleaved samples; the lanes behind them hold 0.
inline Colours loadPixels(const float* from, int count) {
  float planes[3][LANES] = {};
  for (int i = 0; i < count; ++i) {
    for (int c = 0; c < 3; ++c) planes[c][i] = load<float>(from + 3 * i + c);
  }
  return {load<Floats>(planes[0]), load<Floats>(planes[1]), load<Floats>(planes[2])};
}

inline void storePixels(float* to, Colours colours, int count) {
  for (int i = 0; i < count; ++i) {
    store(to + 3 * i, colours.first[i]);
    store(to + 3 * i + 1, colours.second[i]);
    store(to + 3 * i + 2, colours.third[i]);
  }
}

template <typename Operation>
IppStatus mapPixels(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, Operation operation) {
  RETURN_UNLESS_OK(checkRegion(size, src, dst));
  eachRow(src, srcStep, dst, dstStep, size, [&](const float* s, float* d) {
    std::ptrdiff_t x = 0;
    for (; x <= size.width - LANES; x += LANES) storePixels(d + 3 * x, operation(loadPixels(s + 3 * x, LANES)), LANES);
    const int rest = static_cast<int>(size.width - x);
    if (rest > 0) storePixels(d + 3 * x, operation(loadPixels(s + 3 * x, rest)), rest);
  });
  return ippStsNoErr;
}

inline Floats twisted(const float row[4], Colours s) {
  return (row[3] + row[0] * s.first) + (row[2] * s.third + row[1] * s.second);
}

void twistLine(const float* const src[3], float* const dst[3], int width, const float twist[3][4]) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Colours s = {load<Floats>(src[0] + x), load<Floats>(src[1] + x), load<Floats>(src[2] + x)};
    for (int c = 0; c < 3; ++c) store(dst[c] + x, twisted(twist[c], s));
  }
  const int rest = width - x;
  if (rest == 0) return;
  const Colours s = {loadPart<Floats>(src[0] + x, rest, 0.0F), loadPart<Floats>(src[1] + x, rest, 0.0F),
                     loadPart<Floats>(src[2] + x, rest, 0.0F)};
  for (int c = 0; c < 3; ++c) storePart(dst[c] + x, twisted(twist[c], s), rest);
}

}  // namespace

IppStatus ippiRGBToLab_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return mapPixels(src, srcStep, dst, dstStep, roiSize, labOf);
}

IppStatus ippiLabToRGB_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return mapPixels(src, srcStep, dst, dstStep, roiSize, rgbOf);
}

IppStatus ippiColorTwist_32f_P3R(const float* const src[3], int srcStep, float* const dst[3], int dstStep,
                                 IppiSize roiSize, const float twist[3][4]) {
  if (isNull(src) || isNull(dst) || isNull(twist)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkRegion(roiSize, src[0], src[1], src[2], dst[0], dst[1], dst[2]));
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  for (int y = 0; y < roiSize.height; ++y) {
    const std::ptrdiff_t srcRow = std::ptrdiff_t{y} * srcStep;
    const std::ptrdiff_t dstRow = std::ptrdiff_t{y} * dstStep;
    const float* const from[] = {advance(src[0], srcRow), advance(src[1], srcRow), advance(src[2], srcRow)};
    float* const to[] = {advance(dst[0], dstRow), advance(dst[1], dstRow), advance(dst[2], dstRow)};
    twistLine(from, to, roiSize.width, twist);
  }
  return ippStsNoErr;
}

}  // namespace ROW
