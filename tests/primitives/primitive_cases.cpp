#include "primitives/primitive_cases.h"

#include <algorithm>
#include <array>
#include <cfenv>

#include "primitives/region.h"

namespace {

using Limits = std::numeric_limits<float>;

// Steps are multiples of stepUnit where rows are whole multiples of it.
template <typename Sample>
Region<Sample> randomRegion(IppiSize size, unsigned seed, int samplesPerPixel = 1, int stepUnit = 1) {
  const int padding = static_cast<int>(seed % 3) * 7 * stepUnit;
  Region<Sample> region(size, static_cast<int>(seed % 4), padding, samplesPerPixel);
  RandomSamples random(seed);
  region.fill([&](int, int) { return random.next<Sample>(); });
  return region;
}

template <typename Sample>
Region<Sample> target(IppiSize size, unsigned seed, int samplesPerPixel = 1, int stepUnit = 1) {
  return {size, static_cast<int>(seed / 4 % 4), static_cast<int>(seed % 5) * stepUnit, samplesPerPixel};
}

template <typename Target>
PrimitiveOutput outputOf(IppStatus status, const Target& written) {
  written.expectSurroundingsIntact();
  return {status, written.samples()};
}

// call(src, srcStep, dst, dstStep, size); formula(sample).
template <typename Source, typename Target, typename Call, typename Formula>
PrimitiveCase unary(const char* name, Call call, Formula formula, int tolerance = 0, int stepUnit = 1) {
  return {name,
          [=](IppiSize size, unsigned seed) {
            auto src = randomRegion<Source>(size, seed, 1, stepUnit);
            auto dst = target<Target>(size, seed, 1, stepUnit);
            return outputOf(call(src.data(), src.step, dst.data(), dst.step, size), dst);
          },
          [=](IppiSize size, unsigned seed) {
            std::vector<float> expected;
            const auto src = randomRegion<Source>(size, seed);
            for (int y = 0; y < size.height; ++y) {
              for (int x = 0; x < size.width; ++x) expected.push_back(static_cast<float>(formula(src.at(x, y))));
            }
            return expected;
          },
          tolerance};
}

// call(srcDst, step, size).
template <typename Call, typename Formula>
PrimitiveCase unaryInPlace(const char* name, Call call, Formula formula, int tolerance = 0, int stepUnit = 1) {
  PrimitiveCase result = unary<float, float>(
      name, [](auto...) { return ippStsNoErr; }, formula, tolerance);
  result.run = [=](IppiSize size, unsigned seed) {
    auto image = randomRegion<float>(size, seed, 1, stepUnit);
    return outputOf(call(image.data(), image.step, size), image);
  };
  return result;
}

// call(src1, step1, src2, step2, dst, dstStep, size), with dst the same as src2 where inPlace; formula(s1, s2).
template <typename Call, typename Formula>
PrimitiveCase binary(const char* name, Call call, Formula formula, bool inPlace = false) {
  return {name,
          [=](IppiSize size, unsigned seed) {
            auto first = randomRegion<float>(size, seed);
            auto second = randomRegion<float>(size, seed + 1);
            auto separate = target<float>(size, seed);
            auto& dst = inPlace ? second : separate;
            return outputOf(call(first.data(), first.step, second.data(), second.step, dst.data(), dst.step, size),
                            dst);
          },
          [=](IppiSize size, unsigned seed) {
            std::vector<float> expected;
            const auto first = randomRegion<float>(size, seed);
            const auto second = randomRegion<float>(size, seed + 1);
            for (int y = 0; y < size.height; ++y) {
              for (int x = 0; x < size.width; ++x) expected.push_back(formula(first.at(x, y), second.at(x, y)));
            }
            return expected;
          }};
}

using BinaryInPlace = IppStatus (*)(const float*, int, float*, int, IppiSize);
using ConstantRegion = IppStatus (*)(const float*, int, float, float*, int, IppiSize);
using ConstantInPlace = IppStatus (*)(float, float*, int, IppiSize);

template <typename Formula>
PrimitiveCase binaryInPlace(const char* name, BinaryInPlace function, Formula formula) {
  return binary(
      name,
      [function](const float* s, int step, const float*, int, float* d, int dStep, IppiSize size) {
        return function(s, step, d, dStep, size);
      },
      formula, true);
}

constexpr float constant = -1.7F;

template <typename Formula>
PrimitiveCase withConstant(const char* name, ConstantRegion function, Formula formula) {
  return unary<float, float>(
      name,
      [function](const float* s, int step, float* d, int dStep, IppiSize size) {
        return function(s, step, constant, d, dStep, size);
      },
      formula);
}
template <typename Formula>
PrimitiveCase withConstant(const char* name, ConstantInPlace function, Formula formula) {
  return unaryInPlace(
      name, [function](float* d, int step, IppiSize size) { return function(constant, d, step, size); }, formula);
}

float quotient(float divisor, float dividend) {
  if (divisor != 0) return dividend / divisor;
  if (dividend > 0) return Limits::infinity();
  return dividend < 0 ? -Limits::infinity() : Limits::quiet_NaN();
}

double limited(double v, double highest) { return v > 0 ? std::min(v, highest) : 0.0; }
double tiesAway(double v) { return std::floor(v + 0.5); }

float outside(float s) {
  if (std::isnan(s) || s < -3.0F) return 7.0F;
  return s > 100.0F ? 9.0F : s;
}

int clampedIndex(int i, int length) { return std::clamp(i, 0, length - 1); }
int bouncingIndex(int i, int length) {
  if (length == 1) return 0;
  while (i < 0 || i >= length) i = i < 0 ? -i : 2 * (length - 1) - i;
  return i;
}

// Borders of every width from 0 on, wider than small sources.
struct Frame {
  explicit Frame(IppiSize source, unsigned seed)
      : top(static_cast<int>(seed % 4)),
        left(static_cast<int>(seed % 7)),
        size{source.width + left + static_cast<int>(seed % 6), source.height + top + static_cast<int>(seed % 5)} {}
  int top, left;
  IppiSize size;
};

template <typename Call, typename Index>
PrimitiveCase border(const char* name, Call call, Index index) {
  return {name,
          [=](IppiSize size, unsigned seed) {
            const Frame frame(size, seed);
            auto src = randomRegion<float>(size, seed);
            auto dst = target<float>(frame.size, seed);
            return outputOf(call(src, dst, frame), dst);
          },
          [=](IppiSize size, unsigned seed) {
            const Frame frame(size, seed);
            const auto src = randomRegion<float>(size, seed);
            std::vector<float> expected;
            for (int y = -frame.top; y < frame.size.height - frame.top; ++y) {
              for (int x = -frame.left; x < frame.size.width - frame.left; ++x) {
                expected.push_back(index(src, x, y));
              }
            }
            return expected;
          }};
}

float replicated(const Region<float>& src, int x, int y) {
  return src.at(clampedIndex(x, src.size.width), clampedIndex(y, src.size.height));
}
float mirrored(const Region<float>& src, int x, int y) {
  return src.at(bouncingIndex(x, src.size.width), bouncingIndex(y, src.size.height));
}
float surrounded(const Region<float>& src, int x, int y) {
  return x >= 0 && y >= 0 && x < src.size.width && y < src.size.height ? src.at(x, y) : constant;
}

float* placeSource(const Region<float>& src, Region<float>& dst, const Frame& frame) {
  for (int y = 0; y < src.size.height; ++y) {
    for (int x = 0; x < src.size.width; ++x) dst.set(x + frame.left, y + frame.top, src.at(x, y));
  }
  return reinterpret_cast<float*>(reinterpret_cast<unsigned char*>(dst.data()) + frame.top * dst.step) + frame.left;
}

template <typename Sample, typename Function>
PrimitiveCase split(const char* name, Function function) {
  return {
      name,
      [=](IppiSize size, unsigned seed) {
        auto src = randomRegion<Sample>(size, seed, 3);
        Region<Sample> planes[] = {target<Sample>(size, seed), target<Sample>(size, seed), target<Sample>(size, seed)};
        Sample* const pointers[] = {planes[0].data(), planes[1].data(), planes[2].data()};
        PrimitiveOutput all{function(src.data(), src.step, pointers, planes[0].step, size), {}};
        for (const auto& plane : planes) {
          const std::vector<float> samples = outputOf(all.status, plane).samples;
          all.samples.insert(all.samples.end(), samples.begin(), samples.end());
        }
        return all;
      },
      [](IppiSize size, unsigned seed) {
        const auto src = randomRegion<Sample>(size, seed, 3);
        std::vector<float> expected;
        for (int c = 0; c < 3; ++c) {
          for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) expected.push_back(static_cast<float>(src.at(3 * x + c, y)));
          }
        }
        return expected;
      }};
}

