#include "filters/kernel.h"

#include <tuple>
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
  Kernel first(KERNEL_TYPE_TENT, 2, 7);
  float* const owned = first.taps;
  Kernel second(std::move(first));
  EXPECT_EQ(second.taps, owned);
  EXPECT_FALSE(first.ownsTaps);
  wrapped = std::move(second);
  EXPECT_EQ(std::tie(wrapped.taps, wrapped.radius, wrapped.size, wrapped.spread, wrapped.ownsTaps),
            std::make_tuple(owned, 2, 5, 7, true));
  EXPECT_EQ(std::tie(second.taps, second.ownsTaps), std::make_tuple(nullptr, false));
}

TEST(Kernel, RefusesARadiusWithoutASize) {
  for (const int radius : {-1, INT32_MIN, INT32_MAX}) {
    EXPECT_THROW(Kernel(KERNEL_TYPE_TENT, radius, 1), NO_MEMORY_ERROR);
    EXPECT_THROW(Kernel(nullptr, radius), NO_MEMORY_ERROR);
  }
}

// No symmetry, so that a reversed kernel shows.
float slopeTaps[5] = {0.5F, -0.25F, 0.125F, 1.0F, 0.3F};

// The sum over taps of at(tap - 2).
template <typename At>
float tapsOver(At at) {
  float sum = at(-2) * slopeTaps[0];
  for (int i = 1; i < 5; ++i) sum = sum + at(i - 2) * slopeTaps[i];
  return sum;
}

TEST(KernelFilter, PassesAlongRowsAndColumnsReadTheMargin) {
  const Kernel kernel(slopeTaps, 2);
  const KivImage parent = randomImage(27, 21, 2, 3);
  const KivImage src = parent.Sub_Section(2);
  const auto alongRow = [&](int p, int x, int y) { return tapsOver([&](int i) { return *src.At(p, x + i, y); }); };
  const auto alongColumn = [&](int p, int x, int y) { return tapsOver([&](int i) { return *src.At(p, x, y + i); }); };
  const auto alongBoth = [&](int p, int x, int y) { return tapsOver([&](int i) { return alongRow(p, x, y + i); }); };
  KivImage result = made(&KivImage::Filter, src, kernel, 1);
  EXPECT_TRUE(sameBits(result, imageOf(src.size, 2, alongRow)));
  result.Filter(src, kernel, 2);
  EXPECT_TRUE(sameBits(result, imageOf(src.size, 2, alongColumn)));
  result.Filter(src, kernel, 0);
  EXPECT_TRUE(sameBits(result, imageOf(src.size, 2, alongBoth)));
  result.Filter(parent.Sub_Section(3), kernel, 3);
  EXPECT_TRUE(sameBits(result, imageOf(src.size, 2, alongBoth))) << "a value that names no pass changes nothing";
}

TEST(KernelFilter, PaddingRepeatsTheEdge) {
  const Kernel kernel(slopeTaps, 2);
  const KivImage src = randomImage(9, 7, 3, 4);
  KivImage parent(13, 11, 3);
  parent.Pad(src, 2);
  KivImage expected = made(&KivImage::Filter, parent.Sub_Section(2), kernel, 0);
  KivImage target;
  target.Filter_With_Pad(src, kernel);
  EXPECT_TRUE(sameBits(target, expected));
  target = src;
  target.Filter_With_Pad(target, kernel);
  EXPECT_TRUE(sameBits(target, expected)) << "in place";

  KivImage smaller = randomImage(6, 7, 3, 5);
  smaller.Filter_With_Pad(src, kernel);
  EXPECT_TRUE(sameBits(smaller, randomImage(6, 7, 3, 5))) << "a source that doesn't fit changes nothing";
}

}  // namespace
