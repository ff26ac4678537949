// Every pointwise primitive against its naive formula, on every row of bodies, bit for bit.

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "primitives/region.h"
#include "support/each_row_test.h"
#include "support/images.h"

namespace {

using Limits = std::numeric_limits<float>;
using Byte = unsigned char;
using Word = unsigned short;

struct Outcome {
  IppStatus status;
  std::vector<float> expected;
  std::vector<float> samples;  // of the target, row by row; integers as floats
};

struct PrimitiveCase {
  std::string name;
  // On images with random contents, which follow from size and seed. Checks that nothing else was written.
  std::function<Outcome(IppiSize, unsigned seed)> run;
  std::function<void()> expectRefusals;
  int tolerance = 0;  // in units in the last place
};

void PrintTo(const PrimitiveCase& primitive, std::ostream* out) { *out << primitive.name; }

// Steps are multiples of stepUnit where rows are whole multiples of it.
template <typename Sample>
Region<Sample> randomRegion(IppiSize size, unsigned seed, int samplesPerPixel = 1, int stepUnit = 1) {
  const int padding = static_cast<int>(seed % 3) * 7 * stepUnit;
  Region<Sample> region(size, static_cast<int>(seed % 4), padding, samplesPerPixel);
  std::mt19937 bits(seed);
  region.fill([&](int, int) { return anySample<Sample>(bits); });
  return region;
}

template <typename Sample>
Region<Sample> target(IppiSize size, unsigned seed, int samplesPerPixel = 1, int stepUnit = 1) {
  return {size, static_cast<int>(seed / 4 % 4), static_cast<int>(seed % 5) * stepUnit, samplesPerPixel};
}

template <typename Value>
std::vector<float> valuesOf(IppiSize size, Value value) {
  std::vector<float> all;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) all.push_back(static_cast<float>(value(x, y)));
  }
  return all;
}

template <typename... Targets>
Outcome outcome(IppStatus status, std::vector<float> expected, const Targets&... written) {
  (written.expectSurroundingsIntact(), ...);
  Outcome result{status, std::move(expected), {}};
  (written.appendSamplesTo(result.samples), ...);
  return result;
}

// Of call(src, srcStep, dst, dstStep, size): nulls count before sizes, sizes before steps, and nothing is written.
template <typename Source, typename Target, typename Call>
void expectRefusalsOf(Call call) {
  Source src[4] = {1, 1, 1, 1};
  Target dst[4] = {7, 7, 7, 7};
  EXPECT_EQ(call(static_cast<Source*>(nullptr), 0, dst, 4, IppiSize{0, 1}), ippStsNullPtrErr);
  EXPECT_EQ(call(src, 0, static_cast<Target*>(nullptr), 4, IppiSize{1, 0}), ippStsNullPtrErr);
  EXPECT_EQ(call(src, 0, dst, 4, IppiSize{0, 1}), ippStsSizeErr);
  EXPECT_EQ(call(src, 4, dst, 0, IppiSize{1, -1}), ippStsSizeErr);
  EXPECT_EQ(dst[0], Target{7});
}

// Of call(planes): every null among the planes.
template <typename Sample, typename Call>
void expectPlanesChecked(Sample* plane, Call call) {
  for (int missing = 0; missing < 3; ++missing) {
    Sample* planes[] = {plane, plane, plane};
    planes[missing] = nullptr;
    EXPECT_EQ(call(planes), ippStsNullPtrErr) << missing;
  }
  EXPECT_EQ(call(nullptr), ippStsNullPtrErr);
}

// call(src, srcStep, dst, dstStep, size); formula(sample).
template <typename Source, typename Target, typename Call, typename Formula>
PrimitiveCase unary(const char* name, Call call, Formula formula, int tolerance = 0, int stepUnit = 1) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto src = randomRegion<Source>(size, seed, 1, stepUnit);
    auto dst = target<Target>(size, seed, 1, stepUnit);
    const auto expected = valuesOf(size, [&](int x, int y) { return formula(src.at(x, y)); });
    return outcome(call(src.data(), src.step, dst.data(), dst.step, size), expected, dst);
  };
  return {name, run, [=] { expectRefusalsOf<Source, Target>(call); }, tolerance};
}

