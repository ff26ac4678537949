#include <algorithm>
#include <utility>
#include <vector>

#include "image/kiv_image.h"
#include "image/scratch.h"
#include "support/images.h"

namespace {

TEST(Resize, WritesTheTopLeftCornerOfAShapedTarget) {
  const KivImage source = randomImage(10, 10, 1, 1);
  KivImage target = randomImage(100, 100, 1, 2);
  target.Resize(source, 5, 5);
  KivImage alone;
  alone.Resize(source, IppiSize{5, 5});
  EXPECT_EQ(alone.size.width, 5);
  EXPECT_TRUE(sameBits(target.ROI(0, 0, 5, 5), alone));
  const KivImage before = randomImage(100, 100, 1, 2);
  EXPECT_TRUE(sameBits(target.ROI(5, 0, 95, 100), before.ROI(5, 0, 95, 100)));
  EXPECT_TRUE(sameBits(target.ROI(0, 5, 100, 95), before.ROI(0, 5, 100, 95)));
  // Halving an even size is the mean of 2 x 2 samples.
  EXPECT_NEAR(*alone.At(0, 2, 3),
              (*source.At(0, 4, 6) + *source.At(0, 5, 6) + *source.At(0, 4, 7) + *source.At(0, 5, 7)) / 4, 1e-6);
}

// However many bands of rows it works in, the plane is that of one call.
TEST(Resize, WorksInBandsThatDontShow) {
  const IppiSize source = {37, 90};
  const KivImage src = randomImage(source.width, source.height, 1, 9);
  for (const int height : {63, 64, 65, 128, 179, 180, 181, 300}) {
    const IppiSize target = {41, height};
    int specSize = 0;
    int bufferSize = 0;
    ippiResizeGetSize_32f(source, target, ippLinear, 0, &specSize, &bufferSize);
    const Scratch spec = makeScratch(specSize);
    ippiResizeLinearInit_32f(source, target, spec.get());
    ippiResizeGetBufferSize_8u(spec.get(), target, 1, &bufferSize);
    const Scratch buffer = makeScratch(bufferSize);
    KivImage expected(target, 1);
    ippiResizeLinear_32f_C1R(src.planes[0], src.stride, expected.planes[0], expected.stride, {0, 0}, target,
                             ippBorderRepl, nullptr, spec.get(), buffer.get());
    KivImage actual;
    actual.Resize(src, target);
    EXPECT_TRUE(sameBits(actual, expected));
  }
}

TEST(Resize, ServesAllPlanesAndKeepsTheTargetWhenASourceIsOneSampleWide) {
  const KivImage source = randomImage(31, 17, 3, 1);
  KivImage same;
  same.Resize(source, 31, 17);
  EXPECT_TRUE(sameBits(same, source));

  KivImage target = randomImage(8, 8, 1, 3);
  for (const IppiSize size : {IppiSize{1, 9}, IppiSize{9, 1}, IppiSize{1, 1}}) {
    target.Resize(randomImage(size.width, size.height, 1, 1), 8, 8);
    EXPECT_TRUE(sameBits(target, randomImage(8, 8, 1, 3)));
  }
}

TEST(Resize, WritesAsManyPlanesAsTheSourceHas) {
  const KivImage parent = randomImage(10, 10, 3, 1);
  KivImage target = randomImage(6, 6, 3, 2);
  target.Resize(parent.Plane(0), 6, 6);
  KivImage alone;
  alone.Resize(parent.Plane(0), 6, 6);
  EXPECT_EQ(alone.channels, 1);
  EXPECT_TRUE(sameBits(target.Plane(0), alone));
  EXPECT_TRUE(sameBits(target.Plane(1), randomImage(6, 6, 3, 2).Plane(1)));
  EXPECT_TRUE(sameBits(target.Plane(2), randomImage(6, 6, 3, 2).Plane(2)));
}

TEST(Transpose, TurnsRowsIntoColumns) {
  const KivImage source = randomImage(37, 70, 2, 1);
  KivImage turned;
  turned.Transpose(source);
  ASSERT_EQ(turned.size.width, 70);
  ASSERT_EQ(turned.size.height, 37);
  for (int y = 0; y < 70; ++y) {
    for (int x = 0; x < 37; ++x) ASSERT_EQ(*turned.At(1, y, x), *source.At(1, x, y));
  }
}

TEST(Pad, RepeatsEdgesAroundTheSource) {
  const KivImage source = randomImage(5, 4, 2, 1);
  KivImage padded(11, 10, 2);
  padded.Pad(source, 3);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 11; ++x) {
      ASSERT_EQ(*padded.At(1, x, y), *source.At(1, std::clamp(x - 3, 0, 4), std::clamp(y - 3, 0, 3)));
    }
  }
  KivImage refilled;
  refilled = padded;
  fill(refilled, 0.0F);
  refilled.Sub_Section(3).Copy(source);
  refilled.Pad(3);
  EXPECT_TRUE(sameBits(refilled, padded));

  KivImage empty;
  empty.Pad(source, 3);
  EXPECT_EQ(empty.channels, 0);
}

TEST(Block, CutsBandsAndTheLastReachesTheEnd) {
  const KivImage image = randomImage(8, 365, 2, 1);
  const int starts[] = {0, 90, 180, 270};
  for (int i = 0; i < 4; ++i) {
    KivImage band;
    band.Block(image, {8, 100}, i, 4, 10);
    EXPECT_EQ(band.At(1, 0, 0), image.At(1, 0, starts[i]));
    EXPECT_EQ(band.size.height, i == 3 ? 95 : 100);
    EXPECT_EQ(band.storage, KIV_STORAGE_SECTION);
    band.Block(image, {8, 100}, 0, 4, 10);  // again on the same object: its table is released
    EXPECT_EQ(band.At(0, 0, 0), image.At(0, 0, 0));
  }
}

class Shifts : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(Shifts, MoveByHalfAndUndoEachOther) {
  const auto [w, h] = GetParam();
  const KivImage source = randomImage(w, h, 1, 1);
  KivImage shifted;
  shifted = source;
  shifted.FftShift();
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) ASSERT_EQ(*shifted.At(0, (x + w / 2) % w, (y + h / 2) % h), *source.At(0, x, y));
  }
  shifted.IfftShift();
  EXPECT_TRUE(sameBits(shifted, source));
}

INSTANTIATE_TEST_SUITE_P(Sizes, Shifts,
                         testing::Values(std::pair{5, 3}, std::pair{4, 6}, std::pair{1, 1}, std::pair{1, 5},
                                         std::pair{8, 1}, std::pair{17, 2}));

}  // namespace
