#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "primitives/neighbourhood.h"

namespace {

// The whole filter from its definition: a row function and a column function over the values under the taps.
template <typename Sample, typename RowSum, typename ColumnSum>
Plane<Sample> naive(const Plane<Sample>& src, Plane<Sample> dst, int k, unsigned border, Sample value, RowSum rowSum,
                    ColumnSum columnSum) {
  const int r = k / 2;
  std::vector<float> taken(static_cast<std::size_t>(k));
  const auto across = [&](int x, int y) {
    const Position row = continued(y, src.height(), border, 16, r, r);
    if (row.isConstant) return static_cast<float>(value);
    for (int i = 0; i < k; ++i) {
      const Position column = continued(x - r + i, src.width(), border, 64, r, r);
      taken[static_cast<std::size_t>(i)] = static_cast<float>(column.isConstant ? value : src.at(column.n, row.n));
    }
    return rowSum(taken);
  };
  for (int x = 0; x < src.width(); ++x) {
    std::vector<float> rows;
    for (int y = -r; y < src.height() + r; ++y) rows.push_back(across(x, y));
    for (int y = 0; y < src.height(); ++y) {
      dst.at(x, y) = static_cast<Sample>(columnSum(std::vector<float>(rows.begin() + y, rows.begin() + y + k)));
    }
  }
  return dst;
}

float partnersFirst(const std::vector<float>& a, const std::vector<float>& taps) {
  const std::size_t r = a.size() / 2;
  float acc = (a[0] + a[2 * r]) * taps[0];
  for (std::size_t j = 1; j < r; ++j) acc = acc + (a[j] + a[2 * r - j]) * taps[j];
  return acc + a[r] * taps[r];
}
float ascending(const std::vector<float>& a, const std::vector<float>& taps) {
  float acc = a[0] * taps[0];
  for (std::size_t i = 1; i < a.size(); ++i) acc = acc + a[i] * taps[i];
  return acc;
}

struct SpecAndBuffer {
  FencedMemory spec;
  FencedMemory buffer;
};

// ---- Border per call

SpecAndBuffer makeBandSpec(int width, int height, int k, float sigma) {
  std::int64_t specSize = 0;
  std::int64_t initSize = 0;
  std::int64_t bufferSize = 0;
  EXPECT_EQ(ippiFilterGaussianGetSpecSize_L(k, ipp32f, 1, &specSize, &initSize), ippStsNoErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize_L(width, height, k, ipp32f, 1, 1, &bufferSize), ippStsNoErr);
  const std::int64_t stride = (width * 4 + 63) / 64 * 64;
  EXPECT_EQ(specSize, (k + 1) / 2 * 4 + 128);
  EXPECT_EQ(bufferSize, (k + 1) * stride + 12 * k + 64);
  SpecAndBuffer made{FencedMemory(specSize, 16), FencedMemory(bufferSize, 24)};
  FencedMemory init(initSize);
  EXPECT_EQ(ippiFilterGaussianInit_L(width, height, k, 1, ipp32f, 1, made.spec.get(), init.get(), sigma), ippStsNoErr);
  return made;
}

// The weights of k taps in single precision, each exponential rounded once.
std::vector<float> weightsOf(int k, float sigma) {
  std::vector<float> weights;
  for (int i = 0; i < k; ++i) {
    const auto distance = static_cast<float>(i - k / 2);
    const float exponent = distance == 0.0F ? 0.0F : -(distance * distance) / (sigma * (sigma + sigma));
    weights.push_back(static_cast<float>(std::exp(double{exponent})));
  }
  return weights;
}

// Normalised by one reciprocal: a division would change last bits. Up to the middle one, the others being the same.
std::vector<float> bandTaps(int k, float sigma) {
  std::vector<float> taps = weightsOf(k, sigma);
  taps.resize(static_cast<std::size_t>(k / 2 + 1));
  float sum = 0.0F;
  for (int i = 0; i < k / 2; ++i) sum = sum + (taps[static_cast<std::size_t>(i)] + taps[static_cast<std::size_t>(i)]);
  for (float& tap : taps) tap = tap * (1.0F / (1.0F + sum));
  return taps;
}

// Normalised by a division each.
std::vector<float> borderTaps(int k, float sigma) {
  std::vector<float> taps = weightsOf(k, sigma);
  float sum = 0.0F;
  for (const float weight : taps) sum = sum + weight;
  for (float& tap : taps) tap = tap / sum;
  return taps;
}

// Of a result that is rounded already.
std::vector<float> wholeTaps(int k, float sigma, float scale) {
  std::vector<float> taps = borderTaps(k, sigma);
  for (float& tap : taps) tap = static_cast<float>(std::floor(double{tap * scale} + 0.5));
  return taps;
}

constexpr unsigned borders[] = {1, 3, 6, 17, 33, 49, 65, 129, 193, 19, 35, 67, 131, 22, 38, 54, 70, 134, 115, 240};

// Widths through all kinds of line ends, each for every third border and with a sigma of any size.
template <typename Check>
void forManyShapes(Check check) {
  std::mt19937 random(11);
  constexpr int kernels[] = {3, 5, 7, 9, 25, 61};
  constexpr float sigmas[] = {1e-30F, 0.1F, 0.4F, 0.7F, 1.0F, 1.7F, 2.9F, 5.3F, 11.0F, 1000.0F, 3e38F};
  std::vector<int> widths = {47, 63, 64, 65, 127, 128, 129, 131, 300};
  for (int width = 1; width <= 40; ++width) widths.push_back(width);
  for (const int width : widths) {
    for (auto i = static_cast<std::size_t>(width % 3); i < std::size(borders); i += 3) {
      const unsigned border = borders[i];
      const int height = static_cast<int>(random() % (width < 100 ? 40 : 5)) + 1;
      const int k = kernels[random() % 6];
      const float sigma = sigmas[random() % std::size(sigmas)];
      check(width, height, k, sigma, border);
      ASSERT_FALSE(testing::Test::HasFailure())
          << width << " x " << height << ", " << k << " taps, sigma " << sigma << ", border " << border;
    }
  }
  for (const unsigned border : borders) {
    check(130, 3, 301, 60, border);  // beyond the sides of the region from any column
    if (border == 1 || border == 67) check(16385, 1, 3, 0.6F, border);  // one column more than many strips hold
    if (testing::Test::HasFailure()) FAIL() << "border " << border;
  }
}

// filter(from, to) onto another plane and in place.
template <typename Sample, typename Filter>
void expectOnEachRow(const Plane<Sample>& src, const Plane<Sample>& expected, Filter filter) {
  onEachRow([&] {
    Plane<Sample> dst = src;
    for (int y = 0; y < src.height(); ++y) std::fill_n(&dst.at(0, y), src.width(), static_cast<Sample>(1));
    EXPECT_EQ(filter(src, dst), ippStsNoErr);
    EXPECT_TRUE(sameBits(dst, expected));
    Plane<Sample> both = src;
    EXPECT_EQ(filter(both, both), ippStsNoErr);
    EXPECT_TRUE(sameBits(both, expected)) << "in place";
  });
}

TEST(GaussianBand, EqualsTheFormulaOnEveryRowOfBodies) {
  forManyShapes([](int width, int height, int k, float sigma, unsigned border) {
    const SpecAndBuffer made = makeBandSpec(width, height, k, sigma);
    const std::vector<float> taps = bandTaps(k, sigma);
    Plane<float> src(width, height, k / 2, static_cast<unsigned>(width));
    if (width % 4 == 0) src.at(width / 2, height / 2) = NAN;
    const auto sum = [&taps](const std::vector<float>& a) { return partnersFirst(a, taps); };
    const float value = 0.75F;
    expectOnEachRow(src, naive(src, src, k, border, value, sum, sum), [&](const Plane<float>& from, Plane<float>& to) {
      return ippiFilterGaussian_32f_C1R_L(from.first(), from.step(), to.first(), to.step(), width, height, border,
                                          &value, made.spec.get(), made.buffer.get());
    });
  });
}

// Each call keeps to the rule of the call before it, and breaks those that follow.
TEST(GaussianBand, ChecksInOrder) {
  std::int64_t a = 0;
  std::int64_t b = 0;
  const auto specSize = ippiFilterGaussianGetSpecSize_L;
  EXPECT_EQ(specSize(2, 9, 2, nullptr, &b), ippStsNullPtrErr);
  EXPECT_EQ(specSize(2, 9, 2, &a, &b), ippStsBadArgErr);
  EXPECT_EQ(specSize(1, 13, 1, &a, &b), ippStsBadArgErr);
  EXPECT_EQ(specSize(3, 9, 2, &a, &b), ippStsDataTypeErr);
  EXPECT_EQ(specSize(3, 7, 2, &a, &b), ippStsChannelErr);
  const auto bufferSize = ippiFilterGaussianGetBufferSize_L;
  EXPECT_EQ(bufferSize(0, 0, 2, 9, 2, 2, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(bufferSize(1, 0, 2, 9, 2, 2, &a), ippStsSizeErr);
  EXPECT_EQ(bufferSize(1, 1, 2, 9, 2, 2, &a), ippStsBadArgErr);
  EXPECT_EQ(bufferSize(1, 1, 3, 9, 2, 2, &a), ippStsDataTypeErr);
  EXPECT_EQ(bufferSize(1, 1, 3, 1, 2, 2, &a), ippStsChannelErr);
  EXPECT_EQ(bufferSize(1, 1, 3, 1, 257, 1, &a), ippStsBorderErr);
  EXPECT_EQ(bufferSize(1, 1, 3, 1, 240, 1, &a), ippStsNoErr);
  EXPECT_EQ(bufferSize(INT64_MAX, 1, 3, 13, 1, 3, &a), ippStsSizeTooBigErr);
  EXPECT_EQ(bufferSize(std::int64_t{1} << 57, 1, 25, 13, 1, 1, &a), ippStsSizeTooBigErr);

  alignas(64) unsigned char spec[256] = {};
  const auto init = [&spec](std::int64_t width, int k, unsigned border, int type, int channels, float sigma) {
    return ippiFilterGaussianInit_L(width, 4, k, border, type, channels, spec, spec, sigma);
  };
  EXPECT_EQ(ippiFilterGaussianInit_L(0, 0, 2, 2, 9, 2, spec, nullptr, 0.0F), ippStsNullPtrErr);
  EXPECT_EQ(ippiFilterGaussianInit_L(0, 0, 2, 2, 9, 2, nullptr, spec, 0.0F), ippStsNullPtrErr);
  EXPECT_EQ(init(0, 2, 2, 9, 2, 0.0F), ippStsSizeErr);
  EXPECT_EQ(init(4, 2, 2, 9, 2, 0.0F), ippStsBadArgErr);
  EXPECT_EQ(init(4, 3, 2, 9, 2, 0.0F), ippStsDataTypeErr);
  EXPECT_EQ(init(4, 3, 2, 13, 2, 0.0F), ippStsChannelErr);
  EXPECT_EQ(init(4, 3, 2, 13, 1, 0.0F), ippStsBadArgErr);
  EXPECT_EQ(init(4, 3, 2, 13, 1, NAN), ippStsBadArgErr);
  EXPECT_EQ(init(4, 3, 2, 13, 1, 1.0F), ippStsBorderErr);

  const SpecAndBuffer made = makeBandSpec(4, 4, 3, 1.0F);
  Plane<float> image(4, 4, 1, 1);
  const float* const src = image.first();
  const float value = 1.0F;
  const auto run = [&](const float* from, std::int64_t step, std::int64_t width, std::int64_t height, unsigned border,
                       const float* constant, const unsigned char* with) {
    return ippiFilterGaussian_32f_C1R_L(from, step, image.first(), 400, width, height, border, constant, with,
                                        made.buffer.get());
  };
  EXPECT_EQ(run(nullptr, 15, 4, 0, 262, nullptr, spec), ippStsNullPtrErr);
  EXPECT_EQ(run(src, 15, 4, 0, 262, nullptr, spec), ippStsStepErr);
  EXPECT_EQ(run(src, 400, INT64_MAX, 0, 262, nullptr, spec), ippStsStepErr);
  EXPECT_EQ(run(src, 17, 4, 0, 262, nullptr, spec), ippStsSizeErr);
  EXPECT_EQ(run(src, 17, 4, 1, 262, nullptr, spec), ippStsNotEvenStepErr);
  EXPECT_EQ(run(src, 16, 4, 1, 262, nullptr, spec), ippStsBorderErr);
  EXPECT_EQ(run(src, 16, 4, 1, 6, nullptr, spec), ippStsNullPtrErr);
  EXPECT_EQ(run(src, 16, 4, 1, 2, nullptr, spec), ippStsBorderErr);
  EXPECT_EQ(run(src, 16, 4, 1, 6, &value, spec), ippStsBadArgErr);
}

// ---- Border in the specification

template <typename Sample>
struct Family;
template <>
struct Family<float> {
  static constexpr int type = ipp32f;
  static constexpr auto filter = ippiFilterGaussianBorder_32f_C1R;
};
template <>
struct Family<unsigned short> {
  static constexpr int type = ipp16u;
  static constexpr auto filter = ippiFilterGaussianBorder_16u_C1R;
};
template <>
struct Family<unsigned char> {
  static constexpr int type = ipp8u;
  static constexpr auto filter = ippiFilterGaussianBorder_8u_C1R;
};

SpecAndBuffer makeBorderSpec(int width, int height, int k, unsigned border, int type, float sigma) {
  int specSize = 0;
  int bufferSize = 0;
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({width, height}, static_cast<unsigned>(k), type, 1, &specSize, &bufferSize),
            ippStsNoErr);
  EXPECT_EQ(specSize, type == ipp32f ? 16 * k + 32 : 8 * k + 36);
  SpecAndBuffer made{FencedMemory(specSize, 12), FencedMemory(bufferSize, 40)};
  EXPECT_EQ(ippiFilterGaussianInit({width, height}, static_cast<unsigned>(k), border, type, 1, made.spec.get(),
                                   made.buffer.get(), sigma),
            ippStsNoErr);
  return made;
}

float limitAndRound(float v, float low, float high) { return std::nearbyint(std::min(std::max(v, low), high)); }

// The result by the rules of each sample type, sums of integers in integers.
Plane<float> expectedBorder(const Plane<float>& src, int k, float sigma, unsigned border, float value) {
  const std::vector<float> taps = borderTaps(k, sigma);
  const auto down = [&taps](const std::vector<float>& a) { return ascending(a, taps); };
  const auto across = [&taps, k](const std::vector<float>& a) {
    return k == 7 ? partnersFirst(a, taps) : ascending(a, taps);
  };
  return naive(src, src, k, border, value, across, down);
}
Plane<unsigned short> expectedBorder(const Plane<unsigned short>& src, int k, float sigma, unsigned border,
                                     unsigned short value) {
  const std::vector<float> taps = wholeTaps(k, sigma, 32768.0F);
  const auto pass = [&taps](const std::vector<float>& a) {
    return limitAndRound(ascending(a, taps) * (1.0F / 32768.0F), 0.0F, 65535.0F);
  };
  return naive(src, src, k, border, value, pass, pass);
}
Plane<unsigned char> expectedBorder(const Plane<unsigned char>& src, int k, float sigma, unsigned border,
                                    unsigned char value) {
  const std::vector<float> integers = wholeTaps(k, sigma, 4096.0F);
  std::vector<float> taps = integers;
  for (float& tap : taps) tap = tap * (1.0F / 4096.0F);
  const auto across = [&integers](const std::vector<float>& a) {
    int sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += static_cast<int>(a[i]) * static_cast<int>(integers[i]);
    return limitAndRound(static_cast<float>(sum) * (1.0F / 4096.0F), -32768.0F, 32767.0F);
  };
  const auto down = [&taps](const std::vector<float>& a) {
    return std::min(std::max(limitAndRound(ascending(a, taps), -32768.0F, 32767.0F), 0.0F), 255.0F);
  };
  return naive(src, src, k, border, value, across, down);
}

template <typename Sample>
class GaussianBorder : public testing::Test {};
using SampleTypes = testing::Types<float, unsigned short, unsigned char>;
TYPED_TEST_SUITE(GaussianBorder, SampleTypes, );  // the empty argument is for a warning of clang

TYPED_TEST(GaussianBorder, EqualsTheFormulaOnEveryRowOfBodies) {
  using Sample = TypeParam;
  forManyShapes([](int width, int height, int k, float sigma, unsigned border) {
    const SpecAndBuffer made = makeBorderSpec(width, height, k, border, Family<Sample>::type, sigma);
    const Plane<Sample> src(width, height, k / 2, static_cast<unsigned>(width));
    const auto value = static_cast<Sample>(77);
    const auto filter = [&](const Plane<Sample>& from, Plane<Sample>& to) {
      return Family<Sample>::filter(from.first(), from.step(), to.first(), to.step(), to.size(), value, made.spec.get(),
                                    made.buffer.get());
    };
    expectOnEachRow(src, expectedBorder(src, k, sigma, border, value), filter);
  });
}

TYPED_TEST(GaussianBorder, ChecksInOrder) {
  using Sample = TypeParam;
  int a = 0;
  int b = 0;
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({0, 0}, 2, 9, 2, &a, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({0, 1}, 2, 9, 2, &a, &b), ippStsSizeErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({1, 1}, 2, 9, 2, &a, &b), ippStsBadArgErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({1, 1}, 3, 9, 2, &a, &b), ippStsDataTypeErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({1, 1}, 3, 7, 2, &a, &b), ippStsChannelErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({INT32_MAX, INT32_MAX}, 0xFFFFFFFF, 1, 3, &a, &b), ippStsSizeTooBigErr);
  EXPECT_EQ(ippiFilterGaussianGetBufferSize({30000000, 30}, 25, 13, 1, &a, &b), ippStsSizeTooBigErr);

  alignas(64) unsigned char memory[512];
  const auto init = [&memory](int height, unsigned k, unsigned border, int type, int channels, float sigma) {
    return ippiFilterGaussianInit({4, height}, k, border, type, channels, memory, memory + 256, sigma);
  };
  EXPECT_EQ(ippiFilterGaussianInit({0, 0}, 2, 2, 9, 2, memory, nullptr, 0.0F), ippStsNullPtrErr);
  EXPECT_EQ(init(0, 2, 2, 9, 2, 0.0F), ippStsSizeErr);
  EXPECT_EQ(init(4, 2, 2, 9, 2, 0.0F), ippStsBadArgErr);
  EXPECT_EQ(init(4, 3, 2, 9, 2, 0.0F), ippStsDataTypeErr);
  EXPECT_EQ(init(4, 3, 2, 13, 2, 0.0F), ippStsChannelErr);
  EXPECT_EQ(init(4, 3, 2, 13, 1, -1.0F), ippStsBadArgErr);
  EXPECT_EQ(init(4, 3, 2, 13, 1, 1.0F), ippStsBorderErr);
  EXPECT_EQ(init(4, 0x80000001, 1, 13, 1, 1.0F), ippStsSizeTooBigErr);

  constexpr int type = Family<Sample>::type;
  const SpecAndBuffer made = makeBorderSpec(4, 4, 3, 1, type, 1.0F);
  std::int32_t head[5];
  std::memcpy(head, made.spec.get(), sizeof head);
  const std::vector<std::int32_t> expectedHead = {3, 20, type, 1, type == ipp32f ? 0 : type == ipp8u ? 12 : 15};
  EXPECT_EQ(std::vector<std::int32_t>(head, head + 5), expectedHead);
  Plane<Sample> image(4, 4, 1, 1);
  const auto run = [&](int step, int height, const unsigned char* spec) {
    return Family<Sample>::filter(image.first(), step, image.first(), image.step(), {4, height}, 0, spec,
                                  made.buffer.get());
  };
  const int rowBytes = 4 * static_cast<int>(sizeof(Sample));
  EXPECT_EQ(run(0, 0, nullptr), ippStsNullPtrErr);
  EXPECT_EQ(run(rowBytes - 1, 0, made.spec.get()), ippStsStepErr);
  EXPECT_EQ(run(rowBytes + 1, 0, made.spec.get()), ippStsSizeErr);
  EXPECT_EQ(run(rowBytes + 1, 1, made.spec.get()), sizeof(Sample) == 4 ? ippStsNotEvenStepErr : ippStsNoErr);
  EXPECT_EQ(run(rowBytes, 1, makeBorderSpec(4, 4, 3, 1, ipp16s, 1.0F).spec.get()), ippStsContextMatchErr);
  made.spec.get()[12] = 2;
  EXPECT_EQ(run(rowBytes, 1, made.spec.get()), ippStsBorderErr);
}

}  // namespace
