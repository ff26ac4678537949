// Every primitive of the family against its naive formula, on every row of bodies, bit for bit.

#include "primitives/primitive_cases.h"
#include "primitives/region.h"
#include "support/each_row_test.h"

namespace {

// Widths beyond two registers of the widest row, and a few past the size of a tile.
std::vector<IppiSize> sizes() {
  std::vector<IppiSize> all;
  for (int width = 1; width <= 35; ++width) all.push_back({width, 1 + width % 5});
  all.insert(all.end(), {{64, 3}, {70, 37}, {3, 70}, {131, 33}});
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
    for (unsigned seed = 0; seed < 6; ++seed) {
      const unsigned mixed = seed * 35 + static_cast<unsigned>(size.width);
      const std::vector<float> expected = GetParam().naive(size, mixed);
      PrimitiveOutput baseline;
      for (int row = 0; row < rowCount; ++row) {
        if (!ForcedRow::machineHas(row)) continue;
        SCOPED_TRACE(ForcedRow::nameOf(row));
        const ForcedRow forced(row);
        const PrimitiveOutput actual = GetParam().run(size, mixed);
        if (row == 0) {
          baseline = actual;
          expectSamples(actual.samples, expected, GetParam().tolerance, size);
        } else {
          expectSamples(actual.samples, baseline.samples, 0, size);
          EXPECT_EQ(actual.status, baseline.status);
        }
        EXPECT_GE(actual.status, 0);
        if (HasFailure()) return;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, Primitive, testing::ValuesIn(primitiveCases()),
                         [](const auto& test) { return test.param.name; });

class Rows : public EachRow {};

TEST_P(Rows, AreTestedHere) { const ForcedRow forced(GetParam()); }

INSTANTIATE_TEST_SUITE_P(, Rows, allRows(), rowName);

}  // namespace
