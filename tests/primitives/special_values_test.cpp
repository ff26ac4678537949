// Worked examples of the pointwise primitives, and what their results must not depend on.

#include <fenv.h>

#include <algorithm>
#include <array>
#include <optional>

#include "primitives/region.h"
#include "support/each_row_test.h"

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

class SpecialValues : public EachRow {
 protected:
  void SetUp() override {
    EachRow::SetUp();
    if (!IsSkipped()) forced.emplace(GetParam());
  }

 private:
  std::optional<ForcedRow> forced;
};

TEST_P(SpecialValues, SecondSourceMinusAndByFirst) {
  const float one = 1.0F, two = 2.0F, three = 3.0F, six = 6.0F;
  float result = 0.0F;
  ippiSub_32f_C1R(&one, 4, &three, 4, &result, 4, {1, 1});
  EXPECT_EQ(result, 2.0F);
  ippiDiv_32f_C1R(&two, 4, &six, 4, &result, 4, {1, 1});
  EXPECT_EQ(result, 3.0F);
}

TEST_P(SpecialValues, DivisionByZeroHasTheSignOfTheDividend) {
  const std::array<float, 6> divisors = {0.0F, -0.0F, 0.0F, -0.0F, 0.0F, 4.0F};
  std::array<float, 6> values = {1.0F, 1.0F, -1.0F, 0.0F, nan, 1.0F};
  EXPECT_EQ(ippiDiv_32f_C1R(divisors.data(), 24, values.data(), 24, values.data(), 24, {6, 1}), ippStsDivByZero);
  const std::array<float, 6> expected = {infinity, infinity, -infinity, nan, nan, 0.25F};
  for (std::size_t i = 0; i < 6; ++i) EXPECT_TRUE(sameBits(values[i], expected[i])) << i;
}

struct Example {
  float x, result;
  IppStatus status;
};

TEST_P(SpecialValues, Exponential) {
  const Example examples[] = {
      {nan, nan, ippStsNoErr},
      {infinity, infinity, ippStsNoErr},
      {-infinity, 0.0F, ippStsNoErr},
      {0.0F, 1.0F, ippStsNoErr},
      {1.0F, 2.7182817F, ippStsNoErr},
      {88.72283F, 3.4027985e38F, ippStsNoErr},
      {88.72284F, infinity, ippStsOverflow},
      {3e38F, infinity, ippStsOverflow},
      {-87.33654F, 1.17549973e-38F, ippStsUnderflow},
      {-87.336525F, 1.17551761e-38F, ippStsNoErr},
      {-100.0F, 3.7835059e-44F, ippStsUnderflow},
      {-103.97208F, 1e-45F, ippStsUnderflow},
      {-103.97209F, 0.0F, ippStsUnderflow},
      {-3e38F, 0.0F, ippStsUnderflow},
  };
  for (const Example& example : examples) {
    float x = example.x;
    EXPECT_EQ(ippiExp_32f_C1IR(&x, 4, {1, 1}), example.status) << example.x;
    EXPECT_TRUE(sameBits(x, example.result)) << example.x << " gave " << x;
  }
}

TEST_P(SpecialValues, Logarithm) {
  const Example examples[] = {
      {nan, nan, ippStsNoErr},
      {infinity, infinity, ippStsNoErr},
      {0.0F, -infinity, ippStsLnZeroArg},
      {-0.0F, -infinity, ippStsLnZeroArg},
      {-1.0F, nan, ippStsLnNegArg},
      {-infinity, nan, ippStsLnNegArg},
      {1.0F, 0.0F, ippStsNoErr},
      {1e-45F, -103.27893F, ippStsNoErr},
      {2.7182817F, 0.99999994F, ippStsNoErr},
  };
  for (const Example& example : examples) {
    float x = example.x;
    EXPECT_EQ(ippiLn_32f_C1IR(&x, 4, {1, 1}), example.status) << example.x;
    EXPECT_TRUE(sameBits(x, example.result)) << example.x << " gave " << x;
  }
}

// Double precision is exact enough to place the single result within the rounding of one unit in the last place.
TEST_P(SpecialValues, ExponentialAndLogarithmAreRoundedOnce) {
  for (std::uint32_t bits = 0; bits < 0x7F800000; bits += 40009) {
    std::array<float, 2> exponentials{};
    std::memcpy(exponentials.data(), &bits, 4);
    exponentials[1] = -exponentials[0];
    float ln = exponentials[0];
    const double x = double{ln};
    ippiExp_32f_C1IR(exponentials.data(), 8, {2, 1});
    ippiLn_32f_C1IR(&ln, 4, {1, 1});
    const auto expectRounded = [x](float rounded, double exact) {
      if (std::isinf(rounded) || rounded == 0.0F) return;  // see the examples
      const double unit = double{std::nextafter(std::fabs(rounded), infinity)} - std::fabs(double{rounded});
      ASSERT_LE(std::fabs(double{rounded} - exact), 0.5000001 * unit) << x;
    };
    expectRounded(exponentials[0], std::exp(x));
    expectRounded(exponentials[1], std::exp(-x));
    expectRounded(ln, std::log(x));
    if (HasFailure()) return;
  }
}