// call(srcDst, step, size).
template <typename Call, typename Formula>
PrimitiveCase unaryInPlace(const char* name, Call call, Formula formula, int tolerance = 0, int stepUnit = 1) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto image = randomRegion<float>(size, seed, 1, stepUnit);
    const auto expected = valuesOf(size, [&](int x, int y) { return formula(image.at(x, y)); });
    return outcome(call(image.data(), image.step, size), expected, image);
  };
  const auto refuse = [=] {
    float image = 7.0F;
    EXPECT_EQ(call(nullptr, 4, IppiSize{0, 1}), ippStsNullPtrErr);
    EXPECT_EQ(call(&image, 0, IppiSize{0, 1}), ippStsSizeErr);
    EXPECT_EQ(image, 7.0F);
  };
  return {name, run, refuse, tolerance};
}

// call(src1, step1, src2, step2, dst, dstStep, size); formula(s1, s2).
template <typename Call, typename Formula>
PrimitiveCase binary(const char* name, Call call, Formula formula, bool ontoSecond = false) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto first = randomRegion<float>(size, seed);
    auto second = randomRegion<float>(size, seed + 1);
    auto separate = target<float>(size, seed);
    auto& dst = ontoSecond ? second : separate;
    const auto expected = valuesOf(size, [&](int x, int y) { return formula(first.at(x, y), second.at(x, y)); });
    const IppStatus status = call(first.data(), first.step, second.data(), second.step, dst.data(), dst.step, size);
    return outcome(status, expected, dst);
  };
  const auto refuse = [=] {
    const float other = 1.0F;
    expectRefusalsOf<float, float>(
        [&](auto s, int step, auto d, int dStep, IppiSize size) { return call(s, step, &other, 4, d, dStep, size); });
    if (ontoSecond) return;
    expectRefusalsOf<float, float>(
        [&](auto s, int step, auto d, int dStep, IppiSize size) { return call(&other, 4, s, step, d, dStep, size); });
  };
  return {name, run, refuse};
}

using BinaryInPlace = IppStatus (*)(const float*, int, float*, int, IppiSize);
using ConstantRegion = IppStatus (*)(const float*, int, float, float*, int, IppiSize);
using ConstantInPlace = IppStatus (*)(float, float*, int, IppiSize);

template <typename Formula>
PrimitiveCase binaryInPlace(const char* name, BinaryInPlace function, Formula formula) {
  const auto call = [function](const float* s, int step, const float*, int, float* d, int dStep, IppiSize size) {
    return function(s, step, d, dStep, size);
  };
  return binary(name, call, formula, true);
}

constexpr float constant = -1.7F;

template <typename Formula>
PrimitiveCase withConstant(const char* name, ConstantRegion function, Formula formula) {
  const auto call = [function](const float* s, int step, float* d, int dStep, IppiSize size) {
    return function(s, step, constant, d, dStep, size);
  };
  return unary<float, float>(name, call, formula);
}
template <typename Formula>
PrimitiveCase withConstant(const char* name, ConstantInPlace function, Formula formula) {
  const auto call = [function](float* d, int step, IppiSize size) { return function(constant, d, step, size); };
  return unaryInPlace(name, call, formula);
}

template <typename Function, typename Choose>
PrimitiveCase extreme(const char* name, Function function, float start, Choose choose) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto src = randomRegion<float>(size, seed);
    std::vector<float> all;
    src.appendSamplesTo(all);
    float best = start;
    for (const float s : all) best = std::isnan(s) ? best : choose(best, s);
    float result = 42.0F;
    const IppStatus status = function(src.data(), src.step, size, &result);
    return Outcome{status, {best == 0.0F ? 0.0F : best}, {result}};
  };
  const auto refuse = [=] {
    const float sample = 1.0F;
    float result = 7.0F;
    EXPECT_EQ(function(nullptr, 4, {0, 1}, &result), ippStsNullPtrErr);
    EXPECT_EQ(function(&sample, 4, {0, 1}, nullptr), ippStsNullPtrErr);
    EXPECT_EQ(function(&sample, 4, {1, 0}, &result), ippStsSizeErr);
    EXPECT_EQ(result, 7.0F);
  };
  return {name, run, refuse};
}

