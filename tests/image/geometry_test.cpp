#include <algorithm>
#include <utility>

#include "image/kiv_image.h"
#include "image/scratch.h"
#include "support/images.h"

namespace {

TEST(Resize, WritesTheTopLeftCornerOfAShapedTarget) {
  const KivImage source = randomImage(10, 10, 1, 1);
  KivImage alone;
  alone.Resize(source, IppiSize{5, 5});
  KivImage target = randomImage(100, 100, 1, 2);
  KivImage expected = copyOf(target);
  expected.ROI(0, 0, 5, 5) = alone;
  target.Resize(source, 5, 5);
  EXPECT_TRUE(sameBits(target, expected));
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

TEST(Resize, WritesAsManyPlanesAsTheSourceHas) {
  const KivImage source = randomImage(31, 17, 3, 1);
  KivImage same;
  same.Resize(source, 31, 17);
  EXPECT_TRUE(sameBits(same, source));

  KivImage target = randomImage(31, 17, 3, 2);
  KivImage expected = copyOf(target);
  expected.Plane(0) = source.Plane(1);
  target.Resize(source.Plane(1), 31, 17);
  EXPECT_TRUE(sameBits(target, expected));
}

TEST(Resize, KeepsTheTargetWhereASourceIsOneSampleWide) {
  KivImage target = randomImage(8, 8, 1, 3);
  for (const IppiSize size : {IppiSize{1, 9}, IppiSize{9, 1}, IppiSize{1, 1}}) {
    target.Resize(randomImage(size.width, size.height, 1, 1), 8, 8);
    EXPECT_TRUE(sameBits(target, randomImage(8, 8, 1, 3)));
  }
}

TEST(Transpose, TurnsRowsIntoColumns) {
  const KivImage source = randomImage(37, 70, 2, 1);
  KivImage turned;
  turned.Transpose(source);
  EXPECT_TRUE(sameBits(turned, imageOf({70, 37}, 2, [&](int p, int x, int y) { return *source.At(p, y, x); })));
}

TEST(Pad, RepeatsEdgesAroundTheSource) {
  const KivImage source = randomImage(5, 4, 2, 1);
  const KivImage expected = imageOf({11, 10}, 2, [&](int p, int x, int y) {
    return *source.At(p, std::clamp(x - 3, 0, 4), std::clamp(y - 3, 0, 3));
  });
  KivImage padded(11, 10, 2);
  padded.Pad(source, 3);
  EXPECT_TRUE(sameBits(padded, expected));
  KivImage inPlace = flatImage({11, 10}, 2, 0.0F);
  inPlace.Sub_Section(3).Copy(source);
  inPlace.Pad(3);
  EXPECT_TRUE(sameBits(inPlace, expected));

  KivImage empty;
  empty.Pad(source, 3);
  EXPECT_EQ(empty.channels, 0);
}

TEST(Block, CutsBandsAndTheLastReachesTheEnd) {
  const KivImage image = randomImage(8, 365, 2, 1);
  KivImage band;  // again on the same object: its table is released
  for (int i = 0; i < 4; ++i) {
    band.Block(image, {8, 100}, i, 4, 10);
    EXPECT_EQ(band.At(1, 0, 0), image.At(1, 0, 90 * i));
    EXPECT_EQ(band.size.height, i == 3 ? 95 : 100);
    EXPECT_EQ(band.storage, KIV_STORAGE_SECTION);
  }
}

TEST(Shifts, MoveByHalfAndUndoEachOther) {
  for (const auto& [w, h] : {std::pair{5, 3}, {4, 6}, {1, 1}, {1, 5}, {8, 1}, {17, 2}}) {
    const KivImage source = randomImage(w, h, 1, 1);
    KivImage shifted = copyOf(source);
    shifted.FftShift();
    EXPECT_TRUE(sameBits(shifted, imageOf({w, h}, 1, [&, width = w, height = h](int, int x, int y) {
                           return *source.At(0, (x + (width + 1) / 2) % width, (y + (height + 1) / 2) % height);
                         })));
    shifted.IfftShift();
    EXPECT_TRUE(sameBits(shifted, source));
  }
}

}  // namespace