template <typename Sample, typename Function>
PrimitiveCase join(const char* name, Function function) {
  return {name,
          [=](IppiSize size, unsigned seed) {
            Region<Sample> planes[] = {randomRegion<Sample>(size, seed), randomRegion<Sample>(size, seed + 12),
                                       randomRegion<Sample>(size, seed + 24)};
            const Sample* const pointers[] = {planes[0].data(), planes[1].data(), planes[2].data()};
            auto dst = target<Sample>(size, seed, 3);
            return outputOf(function(pointers, planes[0].step, dst.data(), dst.step, size), dst);
          },
          [](IppiSize size, unsigned seed) {
            const Region<Sample> planes[] = {randomRegion<Sample>(size, seed), randomRegion<Sample>(size, seed + 12),
                                             randomRegion<Sample>(size, seed + 24)};
            std::vector<float> expected;
            for (int y = 0; y < size.height; ++y) {
              for (int x = 0; x < 3 * size.width; ++x) {
                expected.push_back(static_cast<float>(planes[x % 3].at(x / 3, y)));
              }
            }
            return expected;
          }};
}

template <typename Function, typename Choose>
PrimitiveCase extreme(const char* name, Function function, float start, Choose choose) {
  return {name,
          [=](IppiSize size, unsigned seed) {
            auto src = randomRegion<float>(size, seed);
            Region<float> result({1, 1}, 0, 0);
            return outputOf(function(src.data(), src.step, size, result.data()), result);
          },
          [=](IppiSize size, unsigned seed) {
            float best = start;
            for (const float s : randomRegion<float>(size, seed).samples()) {
              if (!std::isnan(s)) best = choose(best, s);
            }
            return std::vector<float>{best == 0 ? 0.0F : best};
          }};
}