PrimitiveCase transpose(const char* name, bool inPlace) {
  const auto run = [=](IppiSize given, unsigned seed) {
    const IppiSize size{given.width, inPlace ? given.width : given.height};
    const IppiSize turned{size.height, size.width};
    auto src = randomRegion<float>(size, seed);
    auto separate = target<float>(turned, seed);
    auto& dst = inPlace ? src : separate;
    const auto expected = valuesOf(turned, [&](int x, int y) { return src.at(y, x); });
    return outcome(ippiTranspose_32f_C1R(src.data(), src.step, dst.data(), dst.step, size), expected, dst);
  };
  return {name, run, [] { expectRefusalsOf<float, float>(ippiTranspose_32f_C1R); }};
}

// Interleaved pixels to planes: the planes one below the other.
template <typename Sample, typename Function>
PrimitiveCase split(const char* name, Function function) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto src = randomRegion<Sample>(size, seed, 3);
    Region<Sample> dst[] = {target<Sample>(size, seed), target<Sample>(size, seed), target<Sample>(size, seed)};
    Sample* const to[] = {dst[0].data(), dst[1].data(), dst[2].data()};
    const auto expected = valuesOf({size.width, 3 * size.height},
                                   [&](int x, int y) { return src.at(3 * x + y / size.height, y % size.height); });
    return outcome(function(src.data(), src.step, to, dst[0].step, size), expected, dst[0], dst[1], dst[2]);
  };
  const auto refuse = [=] {
    Sample image[] = {7, 7, 7};
    Sample* const planes[] = {image, image, image};
    EXPECT_EQ(function(nullptr, 4, planes, 4, {0, 1}), ippStsNullPtrErr);
    expectPlanesChecked(image, [&](Sample* const* fewer) { return function(image, 4, fewer, 4, {0, 1}); });
    EXPECT_EQ(function(image, 4, planes, 4, {0, 1}), ippStsSizeErr);
  };
  return {name, run, refuse};
}

template <typename Sample, typename Function>
PrimitiveCase join(const char* name, Function function) {
  const auto run = [=](IppiSize size, unsigned seed) {
    const auto plane = [=](unsigned i) { return randomRegion<Sample>(size, seed + 12 * i); };
    Region<Sample> src[] = {plane(0), plane(1), plane(2)};
    const Sample* const from[] = {src[0].data(), src[1].data(), src[2].data()};
    auto dst = target<Sample>(size, seed, 3);
    const auto expected =
        valuesOf({3 * size.width, size.height}, [&](int x, int y) { return src[x % 3].at(x / 3, y); });
    return outcome(function(from, src[0].step, dst.data(), dst.step, size), expected, dst);
  };
  const auto refuse = [=] {
    Sample image[] = {7, 7, 7};
    const Sample* const planes[] = {image, image, image};
    EXPECT_EQ(function(planes, 4, nullptr, 4, {0, 1}), ippStsNullPtrErr);
    expectPlanesChecked(image, [&](Sample* const* fewer) { return function(fewer, 4, image, 4, {0, 1}); });
    EXPECT_EQ(function(planes, 4, image, 4, {1, 0}), ippStsSizeErr);
  };
  return {name, run, refuse};
}