// Of several rows the exponential reports the last, the logarithm the first that has something to report.
TEST_P(SpecialValues, StatusOfSeveralRows) {
  float exponents[] = {200.0F, -200.0F, -200.0F, 1.0F};
  EXPECT_EQ(ippiExp_32f_C1IR(exponents, 8, {2, 1}), ippStsOverflow);
  float untilLast[] = {200.0F, -200.0F, -200.0F, 1.0F};
  EXPECT_EQ(ippiExp_32f_C1IR(untilLast, 8, {2, 2}), ippStsUnderflow);
  float calm[] = {200.0F, 1.0F};
  EXPECT_EQ(ippiExp_32f_C1IR(calm, 4, {1, 2}), ippStsNoErr);

  float arguments[] = {1.0F, 1.0F, -1.0F, 1.0F, 0.0F, 1.0F};
  EXPECT_EQ(ippiLn_32f_C1IR(arguments, 8, {2, 3}), ippStsLnNegArg);
  EXPECT_EQ(arguments[4], -infinity);
  float bothInOneRow[] = {-1.0F, 0.0F};
  EXPECT_EQ(ippiLn_32f_C1IR(bothInOneRow, 8, {2, 1}), ippStsLnZeroArg);
}

TEST_P(SpecialValues, SquareRoot) {
  const float arguments[] = {-0.0F, 0.0F, 2.0F, infinity, nan};
  float roots[5];
  EXPECT_EQ(ippiSqrt_32f_C1R(arguments, 20, roots, 20, {5, 1}), ippStsNoErr);
  const float expected[] = {-0.0F, 0.0F, 1.4142135F, infinity, nan};
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(sameBits(roots[i], expected[i])) << i;
  const float negative = -4.0F;
  EXPECT_EQ(ippiSqrt_32f_C1R(&negative, 4, roots, 4, {1, 1}), ippStsSqrtNegArg);
  EXPECT_TRUE(std::isnan(roots[0]));
}

TEST_P(SpecialValues, AbsoluteAndRootTakeStepsInWholeSamples) {
  const float src[] = {-1.0F, -4.0F};
  float dst[2] = {};
  EXPECT_EQ(ippiAbs_32f_C1R(src, 7, dst, 5, {1, 2}), ippStsNoErr);
  EXPECT_EQ(dst[1], 4.0F);
  EXPECT_EQ(ippiSqrt_32f_C1R(dst, 6, dst, 7, {1, 2}), ippStsNoErr);
  EXPECT_EQ(dst[1], 2.0F);
}

TEST_P(SpecialValues, ExtremesOfNothingButNan) {
  const float samples[] = {nan, nan, nan};
  float result = 0.0F;
  ippiMin_32f_C1R(samples, 12, {3, 1}, &result);
  EXPECT_EQ(result, std::numeric_limits<float>::max());
  ippiMax_32f_C1R(samples, 12, {3, 1}, &result);
  EXPECT_EQ(result, -std::numeric_limits<float>::max());
}

TEST_P(SpecialValues, ThresholdsPassWhatEqualsThem) {
  const float minusZero = -0.0F;
  float result = 1.0F;
  ippiThreshold_GT_32f_C1R(&minusZero, 4, &result, 4, {1, 1}, 0.0F);
  EXPECT_TRUE(sameBits(result, -0.0F));
  ippiThreshold_LT_32f_C1R(&minusZero, 4, &result, 4, {1, 1}, 0.0F);
  EXPECT_TRUE(sameBits(result, -0.0F));
  const float five = 5.0F;
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1R(&five, 4, &result, 4, {1, 1}, 5.0F, 1.0F, 5.0F, 9.0F), ippStsNoErr);
  EXPECT_EQ(result, 5.0F);
}

