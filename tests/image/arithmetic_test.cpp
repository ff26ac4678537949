#include <cmath>
#include <functional>
#include <type_traits>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// check(operator, the same in place): of floats a + b is their sum, of images what assignment does later.
template <typename Check>
void eachOperator(Check check) {
  check(std::plus<>(), [](KivImage& a, const auto& b) { a += b; });
  check(std::minus<>(), [](KivImage& a, const auto& b) { a -= b; });
  check(std::multiplies<>(), [](KivImage& a, const auto& b) { a *= b; });
  check(std::divides<>(), [](KivImage& a, const auto& b) { a /= b; });
}

TEST(Operators, OfTwoImages) {
  const KivImage a = randomImage(19, 7, 3, 1);
  const KivImage b = randomImage(19, 7, 3, 2);
  eachOperator([&](auto op, auto) {
    const KivImage expected = combined(a, b, op);
    expectInEveryTarget(a, b, expected, [op](KivImage& target, const KivImage& first, const KivImage& second) {
      target = op(first, second);
    });
    KivImage smaller(5, 3, 3);
    const KIV_Generic_Params noted = op(a, b);
    smaller = noted;
    EXPECT_TRUE(sameBits(smaller, expected.ROI(0, 0, 5, 3)));
  });
}

TEST(Operators, OfAnImageAndAConstant) {
  const KivImage a = randomImage(18, 5, 2, 1);
  eachOperator([&](auto op, auto assign) {
    // Division by a constant is a multiplication by its rounded reciprocal.
    constexpr bool divides = std::is_same_v<decltype(op), std::divides<>>;
    const KivImage expected = mapped(a, [op](float v) { return divides ? v * (1.0F / 0.3F) : op(v, 0.3F); });
    KivImage result;
    result = op(a, 0.3F);
    EXPECT_TRUE(sameBits(result, expected));
    assign(result = a, 0.3F);
    EXPECT_TRUE(sameBits(result, expected));
  });
  KivImage negated;
  negated = -a;
  EXPECT_TRUE(sameBits(negated, mapped(a, std::negate<>())));
}

// As many planes as the operand has; but a single plane multiplies all.
TEST(Operators, PairPlanesInPlace) {
  const KivImage before = randomImage(6, 4, 3, 1);
  eachOperator([&](auto op, auto assign) {
    for (const int planes : {1, 2, 3}) {
      const KivImage b = randomImage(6, 4, planes, 2);
      const bool isMask = planes == 1 && std::is_same_v<decltype(op), std::multiplies<>>;
      const KivImage expected = imageOf(before.size, 3, [&](int p, int x, int y) {
        const float v = *before.At(p, x, y);
        return p < planes || isMask ? op(v, *b.At(isMask ? 0 : p, x, y)) : v;
      });
      KivImage image = copyOf(before);
      assign(image, b);
      EXPECT_TRUE(sameBits(image, expected)) << planes;
    }
  });
}

TEST(Operators, AMaskMayBeAnyPlaneOfItsTarget) {
  for (int plane = 0; plane < 3; ++plane) {
    KivImage x = randomImage(6, 4, 3, 1);
    const KivImage expected = combined(x, x.Plane(plane), std::multiplies<>());
    x *= x.Plane(plane);
    EXPECT_TRUE(sameBits(x, expected)) << plane;
  }
}

TEST(Assignment, CopiesOverTheTargetsSizeAndThroughViews) {
  KivImage parent = randomImage(12, 9, 2, 1);
  const KivImage source = randomImage(20, 20, 2, 2);
  KivImage view = parent.ROI(3, 4, 6, 2);
  view = source;
  EXPECT_TRUE(sameBits(parent.ROI(3, 4, 6, 2), source.ROI(0, 0, 6, 2)));
  EXPECT_TRUE(sameBits(parent.ROI(0, 0, 12, 4), randomImage(12, 9, 2, 1).ROI(0, 0, 12, 4)));
  parent = *&parent;
  EXPECT_EQ(parent.channels, 2);
  KivImage empty;
  empty = *&empty;
  empty.ApplyGammaCurve(1.0F);
  empty.Sigmoidal_Contrast(0.5F);
  EXPECT_EQ(empty.channels, 0);
}

TEST(PointwiseFunctions, MatchTheFormulaInEveryTarget) {
  const auto expectFormula = [](float lowest, auto run, float (*formula)(float)) {
    KivImage src(33, 3, 2);
    fillRandom(src, 5, lowest, 3.0F);
    KivImage result;
    run(result, src);
    EXPECT_TRUE(within(2e-6, result, mapped(src, formula)));
    expectInEveryTarget(src, result, run);
  };
  expectFormula(
      0.1F, [](KivImage& t, const auto&... s) { t.Sqrt(s...); }, std::sqrt);
  expectFormula(
      0.1F, [](KivImage& t, const auto&... s) { t.Log(s...); }, std::log);
  expectFormula(
      -3.0F, [](KivImage& t, const auto&... s) { t.Abs(s...); }, std::abs);
  expectFormula(
      -3.0F, [](KivImage& t, const KivImage& s) { (t = s).Exp(); }, std::exp);
}

TEST(Reductions, LookAtPlane0Alone) {
  KivImage image = randomImage(37, 5, 3, 1);
  *image.At(0, 36, 4) = -9.0F;
  *image.At(0, 0, 0) = 9.0F;
  *image.At(1, 3, 3) = 50.0F;
  *image.At(2, 3, 3) = -50.0F;
  EXPECT_EQ(image.Min(), -9.0F);
  EXPECT_EQ(image.Max(), 9.0F);
}

}  // namespace