// In place the planes also change places.
PrimitiveCase twist(const char* name, bool inPlace) {
  static constexpr float matrix[3][4] = {
      {0.3F, -1.2F, 0.7F, 0.1F}, {1.1F, 0.2F, -0.4F, 0.0F}, {-0.6F, 0.9F, 1.3F, 5.F}};
  const auto run = [=](IppiSize size, unsigned seed) {
    const auto plane = [=](unsigned i) { return randomRegion<float>(size, seed + 12 * i); };
    Region<float> src[] = {plane(0), plane(1), plane(2)};
    Region<float> separate[] = {target<float>(size, seed), target<float>(size, seed), target<float>(size, seed)};
    Region<float>* const dst[] = {inPlace ? &src[1] : &separate[0], inPlace ? &src[2] : &separate[1],
                                  inPlace ? &src[0] : &separate[2]};
    const float* const from[] = {src[0].data(), src[1].data(), src[2].data()};
    float* const to[] = {dst[0]->data(), dst[1]->data(), dst[2]->data()};
    const auto expected = valuesOf({size.width, 3 * size.height}, [&](int x, int y) {
      const float(&row)[4] = matrix[y / size.height];
      const auto at = [&](int i) { return src[i].at(x, y % size.height); };
      return (row[3] + row[0] * at(0)) + (row[2] * at(2) + row[1] * at(1));
    });
    const IppStatus status = ippiColorTwist_32f_P3R(from, src[0].step, to, dst[0]->step, size, matrix);
    return outcome(status, expected, *dst[0], *dst[1], *dst[2]);
  };
  const auto refuse = [] {
    const auto call = ippiColorTwist_32f_P3R;
    float image[] = {7, 7, 7};
    float* const planes[] = {image, image, image};
    EXPECT_EQ(call(planes, 4, planes, 4, {0, 1}, nullptr), ippStsNullPtrErr);
    expectPlanesChecked(image, [&](float* const* fewer) { return call(fewer, 4, planes, 4, {1, 0}, matrix); });
    expectPlanesChecked(image, [&](float* const* fewer) { return call(planes, 4, fewer, 4, {1, 0}, matrix); });
    EXPECT_EQ(call(planes, 0, planes, 4, {0, 1}, matrix), ippStsSizeErr);
    EXPECT_EQ(call(planes, 0, planes, 4, {1, 1}, matrix), ippStsStepErr);
    EXPECT_EQ(call(planes, 4, planes, -4, {1, 1}, matrix), ippStsStepErr);
  };
  return {name, run, refuse};
}

using Pixel = std::array<float, 3>;

