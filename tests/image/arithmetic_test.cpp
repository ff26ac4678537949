#include <cmath>
#include <functional>

#include "image/kiv_image.h"
#include "support/images.h"

namespace {

using Binary = std::function<float(float, float)>;

// Applies op sample by sample to plane i of a and plane i of b, or plane 0 of a mask.
KivImage naive(const KivImage& a, const KivImage& b, const Binary& op) {
  KivImage result(a.size, a.channels);
  for (int p = 0; p < a.channels; ++p) {
    for (int y = 0; y < a.size.height; ++y) {
      for (int x = 0; x < a.size.width; ++x) {
        *result.At(p, x, y) = op(*a.At(p, x, y), *b.At(b.channels > 1 ? p : 0, x, y));
      }
    }
  }
  return result;
}

struct ImageOp {
  const char* name;
  KIV_Generic_Params (*deferred)(const KivImage&, const KivImage&);
  KivImage& (*compound)(KivImage&, const KivImage&);
  float (*sample)(float, float);
};

class ImageOperators : public testing::TestWithParam<ImageOp> {};

TEST_P(ImageOperators, MatchTheFormulaInEveryTarget) {
  const ImageOp& op = GetParam();
  const KivImage a = randomImage(19, 7, 3, 1);
  const KivImage b = randomImage(19, 7, 3, 2);
  const KivImage expected = naive(a, b, op.sample);

  KivImage fresh;
  fresh = op.deferred(a, b);
  EXPECT_TRUE(sameBits(fresh, expected));

  KivImage inPlace;
  inPlace = a;
  inPlace = op.deferred(inPlace, b);
  EXPECT_TRUE(sameBits(inPlace, expected));

  KivImage compound;
  compound = a;
  op.compound(compound, b);
  EXPECT_TRUE(sameBits(compound, expected));

  // A smaller target, itself a view: the upper left part of the operands, and nothing beside the view.
  KivImage parent = randomImage(19, 7, 3, 3);
  KivImage view = parent.ROI(4, 2, 5, 3);
  view = op.deferred(a, b);
  EXPECT_TRUE(sameBits(view, expected.ROI(0, 0, 5, 3)));
  EXPECT_TRUE(sameBits(parent.ROI(0, 0, 4, 7), randomImage(19, 7, 3, 3).ROI(0, 0, 4, 7)));
  EXPECT_TRUE(sameBits(parent.ROI(9, 0, 10, 7), randomImage(19, 7, 3, 3).ROI(9, 0, 10, 7)));
}

INSTANTIATE_TEST_SUITE_P(All, ImageOperators,
                         testing::Values(ImageOp{"add", [](const KivImage& a, const KivImage& b) { return a + b; },
                                                 [](KivImage& a, const KivImage& b) -> KivImage& { return a += b; },
                                                 [](float a, float b) { return a + b; }},
                                         ImageOp{"subtract", [](const KivImage& a, const KivImage& b) { return a - b; },
                                                 [](KivImage& a, const KivImage& b) -> KivImage& { return a -= b; },
                                                 [](float a, float b) { return a - b; }},
                                         ImageOp{"multiply", [](const KivImage& a, const KivImage& b) { return a * b; },
                                                 [](KivImage& a, const KivImage& b) -> KivImage& { return a *= b; },
                                                 [](float a, float b) { return a * b; }},
                                         ImageOp{"divide", [](const KivImage& a, const KivImage& b) { return a / b; },
                                                 [](KivImage& a, const KivImage& b) -> KivImage& { return a /= b; },
                                                 [](float a, float b) { return a / b; }}),
                         [](const auto& tested) { return tested.param.name; });

struct ConstantOp {
  const char* name;
  KIV_Generic_Params (*deferred)(const KivImage&, float);
  KivImage& (*compound)(KivImage&, float);
  float (*sample)(float, float);
};

class ConstantOperators : public testing::TestWithParam<ConstantOp> {};

TEST_P(ConstantOperators, MatchTheFormula) {
  const ConstantOp& op = GetParam();
  const KivImage a = randomImage(18, 5, 2, 1);
  KivImage constant(18, 5, 1);
  fill(constant, 0.3F);
  const KivImage expected = naive(a, constant, op.sample);
  KivImage deferred;
  deferred = op.deferred(a, 0.3F);
  EXPECT_TRUE(sameBits(deferred, expected));
  KivImage compound;
  compound = a;
  op.compound(compound, 0.3F);
  EXPECT_TRUE(sameBits(compound, expected));
}

INSTANTIATE_TEST_SUITE_P(All, ConstantOperators,
                         testing::Values(ConstantOp{"add", [](const KivImage& a, float v) { return a + v; },
                                                    [](KivImage& a, float v) -> KivImage& { return a += v; },
                                                    [](float a, float v) { return a + v; }},
                                         ConstantOp{"subtract", [](const KivImage& a, float v) { return a - v; },
                                                    [](KivImage& a, float v) -> KivImage& { return a -= v; },
                                                    [](float a, float v) { return a - v; }},
                                         ConstantOp{"multiply", [](const KivImage& a, float v) { return a * v; },
                                                    [](KivImage& a, float v) -> KivImage& { return a *= v; },
                                                    [](float a, float v) { return a * v; }},
                                         // Division by a constant is a multiplication by its rounded reciprocal.
                                         ConstantOp{"divide", [](const KivImage& a, float v) { return a / v; },
                                                    [](KivImage& a, float v) -> KivImage& { return a /= v; },
                                                    [](float a, float v) { return a * (1.0F / v); }}),
                         [](const auto& tested) { return tested.param.name; });

TEST(Operators, NegationMultipliesByMinusOne) {
  const KivImage a = randomImage(5, 5, 1, 1);
  KivImage b;
  b = -a;
  EXPECT_TRUE(sameBits(b, naive(a, a, [](float v, float) { return -v; })));
}

TEST(Operators, OnlyMultiplicationBroadcastsAMask) {
  KivImage x = randomImage(6, 4, 3, 1);
  const KivImage mask = randomImage(6, 4, 1, 2);
  const KivImage expected = naive(x, mask, [](float a, float b) { return a * b; });
  x *= mask;
  EXPECT_TRUE(sameBits(x, expected));

  KivImage sum;
  sum = expected;
  sum += mask;
  EXPECT_TRUE(sameBits(sum.Plane(0), naive(expected.Plane(0), mask, [](float a, float b) { return a + b; })));
  EXPECT_TRUE(sameBits(sum.Plane(2), expected.Plane(2)));
}

// Two planes are no mask: they pair with the first two planes of the target.
TEST(Operators, PairAsManyPlanesAsTheOperandHas) {
  const KivImage before = randomImage(6, 4, 3, 1);
  const KivImage b = randomImage(6, 4, 2, 2);
  const auto check = [&](const auto& apply, const Binary& sample) {
    KivImage x;
    x = before;
    apply(x);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(sameBits(x.Plane(i), naive(before.Plane(i), b.Plane(i), sample)));
    EXPECT_TRUE(sameBits(x.Plane(2), before.Plane(2)));
  };
  check([&](KivImage& x) { x *= b; }, std::multiplies<float>());
  check([&](KivImage& x) { x /= b; }, std::divides<float>());
  check([&](KivImage& x) { x += b; }, std::plus<float>());
  check([&](KivImage& x) { x -= b; }, std::minus<float>());
}

TEST(Operators, AMaskMayBeAnyPlaneOfItsTarget) {
  for (int plane = 0; plane < 3; ++plane) {
    KivImage x = randomImage(6, 4, 3, 1);
    KivImage mask;
    mask = x.Plane(plane);
    const KivImage expected = naive(x, mask, [](float a, float b) { return a * b; });
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

  KivImage fresh;
  fresh = KivImage(4, 4, 1) + 0.0F;
  EXPECT_EQ(fresh.size.width, 4);
}

TEST(PointwiseFunctions, TargetAndInPlaceFormsAgree) {
  KivImage a(33, 3, 2);
  fillRandom(a, 5, 0.1F, 3.0F);
  const auto check = [&](auto inPlace, auto toTarget, float (*sample)(float)) {
    KivImage x;
    x = a;
    inPlace(x);
    KivImage y;
    toTarget(y);
    EXPECT_TRUE(sameBits(x, y));
    EXPECT_TRUE(within(1e-6, x, naive(a, a, [sample](float v, float) { return sample(v); })));
  };
  check([](KivImage& x) { x.Sqrt(); }, [&](KivImage& y) { y.Sqrt(a); }, [](float v) { return std::sqrt(v); });
  check([](KivImage& x) { x.Log(); }, [&](KivImage& y) { y.Log(a); }, [](float v) { return std::log(v); });
  KivImage b;
  b = a - 1.5F;
  KivImage c;
  c.Abs(b);
  b.Abs();
  EXPECT_TRUE(sameBits(b, c));
  KivImage e;
  e.Log(a);
  e.Exp();
  EXPECT_TRUE(within(1e-6, e, a));
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
