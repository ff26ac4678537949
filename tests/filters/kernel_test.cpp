#include "filters/kernel.h"

#include <type_traits>
#include <utility>
#include <vector>

#include "support/images.h"

namespace {

static_assert(!std::is_copy_constructible_v<Kernel> && !std::is_copy_assignable_v<Kernel>);

TEST(Kernel, TentHasThreeTapsAndGaps) {
  const Kernel tent(KERNEL_TYPE_TENT, 2, 7);
  EXPECT_EQ(tent.size, 5);
  EXPECT_EQ(tent.spread, 7);
  EXPECT_TRUE(tent.ownsTaps);
  EXPECT_EQ(std::vector<float>(tent.taps, tent.taps + 5), (std::vector<float>{0.25F, 0, 0.5F, 0, 0.25F}));
}

TEST(Kernel, AnyOtherTypeIsTheGaussian) {
  for (const int type : {1, 2, -1}) {
    const Kernel kernel(static_cast<KERNEL_TYPE>(type), 9, 3);
    double sum = 0.0;
    for (int d = -9; d <= 9; ++d) {
      EXPECT_NEAR(double{kernel.taps[d + 9]} / double{kernel.taps[9]}, std::exp(-d * d / 18.0), 2e-7) << d;
      sum += double{kernel.taps[d + 9]};
    }
    EXPECT_NEAR(sum, 1.0, 1e-6);
  }
  // Squares beyond 32 bits.
  const Kernel wide(KERNEL_TYPE_GAUSS, 50000, 50000);
  EXPECT_NEAR(double{wide.taps[0]} / double{wide.taps[50000]}, std::exp(-0.5), 1e-6);
}

TEST(Kernel, WrapsTheCallersTapsAndMoves) {
  float taps[3] = {1, 2, 3};
  Kernel wrapped(taps, 1);
  EXPECT_EQ(wrapped.size, 3);
  EXPECT_EQ(wrapped.spread, 0);
  EXPECT_FALSE(wrapped.ownsTaps);
  Kernel first(KERNEL_TYPE_TENT, 1, 0);
  float* const owned = first.taps;
  Kernel second(std::move(first));
  EXPECT_EQ(second.taps, owned);
  EXPECT_FALSE(first.ownsTaps);
  wrapped = std::move(second);
  EXPECT_EQ(wrapped.taps, owned);
  EXPECT_TRUE(wrapped.ownsTaps);
  EXPECT_FALSE(second.ownsTaps);
}

TEST(Kernel, RefusesARadiusWithoutASize) {
  for (const int radius : {-1, INT32_MIN, INT32_MAX}) {
    EXPECT_THROW(Kernel(KERNEL_TYPE_TENT, radius, 1), NO_MEMORY_ERROR);
    EXPECT_THROW(Kernel(nullptr, radius), NO_MEMORY_ERROR);
  }
}

// No symmetry, so that a reversed kernel shows.
float slopeTaps[5] = {0.5F, -0.25F, 0.125F, 1.0F, 0.3F};

float tapsAlong(const KivImage& image, int plane, int x, int y, int dx, int dy) {
  float sum = *image.At(plane, x - 2 * dx, y - 2 * dy) * slopeTaps[0];
  for (int i = 1; i < 5; ++i) sum = sum + *image.At(plane, x + (i - 2) * dx, y + (i - 2) * dy) * slopeTaps[i];
  return sum;
}

TEST(KernelFilter, PassesAlongRowsAndColumnsReadTheMargin) {
  const Kernel kernel(slopeTaps, 2);
  const KivImage parent = randomImage(27, 21, 2, 3);
  const KivImage src = parent.Sub_Section(2);
  KivImage rows;
  KivImage columns;
  KivImage both;
  rows.Filter(src, kernel, 1);
  columns.Filter(src, kernel, 2);
  both.Filter(src, kernel, 0);
  KivImage expectedRows(parent.size, 2);
  KivImage expectedColumns(src.size, 2);
  KivImage expectedBoth(src.size, 2);
  for (int plane = 0; plane < 2; ++plane) {
    for (int y = 0; y < 21; ++y) {
      for (int x = 2; x < 25; ++x) *expectedRows.At(plane, x, y) = tapsAlong(parent, plane, x, y, 1, 0);
    }
    for (int y = 0; y < 17; ++y) {
      for (int x = 0; x < 23; ++x) {
        *expectedColumns.At(plane, x, y) = tapsAlong(src, plane, x, y, 0, 1);
        *expectedBoth.At(plane, x, y) = tapsAlong(expectedRows, plane, x + 2, y + 2, 0, 1);
      }
    }
  }
  EXPECT_TRUE(sameBits(rows, expectedRows.Sub_Section(2)));
  EXPECT_TRUE(sameBits(columns, expectedColumns));
  EXPECT_TRUE(sameBits(both, expectedBoth));

  both.Filter(parent.Sub_Section(3), kernel, 3);
  EXPECT_TRUE(sameBits(both, expectedBoth)) << "a value that names no pass changes nothing";
}

TEST(KernelFilter, PaddingRepeatsTheEdge) {
  const Kernel kernel(slopeTaps, 2);
  const KivImage src = randomImage(9, 7, 3, 4);
  KivImage parent(13, 11, 3);
  parent.Pad(src, 2);
  KivImage expected;
  expected.Filter(parent.Sub_Section(2), kernel, 0);
  KivImage target;
  target.Filter_With_Pad(src, kernel);
  EXPECT_TRUE(sameBits(target, expected));
  target = src;
  target.Filter_With_Pad(target, kernel);
  EXPECT_TRUE(sameBits(target, expected));

  KivImage smaller = randomImage(6, 7, 3, 5);
  smaller.Filter_With_Pad(src, kernel);
  EXPECT_TRUE(sameBits(smaller, randomImage(6, 7, 3, 5))) << "a source that doesn't fit changes nothing";
}

}  // namespace