PrimitiveCase transpose(const char* name, bool inPlace) {
  const auto sizeOf = [=](IppiSize size) { return inPlace ? IppiSize{size.width, size.width} : size; };
  return {name,
          [=](IppiSize given, unsigned seed) {
            const IppiSize size = sizeOf(given);
            auto src = randomRegion<float>(size, seed);
            auto separate = target<float>({size.height, size.width}, seed);
            auto& dst = inPlace ? src : separate;
            return outputOf(ippiTranspose_32f_C1R(src.data(), src.step, dst.data(), dst.step, size), dst);
          },
          [=](IppiSize given, unsigned seed) {
            const IppiSize size = sizeOf(given);
            const auto src = randomRegion<float>(size, seed);
            std::vector<float> expected;
            for (int x = 0; x < size.width; ++x) {
              for (int y = 0; y < size.height; ++y) expected.push_back(src.at(x, y));
            }
            return expected;
          }};
}

using Pixel = std::array<float, 3>;

// call(src, srcStep, dst, dstStep, size) on interleaved pixels; formula(pixel). Samples run from -128 to 384 by scale.
template <typename Call, typename Formula>
PrimitiveCase pixels(const char* name, Call call, Formula formula, float scale, bool inPlace) {
  const auto source = [=](IppiSize size, unsigned seed) {
    auto src = randomRegion<float>(size, seed, 3);
    RandomSamples random(seed);
    src.fill([&](int, int) { return random.next<float>() * scale; });
    return src;
  };
  return {name,
          [=](IppiSize size, unsigned seed) {
            auto src = source(size, seed);
            auto separate = target<float>(size, seed, 3);
            auto& dst = inPlace ? src : separate;
            return outputOf(call(src.data(), src.step, dst.data(), dst.step, size), dst);
          },
          [=](IppiSize size, unsigned seed) {
            const auto src = source(size, seed);
            std::vector<float> expected;
            for (int y = 0; y < size.height; ++y) {
              for (int x = 0; x < 3 * size.width; x += 3) {
                for (const float v : formula({src.at(x, y), src.at(x + 1, y), src.at(x + 2, y)})) expected.push_back(v);
              }
            }
            return expected;
          }};
}