// call(src, srcStep, dst, dstStep, size) on interleaved pixels; formula(pixel). Samples run from -128 to 384 by scale.
template <typename Call, typename Formula>
PrimitiveCase pixels(const char* name, Call call, Formula formula, float scale, bool inPlace) {
  const auto run = [=](IppiSize size, unsigned seed) {
    auto src = randomRegion<float>(size, seed, 3);
    src.fill([&](int x, int y) { return src.at(x, y) * scale; });
    auto separate = target<float>(size, seed, 3);
    auto& dst = inPlace ? src : separate;
    const auto expected = valuesOf({3 * size.width, size.height}, [&](int x, int y) {
      const int first = x / 3 * 3;
      return formula({src.at(first, y), src.at(first + 1, y), src.at(first + 2, y)})[static_cast<std::size_t>(x % 3)];
    });
    return outcome(call(src.data(), src.step, dst.data(), dst.step, size), expected, dst);
  };
  return {name, run, [=] { expectRefusalsOf<float, float>(call); }};
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

// Borders of every width from 0 on, wider than small sources.
struct Frame {
  Frame(IppiSize source, unsigned seed)
      : top(static_cast<int>(seed % 4)),
        left(static_cast<int>(seed % 7)),
        size{source.width + left + static_cast<int>(seed % 6), source.height + top + static_cast<int>(seed % 5)} {}
  int top, left;
  IppiSize size;
};

// call(src, dst, frame); continued(src, x, y) is the source's sample, or what stands for it.
template <typename Call, typename Continued>
PrimitiveCase border(const char* name, Call call, Continued continued) {
  const auto run = [=](IppiSize size, unsigned seed) {
    const Frame f(size, seed);
    auto src = randomRegion<float>(size, seed);
    auto dst = target<float>(f.size, seed);
    const auto expected = valuesOf(f.size, [&](int x, int y) { return continued(src, x - f.left, y - f.top); });
    return outcome(call(src, dst, f), expected, dst);
  };
  return {name, run, [] {}};  // status_test.cpp: steps come first here
}

template <typename Function>
auto padded(Function function) {
  return [function](auto& src, auto& dst, const Frame& f) {
    return function(src.data(), src.step, src.size, dst.data(), dst.step, f.size, f.top, f.left);
  };
}

float* placeSource(const Region<float>& src, Region<float>& dst, const Frame& frame) {
  for (int y = 0; y < src.size.height; ++y) {
    for (int x = 0; x < src.size.width; ++x) dst.set(x + frame.left, y + frame.top, src.at(x, y));
  }
  return reinterpret_cast<float*>(reinterpret_cast<Byte*>(dst.data()) + frame.top * dst.step) + frame.left;
}

template <typename Function>
auto paddedOntoItself(Function function) {
  return [function](auto& src, auto& dst, const Frame& f) {
    float* const placed = placeSource(src, dst, f);
    return function(placed, dst.step, src.size, placed, dst.step, f.size, f.top, f.left);
  };
}

int bouncingIndex(int i, int length) {
  if (length == 1) return 0;
  while (i < 0 || i >= length) i = i < 0 ? -i : 2 * (length - 1) - i;
  return i;
}

float replicated(const Region<float>& src, int x, int y) {
  return src.at(std::clamp(x, 0, src.size.width - 1), std::clamp(y, 0, src.size.height - 1));
}
float mirrored(const Region<float>& src, int x, int y) {
  return src.at(bouncingIndex(x, src.size.width), bouncingIndex(y, src.size.height));
}
float surrounded(const Region<float>& src, int x, int y) {
  return x >= 0 && y >= 0 && x < src.size.width && y < src.size.height ? src.at(x, y) : constant;
}

float quotient(float divisor, float dividend) {
  if (divisor != 0) return dividend / divisor;
  if (dividend > 0) return INFINITY;
  return dividend < 0 ? -INFINITY : NAN;
}
float outside(float s) {
  if (std::isnan(s) || s < -3.0F) return 7.0F;
  return s > 100.0F ? 9.0F : s;
}
float outsideOfOne(float s) { return s == 1.0F ? s : s > 1.0F ? 9.0F : 7.0F; }
double limited(double v, double highest) { return v > 0 ? std::min(v, highest) : 0.0; }
double tiesAway(double v) { return std::floor(v + 0.5); }
double scaledToByte(float s) {
  const float k = 255.0F / (200.0F - -20.0F);
  const float inRange = std::isnan(s) ? -20.0F : std::clamp(s, -20.0F, 200.0F);
  return std::nearbyint(inRange * k - k * -20.0F);
}
float composed(float s1, float s2) {
  const float over = s1 * 0.1F;
  const float under = s2 * 1.2F;
  return static_cast<float>(double{over} + double{under} * (1.0 - double{0.1F}));
}

// The function on regions, with more arguments behind the size.
template <typename Function, typename... Arguments>
auto with(Function function, Arguments... arguments) {
  return [=](auto s, int step, auto d, int dStep, IppiSize size) {
    return function(s, step, d, dStep, size, arguments...);
  };
}

IppStatus divideConstantByRows(float* d, int step, IppiSize size) {
  IppStatus status = ippStsNoErr;
  for (int y = 0; y < size.height; ++y) {
    auto* row = reinterpret_cast<float*>(reinterpret_cast<Byte*>(d) + y * step);
    const IppStatus ofRow = ippsDivCRev_32f_I(constant, row, size.width);
    if (ofRow != ippStsNoErr) status = ofRow;
  }
  return status;
}

std::vector<PrimitiveCase> primitiveCases() {
  const std::plus<float> sum;
  const std::multiplies<float> product;
  const auto difference = [](float first, float second) { return second - first; };
  const auto plusC = [](float s) { return s + constant; };
  const auto minusC = [](float s) { return s - constant; };
  const auto timesC = [](float s) { return s * constant; };
  const auto byC = [](float s) { return s * (1.0F / constant); };
  const auto absolute = [](float s) { return std::fabs(s); };
  const auto root = [](float s) { return std::sqrt(s); };
  const auto exponential = [](float s) { return std::exp(double{s}); };
  const auto logarithm = [](float s) { return std::log(double{s}); };
  const auto same = [](auto s) { return s; };
  constexpr int wholeSamples = 4;
  constexpr auto otherMode = IppRoundMode{7};
  return {
      binary("Add", ippiAdd_32f_C1R, sum),
      binaryInPlace("AddInPlace", ippiAdd_32f_C1IR, sum),
      withConstant("AddC", ippiAddC_32f_C1R, plusC),
      withConstant("AddCInPlace", ippiAddC_32f_C1IR, plusC),
      binary("Sub", ippiSub_32f_C1R, difference),
      binaryInPlace("SubInPlace", ippiSub_32f_C1IR, difference),
      withConstant("SubC", ippiSubC_32f_C1R, minusC),
      withConstant("SubCInPlace", ippiSubC_32f_C1IR, minusC),
      binary("Mul", ippiMul_32f_C1R, product),
      binaryInPlace("MulInPlace", ippiMul_32f_C1IR, product),
      withConstant("MulC", ippiMulC_32f_C1R, timesC),
      withConstant("MulCInPlace", ippiMulC_32f_C1IR, timesC),
      binary("Div", ippiDiv_32f_C1R, quotient),
      binary("DivOntoSecond", ippiDiv_32f_C1R, quotient, true),
      withConstant("DivC", ippiDivC_32f_C1R, byC),
      withConstant("DivCInPlace", ippiDivC_32f_C1IR, byC),
      unaryInPlace("DivCRev", divideConstantByRows, [](float s) { return quotient(s, constant); }),
      unary<float, float>("Abs", ippiAbs_32f_C1R, absolute, 0, wholeSamples),
      unaryInPlace("AbsInPlace", ippiAbs_32f_C1IR, absolute, 0, wholeSamples),
      unary<float, float>("Sqrt", ippiSqrt_32f_C1R, root, 0, wholeSamples),
      unaryInPlace("Exp", ippiExp_32f_C1IR, exponential, 1),
      unary<float, float>("Ln", ippiLn_32f_C1R, logarithm, 1),
      unaryInPlace("LnInPlace", ippiLn_32f_C1IR, logarithm, 1),
      extreme("Min", ippiMin_32f_C1R, Limits::max(), [](float a, float b) { return std::min(a, b); }),
      extreme("Max", ippiMax_32f_C1R, -Limits::max(), [](float a, float b) { return std::max(a, b); }),
      unary<float, float>("ThresholdGT", with(ippiThreshold_GT_32f_C1R, 0.0F),
                          [](float s) { return s > 0 || std::isnan(s) ? 0.0F : s; }),
      unary<float, float>("ThresholdLT", with(ippiThreshold_LT_32f_C1R, 0.0F),
                          [](float s) { return s < 0 || std::isnan(s) ? 0.0F : s; }),
      unary<float, float>("ThresholdLTValGTVal", with(ippiThreshold_LTValGTVal_32f_C1R, -3.0F, 7.0F, 100.0F, 9.0F),
                          outside),
      unary<float, float>("ThresholdLTValGTValOfOne", with(ippiThreshold_LTValGTVal_32f_C1R, 1.0F, 7.0F, 1.0F, 9.0F),
                          outsideOfOne),
      unaryInPlace(
          "ThresholdLTValGTValInPlace",
          [](float* d, int step, IppiSize size) {
            return ippiThreshold_LTValGTVal_32f_C1IR(d, step, size, -3.0F, 7.0F, 100.0F, 9.0F);
          },
          outside),
      unary<Byte, float>("Convert8u32f", ippiConvert_8u32f_C1R, same),
      unary<Word, float>("Convert16u32f", ippiConvert_16u32f_C1R, same),
      unary<float, Byte>("Convert32f8uZero", with(ippiConvert_32f8u_C1R, ippRndZero),
                         [](float s) { return std::trunc(limited(s, 255)); }),
      unary<float, Byte>("Convert32f8uNear", with(ippiConvert_32f8u_C1R, ippRndNear),
                         [](float s) { return std::nearbyint(limited(s, 255)); }),
      unary<float, Byte>("Convert32f8uTiesAway", with(ippiConvert_32f8u_C1R, IppRoundMode{2}),
                         [](float s) { return tiesAway(limited(s, 255)); }),
      unary<float, Word>("Convert32f16uZero", with(ippiConvert_32f16u_C1R, ippRndZero),
                         [](float s) { return std::trunc(limited(s, 65535)); }),
      unary<float, Word>("Convert32f16uNear", with(ippiConvert_32f16u_C1R, ippRndNear),
                         [](float s) { return std::nearbyint(limited(s, 65535)); }),
      unary<float, Word>("Convert32f16uTiesAway", with(ippiConvert_32f16u_C1R, otherMode),
                         [](float s) { return tiesAway(limited(s, 65535)); }),
      unary<Byte, float>("Scale8u32f", with(ippiScale_8u32f_C1R, -0.3F, 1.0F),
                         [](Byte s) { return static_cast<float>(s) * ((1.0F - -0.3F) / 255.0F) + -0.3F; }),
      unary<float, Byte>("Scale32f8u", with(ippiScale_32f8u_C1R, -20.0F, 200.0F), scaledToByte),
      unary<float, float>("Copy", ippiCopy_32f_C1R, same),
      split<float>("Split32f", ippiCopy_32f_C3P3R),
      split<Word>("Split16u", ippiCopy_16u_C3P3R),
      split<Byte>("Split8u", ippiCopy_8u_C3P3R),
      join<float>("Join32f", ippiCopy_32f_P3C3R),
      join<Word>("Join16u", ippiCopy_16u_P3C3R),
      join<Byte>("Join8u", ippiCopy_8u_P3C3R),
      transpose("Transpose", false),
      transpose("TransposeInPlace", true),
      border("ReplicateBorder", padded(ippiCopyReplicateBorder_32f_C1R), replicated),
      border("ReplicateBorderOntoItself", paddedOntoItself(ippiCopyReplicateBorder_32f_C1R), replicated),
      border(
          "ReplicateBorderInPlace",
          [](auto& src, auto& dst, const Frame& f) {
            float* const placed = placeSource(src, dst, f);
            return ippiCopyReplicateBorder_32f_C1IR(placed, dst.step, src.size, f.size, f.top, f.left);
          },
          replicated),
      border("MirrorBorder", padded(ippiCopyMirrorBorder_32f_C1R), mirrored),
      border("MirrorBorderOntoItself", paddedOntoItself(ippiCopyMirrorBorder_32f_C1R), mirrored),
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
          composed),
      pixels("RGBToLab", ippiRGBToLab_32f_C3R, labOf, 1.0F / 256, false),
      pixels("RGBToLabInPlace", ippiRGBToLab_32f_C3R, labOf, 1.0F / 256, true),
      pixels("LabToRGB", ippiLabToRGB_32f_C3R, rgbOf, 0.5F, false),
      pixels("LabToRGBInPlace", ippiLabToRGB_32f_C3R, rgbOf, 0.5F, true),
      twist("ColorTwist", false),
      twist("ColorTwistInPlace", true),
  };
}