TEST_P(SpecialValues, Conversions) {
  const float samples[] = {-3.0F, 70000.0F, 1.9F, 0.5F, 1.5F, 2.5F, nan, infinity, -infinity, 254.9F};
  const int expected[][10] = {{0, 65535, 1, 0, 1, 2, 0, 65535, 0, 254},
                              {0, 65535, 2, 0, 2, 2, 0, 65535, 0, 255},
                              {0, 65535, 2, 1, 2, 3, 0, 65535, 0, 255}};
  for (int mode = 0; mode < 3; ++mode) {
    unsigned short words[10];
    unsigned char bytes[10];
    ippiConvert_32f16u_C1R(samples, 40, words, 20, {10, 1}, static_cast<IppRoundMode>(mode));
    ippiConvert_32f8u_C1R(samples, 40, bytes, 10, {10, 1}, static_cast<IppRoundMode>(mode));
    for (int i = 0; i < 10; ++i) {
      EXPECT_EQ(words[i], expected[mode][i]) << mode << ", " << samples[i];
      EXPECT_EQ(bytes[i], std::min(expected[mode][i], 255)) << mode << ", " << samples[i];
    }
  }
}

TEST_P(SpecialValues, ScalingToBytes) {
  const float samples[] = {0.5F, 1.5F, -1.0F, nan, 0.002F, infinity};
  unsigned char bytes[6];
  EXPECT_EQ(ippiScale_32f8u_C1R(samples, 24, bytes, 6, {6, 1}, 0.0F, 1.0F), ippStsNoErr);
  const int expected[] = {128, 255, 0, 0, 1, 255};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(bytes[i], expected[i]) << samples[i];
  // Rounding errors beyond the range of a byte are limited to it.
  const float huge[] = {1e8F, 1e8F + 8.0F};
  EXPECT_EQ(ippiScale_32f8u_C1R(huge, 8, bytes, 2, {2, 1}, 1e8F, 1e8F + 8.0F), ippStsNoErr);
}

TEST_P(SpecialValues, RoundingDoesNotDependOnTheCallersMode) {
  // Ties, and what scaling makes a tie of or not, depending on how it rounds.
  std::vector<float> samples(100);
  std::vector<float> fractions(100);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<float>(i) + 0.5F;
    fractions[i] = samples[i] / 255.0F;
  }
  const auto convertAll = [&] {
    std::vector<unsigned char> bytes(300);
    ippiConvert_32f8u_C1R(samples.data(), 400, bytes.data(), 100, {100, 1}, ippRndNear);
    ippiConvert_32f8u_C1R(samples.data(), 400, bytes.data() + 100, 100, {100, 1}, ippRndZero);
    ippiScale_32f8u_C1R(fractions.data(), 400, bytes.data() + 200, 100, {100, 1}, 0.0F, 1.0F);
    return bytes;
  };
  const std::vector<unsigned char> expected = convertAll();
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    fesetround(mode);
    const std::vector<unsigned char> actual = convertAll();
    const int modeAfterwards = fegetround();
    fesetround(FE_TONEAREST);
    EXPECT_EQ(actual, expected) << mode;
    EXPECT_EQ(modeAfterwards, mode);
  }
#if defined(__x86_64__)
  // A caller may set the vector unit's mode alone.
  _mm_setcsr(_mm_getcsr() | 0x6000);
  const std::vector<unsigned char> actual = convertAll();
  const unsigned modeAfterwards = _mm_getcsr() & 0x6000;
  _mm_setcsr(_mm_getcsr() & ~0x6000U);
  EXPECT_EQ(actual, expected);
  EXPECT_EQ(modeAfterwards, 0x6000U);
#endif
}

TEST_P(SpecialValues, MirrorGoesToAndFro) {
  const float src[] = {1.0F, 2.0F, 3.0F};
  float dst[12];
  ippiCopyMirrorBorder_32f_C1R(src, 12, {3, 1}, dst, 48, {12, 1}, 0, 5);
  const float expected[] = {2, 1, 2, 3, 2, 1, 2, 3, 2, 1, 2, 3};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(dst[i], expected[i]) << i;
}

TEST_P(SpecialValues, TranspositionOfThreeByTwo) {
  const float src[] = {1, 2, 3, 4, 5, 6};
  float dst[6];
  EXPECT_EQ(ippiTranspose_32f_C1R(src, 12, dst, 8, {3, 2}), ippStsNoErr);
  const float expected[] = {1, 4, 2, 5, 3, 6};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(dst[i], expected[i]) << i;
}

TEST_P(SpecialValues, SetBytes) {
  std::vector<unsigned char> bytes(40, 1);
  EXPECT_EQ(ippsSet_8u(200, bytes.data() + 1, 38), ippStsNoErr);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 200), 38);
  EXPECT_EQ(bytes.front() + bytes.back(), 2);
}

INSTANTIATE_TEST_SUITE_P(, SpecialValues, allRows(), rowName);

}  // namespace