float labCurve(float t) {
  return t > 0.008856F ? static_cast<float>(std::cbrt(static_cast<double>(t))) : 7.787F * t + 0.137931034F;
}
float atMost1(float v) { return v > 1.0F ? 1.0F : v; }

Pixel labOf(Pixel rgb) {
  const auto [r, g, b] = rgb;
  const float y = atMost1(0.212671F * r + 0.71516F * g + 0.072169F * b);
  const float x = atMost1((0.412453F * r + 0.35758F * g + 0.180423F * b) / 0.950456F);
  const float z = atMost1((0.019334F * r + 0.119193F * g + 0.950227F * b) / 1.0887539F);
  return {y > 0.008856F ? 116.0F * labCurve(y) - 16.0F : 903.3F * y, 500.0F * (labCurve(x) - labCurve(y)),
          200.0F * (labCurve(y) - labCurve(z))};
}

Pixel rgbOf(Pixel lab) {
  const float fy = (lab[0] + 16.0F) / 116.0F;
  const float fx = fy + lab[1] / 500.0F;
  const float fz = fy - lab[2] / 200.0F;
  const float x = 0.950456F * (fx * fx * fx);
  const float y = fy * fy * fy;
  const float z = 1.0887539F * (fz * fz * fz);
  return {3.240479F * x - 1.53715F * y - 0.498535F * z, -0.969256F * x + 1.875991F * y + 0.041556F * z,
          0.055648F * x - 0.204043F * y + 1.057311F * z};
}

// In place the planes also change places.
PrimitiveCase twist(const char* name, bool inPlace) {
  static constexpr float matrix[3][4] = {
      {0.3F, -1.2F, 0.7F, 0.1F}, {1.1F, 0.2F, -0.4F, 0.0F}, {-0.6F, 0.9F, 1.3F, 5.F}};
  const auto plane = [](IppiSize size, unsigned seed, unsigned i) { return randomRegion<float>(size, seed + 12 * i); };
  return {
      name,
      [=](IppiSize size, unsigned seed) {
        Region<float> src[] = {plane(size, seed, 0), plane(size, seed, 1), plane(size, seed, 2)};
        Region<float> separate[] = {target<float>(size, seed), target<float>(size, seed), target<float>(size, seed)};
        Region<float>* const dst[] = {inPlace ? &src[1] : &separate[0], inPlace ? &src[2] : &separate[1],
                                      inPlace ? &src[0] : &separate[2]};
        const float* const from[] = {src[0].data(), src[1].data(), src[2].data()};
        float* const to[] = {dst[0]->data(), dst[1]->data(), dst[2]->data()};
        PrimitiveOutput all{ippiColorTwist_32f_P3R(from, src[0].step, to, dst[0]->step, size, matrix), {}};
        for (const Region<float>* written : dst) {
          const std::vector<float> samples = outputOf(all.status, *written).samples;
          all.samples.insert(all.samples.end(), samples.begin(), samples.end());
        }
        return all;
      },
      [=](IppiSize size, unsigned seed) {
        const Region<float> src[] = {plane(size, seed, 0), plane(size, seed, 1), plane(size, seed, 2)};
        std::vector<float> expected;
        for (const auto& row : matrix) {
          for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
              expected.push_back((row[3] + row[0] * src[0].at(x, y)) +
                                 (row[2] * src[2].at(x, y) + row[1] * src[1].at(x, y)));
            }
          }
        }
        return expected;
      }};
}