// Widths beyond two registers of the widest row, and a few past the size of a tile.
std::vector<IppiSize> sizes() {
  std::vector<IppiSize> all = {{64, 3}, {70, 37}, {3, 70}, {131, 33}};
  for (int width = 1; width <= 35; ++width) all.push_back({width, 1 + width % 5});
  return all;
}

bool within(float a, float b, int tolerance) {
  if (sameBits(a, b)) return true;
  for (float next = b; tolerance > 0; --tolerance) {
    next = std::nextafter(next, a);
    if (a == next) return true;
  }
  return false;
}

void expectSamples(const std::vector<float>& actual, const std::vector<float>& expected, int tolerance, IppiSize size) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    ASSERT_TRUE(within(actual[i], expected[i], tolerance)) << actual[i] << " instead of " << expected[i] << ", sample "
                                                           << i << " of " << size.width << " x " << size.height;
  }
}

class Primitive : public testing::TestWithParam<PrimitiveCase> {};

TEST_P(Primitive, GivesWhatTheFormulaGivesOnEveryRow) {
  for (const IppiSize size : sizes()) {
    for (unsigned seed = 0; seed < 2; ++seed) {
      std::optional<Outcome> baseline;
      onEachRow([&] {
        if (HasFailure()) return;
        const Outcome actual = GetParam().run(size, seed * 35 + static_cast<unsigned>(size.width));
        if (!baseline) baseline = actual;
        expectSamples(actual.samples, actual.expected, GetParam().tolerance, size);
        expectSamples(actual.samples, baseline->samples, 0, size);
        EXPECT_EQ(actual.status, baseline->status);
        EXPECT_GE(actual.status, 0);
      });
    }
  }
}

TEST_P(Primitive, RefusesNullsBeforeSizes) { GetParam().expectRefusals(); }

INSTANTIATE_TEST_SUITE_P(, Primitive, testing::ValuesIn(primitiveCases()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
