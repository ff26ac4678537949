// Statuses that follow from samples, worked examples of the exponential and the logarithm, and what results must not
// depend on.

#include <fenv.h>

#include <algorithm>
#include <vector>

#include "support/each_row_test.h"
#include "support/images.h"

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace {

class SpecialValues : public EachRow {};

struct Example {
  float x, result;
  IppStatus status = ippStsNoErr;
};
const Example expExamples[] = {{NAN, NAN},
                               {INFINITY, INFINITY},
                               {-INFINITY, 0.0F},
                               {1.0F, 2.7182817F},
                               {88.72283F, 3.4027985e38F},
                               {88.72284F, INFINITY, ippStsOverflow},
                               {3e38F, INFINITY, ippStsOverflow},
                               {-87.336525F, 1.17551761e-38F},
                               {-87.33654F, 1.17549973e-38F, ippStsUnderflow},
                               {-103.97208F, 1e-45F, ippStsUnderflow},
                               {-103.97209F, 0.0F, ippStsUnderflow},
                               {-3e38F, 0.0F, ippStsUnderflow}};
const Example lnExamples[] = {{NAN, NAN},
                              {INFINITY, INFINITY},
                              {0.0F, -INFINITY, ippStsLnZeroArg},
                              {-0.0F, -INFINITY, ippStsLnZeroArg},
                              {-1.0F, NAN, ippStsLnNegArg},
                              {-INFINITY, NAN, ippStsLnNegArg},
                              {1e-45F, -103.27893F},
                              {2.7182817F, 0.99999994F}};

TEST_P(SpecialValues, ExponentialAndLogarithm) {
  const auto expectExamples = [](const auto& examples, auto function) {
    for (const Example& example : examples) {
      float x = example.x;
      EXPECT_EQ(function(&x, 4, {1, 1}), example.status) << example.x;
      EXPECT_TRUE(sameBits(x, example.result)) << example.x << " gave " << x;
    }
  };
  expectExamples(expExamples, ippiExp_32f_C1IR);
  expectExamples(lnExamples, ippiLn_32f_C1IR);
}

// Double precision is exact enough to place the single result within the rounding of one unit in the last place.
TEST_P(SpecialValues, ExponentialAndLogarithmAreRoundedOnce) {
  const auto expectRounded = [](double x, float rounded, double exact) {
    if (std::isinf(rounded) || rounded == 0.0F) return;  // see the examples
    const double unit = double{std::nextafter(std::fabs(rounded), INFINITY)} - std::fabs(double{rounded});
    ASSERT_LE(std::fabs(double{rounded} - exact), 0.5000001 * unit) << x;
  };
  for (std::uint32_t bits = 0; bits < 0x7F800000 && !HasFailure(); bits += 40009) {
    float x = 0.0F;
    std::memcpy(&x, &bits, 4);
    float exponentials[] = {x, -x};
    float logarithm = x;
    ippiExp_32f_C1IR(exponentials, 8, {2, 1});
    ippiLn_32f_C1IR(&logarithm, 4, {1, 1});
    expectRounded(double{x}, exponentials[0], std::exp(double{x}));
    expectRounded(double{-x}, exponentials[1], std::exp(double{-x}));
    expectRounded(double{x}, logarithm, std::log(double{x}));
  }
}

// Of several rows the exponential reports the last, the logarithm the first that has something to report.
TEST_P(SpecialValues, StatusOfSeveralRows) {
  float exponents[] = {200.0F, -200.0F, -200.0F, 1.0F, 1.0F, 1.0F};
  EXPECT_EQ(ippiExp_32f_C1IR(std::vector(exponents, exponents + 2).data(), 8, {2, 1}), ippStsOverflow);
  EXPECT_EQ(ippiExp_32f_C1IR(std::vector(exponents, exponents + 4).data(), 8, {2, 2}), ippStsUnderflow);
  EXPECT_EQ(ippiExp_32f_C1IR(exponents, 8, {2, 3}), ippStsNoErr);

  float arguments[] = {1.0F, 1.0F, -1.0F, 1.0F, 0.0F, 1.0F};
  EXPECT_EQ(ippiLn_32f_C1IR(arguments, 8, {2, 3}), ippStsLnNegArg);
  EXPECT_EQ(arguments[4], -INFINITY);
  float bothInOneRow[] = {-1.0F, 0.0F};
  EXPECT_EQ(ippiLn_32f_C1IR(bothInOneRow, 8, {2, 1}), ippStsLnZeroArg);
}

TEST_P(SpecialValues, WarningsOfDivisionsAndRoots) {
  const float divisors[] = {4.0F, -0.0F};
  float dividends[] = {1.0F, 1.0F};
  EXPECT_EQ(ippiDiv_32f_C1R(divisors, 8, dividends, 8, dividends, 8, {1, 1}), ippStsNoErr);
  EXPECT_EQ(ippiDiv_32f_C1R(divisors, 8, dividends, 8, dividends, 8, {2, 1}), ippStsDivByZero);
  const float arguments[] = {-0.0F, -4.0F};
  float roots[2];
  EXPECT_EQ(ippiSqrt_32f_C1R(arguments, 8, roots, 8, {1, 1}), ippStsNoErr);
  EXPECT_EQ(ippiSqrt_32f_C1R(arguments, 8, roots, 8, {2, 1}), ippStsSqrtNegArg);
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
  const float samples[] = {NAN, NAN, NAN};
  float result = 0.0F;
  ippiMin_32f_C1R(samples, 12, {3, 1}, &result);
  EXPECT_EQ(result, std::numeric_limits<float>::max());
  ippiMax_32f_C1R(samples, 12, {3, 1}, &result);
  EXPECT_EQ(result, -std::numeric_limits<float>::max());
}

TEST_P(SpecialValues, RoundingDoesNotDependOnTheCallersMode) {
#if defined(__x86_64__)
  // That of the vector unit, which a caller may set alone.
  const auto mode = [] { return _mm_getcsr() & 0x6000; };
  const auto setMode = [](unsigned bits) { _mm_setcsr((_mm_getcsr() & ~0x6000U) | bits); };
  constexpr unsigned nearest = 0;
  constexpr unsigned others[] = {0x2000, 0x4000, 0x6000};
#else
  const auto mode = fegetround;
  const auto setMode = fesetround;
  constexpr int nearest = FE_TONEAREST;
  constexpr int others[] = {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
#endif
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
  for (const auto other : others) {
    setMode(other);
    const std::vector<unsigned char> actual = convertAll();
    const auto afterwards = mode();
    setMode(nearest);
    EXPECT_EQ(actual, expected) << other;
    EXPECT_EQ(afterwards, other);
  }
}

TEST_P(SpecialValues, SetBytes) {
  std::vector<unsigned char> bytes(40, 1);
  EXPECT_EQ(ippsSet_8u(200, bytes.data() + 1, 38), ippStsNoErr);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 200), 38);
  EXPECT_EQ(bytes.front() + bytes.back(), 2);
}

INSTANTIATE_TEST_SUITE_P(, SpecialValues, allRows(), rowName);

}  // namespace