template <typename Sample, typename Function>
auto rounding(Function function, IppRoundMode mode) {
  return [=](const float* s, int step, Sample* d, int dStep, IppiSize size) {
    return function(s, step, d, dStep, size, mode);
  };
}

}  // namespace

const std::vector<PrimitiveCase>& primitiveCases() {
  using Byte = unsigned char;
  using Word = unsigned short;
  const auto add = [](float first, float second) { return first + second; };
  const auto subtract = [](float first, float second) { return second - first; };
  const auto multiply = [](float first, float second) { return first * second; };
  const auto addC = [](float s) { return s + constant; };
  const auto subC = [](float s) { return s - constant; };
  const auto mulC = [](float s) { return s * constant; };
  const auto divC = [](float s) { return s * (1.0F / constant); };
  const auto absolute = [](float s) { return std::fabs(s); };
  const auto exponential = [](float s) { return std::exp(static_cast<double>(s)); };
  const auto logarithm = [](float s) { return std::log(static_cast<double>(s)); };
  const auto same = [](auto s) { return s; };
  const auto nearestEven = [](double v) { return std::nearbyint(v); };
  constexpr int wholeSamples = 4;
  constexpr auto otherMode = IppRoundMode{7};

  static const std::vector<PrimitiveCase> cases = {
      binary("Add", ippiAdd_32f_C1R, add),
      binaryInPlace("AddInPlace", ippiAdd_32f_C1IR, add),
      withConstant("AddC", ippiAddC_32f_C1R, addC),
      withConstant("AddCInPlace", ippiAddC_32f_C1IR, addC),
      binary("Sub", ippiSub_32f_C1R, subtract),
      binaryInPlace("SubInPlace", ippiSub_32f_C1IR, subtract),
      withConstant("SubC", ippiSubC_32f_C1R, subC),
      withConstant("SubCInPlace", ippiSubC_32f_C1IR, subC),
      binary("Mul", ippiMul_32f_C1R, multiply),
      binaryInPlace("MulInPlace", ippiMul_32f_C1IR, multiply),
      withConstant("MulC", ippiMulC_32f_C1R, mulC),
      withConstant("MulCInPlace", ippiMulC_32f_C1IR, mulC),
      binary("Div", ippiDiv_32f_C1R, quotient),
      binary("DivOntoSecond", ippiDiv_32f_C1R, quotient, true),
      withConstant("DivC", ippiDivC_32f_C1R, divC),
      withConstant("DivCInPlace", ippiDivC_32f_C1IR, divC),
      unaryInPlace(
          "DivCRev",
          [](float* d, int step, IppiSize size) {
            IppStatus status = ippStsNoErr;
            for (int y = 0; y < size.height; ++y) {
              auto* row = reinterpret_cast<float*>(reinterpret_cast<Byte*>(d) + y * step);
              status = std::max(status, ippsDivCRev_32f_I(constant, row, size.width));
            }
            return status;
          },
          [](float s) { return quotient(s, constant); }),
      unary<float, float>("Abs", ippiAbs_32f_C1R, absolute, 0, wholeSamples),
      unaryInPlace("AbsInPlace", ippiAbs_32f_C1IR, absolute, 0, wholeSamples),
      unary<float, float>(
          "Sqrt", ippiSqrt_32f_C1R, [](float s) { return std::sqrt(s); }, 0, wholeSamples),
      unaryInPlace("Exp", ippiExp_32f_C1IR, exponential, 1),
      unary<float, float>("Ln", ippiLn_32f_C1R, logarithm, 1),
      unaryInPlace("LnInPlace", ippiLn_32f_C1IR, logarithm, 1),
      extreme("Min", ippiMin_32f_C1R, Limits::max(), [](float a, float b) { return std::min(a, b); }),
      extreme("Max", ippiMax_32f_C1R, -Limits::max(), [](float a, float b) { return std::max(a, b); }),
      unary<float, float>(
          "ThresholdGT",
          [](auto s, int step, auto d, int dStep, IppiSize size) {
            return ippiThreshold_GT_32f_C1R(s, step, d, dStep, size, 0.0F);
          },
          [](float s) { return s > 0 || std::isnan(s) ? 0.0F : s; }),
      unary<float, float>(
          "ThresholdLT",
          [](auto s, int step, auto d, int dStep, IppiSize size) {
            return ippiThreshold_LT_32f_C1R(s, step, d, dStep, size, 0.0F);
          },
          [](float s) { return s < 0 || std::isnan(s) ? 0.0F : s; }),
      unary<float, float>(
          "ThresholdLTValGTVal",
          [](auto s, int step, auto d, int dStep, IppiSize size) {
            return ippiThreshold_LTValGTVal_32f_C1R(s, step, d, dStep, size, -3.0F, 7.0F, 100.0F, 9.0F);
          },
          outside),
      unaryInPlace(
          "ThresholdLTValGTValInPlace",
          [](float* d, int step, IppiSize size) {
            return ippiThreshold_LTValGTVal_32f_C1IR(d, step, size, -3.0F, 7.0F, 100.0F, 9.0F);
          },
          outside),
      unary<Byte, float>("Convert8u32f", ippiConvert_8u32f_C1R, same),
      unary<Word, float>("Convert16u32f", ippiConvert_16u32f_C1R, same),
      unary<float, Byte>("Convert32f8uZero", rounding<Byte>(ippiConvert_32f8u_C1R, ippRndZero),
                         [](float s) { return std::trunc(limited(s, 255)); }),
      unary<float, Byte>("Convert32f8uNear", rounding<Byte>(ippiConvert_32f8u_C1R, ippRndNear),
                         [=](float s) { return nearestEven(limited(s, 255)); }),
      unary<float, Byte>("Convert32f8uTiesAway", rounding<Byte>(ippiConvert_32f8u_C1R, IppRoundMode{2}),
                         [](float s) { return tiesAway(limited(s, 255)); }),
      unary<float, Word>("Convert32f16uZero", rounding<Word>(ippiConvert_32f16u_C1R, ippRndZero),
                         [](float s) { return std::trunc(limited(s, 65535)); }),
      unary<float, Word>("Convert32f16uNear", rounding<Word>(ippiConvert_32f16u_C1R, ippRndNear),
                         [=](float s) { return nearestEven(limited(s, 65535)); }),
      unary<float, Word>("Convert32f16uTiesAway", rounding<Word>(ippiConvert_32f16u_C1R, otherMode),
                         [](float s) { return tiesAway(limited(s, 65535)); }),
      unary<Byte, float>(
          "Scale8u32f",
          [](auto s, int step, auto d, int dStep, IppiSize size) {
            return ippiScale_8u32f_C1R(s, step, d, dStep, size, -0.3F, 1.0F);
          },
          [](Byte s) { return static_cast<float>(s) * ((1.0F - -0.3F) / 255.0F) + -0.3F; }),
      unary<float, Byte>(
          "Scale32f8u",
          [](auto s, int step, auto d, int dStep, IppiSize size) {
            return ippiScale_32f8u_C1R(s, step, d, dStep, size, -20.0F, 200.0F);
          },
          [=](float s) {
            const float k = 255.0F / (200.0F - -20.0F);
            const float inRange = std::isnan(s) ? -20.0F : std::clamp(s, -20.0F, 200.0F);
            return nearestEven(inRange * k - k * -20.0F);
          }),
      unary<float, float>("Copy", ippiCopy_32f_C1R, same),
      split<float>("Split32f", ippiCopy_32f_C3P3R),
      split<Word>("Split16u", ippiCopy_16u_C3P3R),
      split<Byte>("Split8u", ippiCopy_8u_C3P3R),
      join<float>("Join32f", ippiCopy_32f_P3C3R),
      join<Word>("Join16u", ippiCopy_16u_P3C3R),
      join<Byte>("Join8u", ippiCopy_8u_P3C3R),
      transpose("Transpose", false),
      transpose("TransposeInPlace", true),
      border(
          "ReplicateBorder",
          [](auto& src, auto& dst, const Frame& f) {
            return ippiCopyReplicateBorder_32f_C1R(src.data(), src.step, src.size, dst.data(), dst.step, f.size, f.top,
                                                   f.left);
          },
          replicated),
      border(
          "ReplicateBorderInPlace",
          [](auto& src, auto& dst, const Frame& f) {
            return ippiCopyReplicateBorder_32f_C1IR(placeSource(src, dst, f), dst.step, src.size, f.size, f.top,
                                                    f.left);
          },
          replicated),
      border(
          "ReplicateBorderOntoItself",
          [](auto& src, auto& dst, const Frame& f) {
            float* placed = placeSource(src, dst, f);
            return ippiCopyReplicateBorder_32f_C1R(placed, dst.step, src.size, placed, dst.step, f.size, f.top, f.left);
          },
          replicated),
      border(
          "MirrorBorder",
          [](auto& src, auto& dst, const Frame& f) {
            return ippiCopyMirrorBorder_32f_C1R(src.data(), src.step, src.size, dst.data(), dst.step, f.size, f.top,
                                                f.left);
          },
          mirrored),
      border(
          "MirrorBorderOntoItself",
          [](auto& src, auto& dst, const Frame& f) {
            float* placed = placeSource(src, dst, f);
            return ippiCopyMirrorBorder_32f_C1R(placed, dst.step, src.size, placed, dst.step, f.size, f.top, f.left);
          },
          mirrored),
      border(
          "ConstBorder",
          [](auto& src, auto& dst, const Frame& f) {
            return ippiCopyConstBorder_32f_C1R(src.data(), src.step, src.size, dst.data(), dst.step, f.size, f.top,
                                               f.left, constant);
          },
          surrounded),
      binary(
          "AlphaComp",
          [](auto s1, int step1, auto s2, int step2, float* d, int dStep, IppiSize size) {
            return ippiAlphaCompC_32f_C1R(s1, step1, s2, step2, d, dStep, size, 0.1F, 1.2F, ippAlphaOver);
          },
          [](float s1, float s2) {
            const float over = s1 * 0.1F;
            const float under = s2 * 1.2F;
            return static_cast<float>(double{over} + double{under} * (1.0 - double{0.1F}));
          }),
      pixels("RGBToLab", ippiRGBToLab_32f_C3R, labOf, 1.0F / 256, false),
      pixels("RGBToLabInPlace", ippiRGBToLab_32f_C3R, labOf, 1.0F / 256, true),
      pixels("LabToRGB", ippiLabToRGB_32f_C3R, rgbOf, 0.5F, false),
      pixels("LabToRGBInPlace", ippiLabToRGB_32f_C3R, rgbOf, 0.5F, true),
      twist("ColorTwist", false),
      twist("ColorTwistInPlace", true),
  };
  return cases;
}
