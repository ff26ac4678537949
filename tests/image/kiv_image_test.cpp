#include "image/kiv_image.h"

#include <cstdint>
#include <utility>

#include "support/images.h"

namespace {

TEST(KivImageMemory, AnImpossibleShapeThrowsAndLeavesTheImageEmpty) {
  // Of the last three, rows in 32 bits would wrap round to 2, to 0 and to 196.
  const struct {
    int width, height, channels;
  } shapes[] = {{0, 1, 1},         {1, 0, 1},         {1, 1, 0},          {-4, 4, 1},         {4, 4, -1},
                {INT32_MAX, 1, 1}, {30000, 30000, 1}, {4, 0x40000001, 4}, {1, 0x40000000, 4}, {16, -1431655700, 3}};
  for (const auto& s : shapes) {
    SCOPED_TRACE(testing::Message() << s.width << " x " << s.height << " x " << s.channels);
    EXPECT_THROW(KivImage(s.width, s.height, s.channels), NO_MEMORY_ERROR);
    KivImage image;
    EXPECT_THROW(image.Init(s.width, s.height, s.channels), NO_MEMORY_ERROR);
    EXPECT_EQ(image.channels, 0);
    EXPECT_EQ(image.planes, nullptr);
  }
}

TEST(KivImageMemory, AllocationHelpersGiveWhatTheImageAndThePrimitivesDo) {
  KivImage image;
  image.planes = new float*[3];
  image.channels = 3;
  image.size = {100, 50};
  ImageMalloc(image);
  EXPECT_EQ(image.stride, 448);
  EXPECT_EQ(image.planes[2] - image.planes[0], 2 * 112 * 50);
  fillRandom(image, 1);
  EXPECT_TRUE(sameBits(image, randomImage(100, 50, 3, 1)));
  int stride = 0;
  for (const IppiSize none : {IppiSize{0, 1}, IppiSize{1, -1}}) {
    float* entry = image.planes[0];
    EXPECT_THROW(ImageMalloc(&entry, stride, 1, none), NO_MEMORY_ERROR);
    EXPECT_EQ(entry, nullptr);
  }

  ippiFree(IppiMalloc8(65, 2, &stride));
  EXPECT_EQ(stride, 128);
  ippiFree(IppiMalloc16(65, 2, &stride));
  EXPECT_EQ(stride, 192);
  ippiFree(IppiMalloc32(65, 2, &stride));
  EXPECT_EQ(stride, 320);
  EXPECT_EQ(IppiMalloc8(1, 0, &stride), nullptr);
}

TEST(KivImageViews, ShowTheParentsSamples) {
  KivImage parent = randomImage(10, 8, 3, 1);
  EXPECT_EQ(parent.Plane(1).planes, parent.planes + 1);
  EXPECT_EQ(parent.Plane(1).storage, KIV_STORAGE_PLANE);
  EXPECT_EQ(KivImage().Plane(0).channels, 0);

  const KivImage inner = parent.Sub_Section(2);
  EXPECT_TRUE(sameBits(inner, parent.ROI(2, 2, 6, 4)));
  EXPECT_TRUE(sameBits(inner, Sub_Section_Aux(parent, 2, 2)));
  EXPECT_TRUE(sameBits(inner, parent.ROI(KivRect{2, 2, 6, 4})));
  EXPECT_TRUE(sameBits(inner, parent.ROI_BOX(2, 7, 2, 5)));
  EXPECT_EQ(inner.ROI(1, 0, 2, 2).At(2, 0, 1), parent.At(2, 3, 3));
  EXPECT_EQ(Sub_Section_Aux(parent, 3, 1).At(1, 1, 1), parent.At(1, 4, 2));
}

TEST(KivImageOwnership, MovesAndAdoptionReleaseOnce) {
  KivImage a = randomImage(5, 4, 2, 1);
  float* const samples = a.planes[0];
  KivImage moved(std::move(a));
  EXPECT_EQ(moved.planes[0], samples);
  EXPECT_EQ(a.channels, 0);  // NOLINT(bugprone-use-after-move): moved-from images are empty

  // Adoption: the old samples are released, the other object keeps its fields and is defused by hand.
  KivImage target = randomImage(9, 9, 1, 2);
  target = &moved;
  EXPECT_EQ(target.planes[0], samples);
  EXPECT_EQ(moved.planes[0], samples);
  target = &target;
  EXPECT_EQ(target.channels, 2);
  KivImage copyOfFields(&moved);
  EXPECT_EQ(copyOfFields.planes, moved.planes);
  for (KivImage* claimant : {&moved, &copyOfFields}) {
    claimant->channels = 0;
    claimant->planes = nullptr;
  }
}

TEST(KivImageOwnership, AdoptingIntoAViewLeavesTheParentAlone) {
  KivImage parent = randomImage(6, 6, 3, 1);
  const auto adopt = [](KivImage view) {
    KivImage other = randomImage(3, 2, 1, 2);
    view = &other;
    other.planes = nullptr;
    other.channels = 0;
    EXPECT_EQ(view.size.width, 3);
  };
  adopt(parent.Plane(1));
  adopt(parent.Sub_Section(1));
  EXPECT_TRUE(sameBits(parent, randomImage(6, 6, 3, 1)));
}

TEST(KivImageExpend, AddsPlanesInABlockThatGoesWithTheImage) {
  KivImage image = randomImage(17, 5, 1, 1);
  float* const first = image.planes[0];
  image.Expend(KivImage(2, 2, 2));
  image.Expend(KivImage(2, 2, 4));
  ASSERT_EQ(image.channels, 4);
  EXPECT_EQ(image.planes[0], first);
  fillRandom(image, 7);
  EXPECT_TRUE(sameBits(image, randomImage(17, 5, 4, 7)));
  EXPECT_THROW(image.Expend(KivImage(2, 2, 4)), NO_MEMORY_ERROR);
  EXPECT_THROW(image.ROI(1, 1, 0, 2).Expend(KivImage(2, 2, 5)), NO_MEMORY_ERROR);
  KivImage moved(std::move(image));
  EXPECT_TRUE(sameBits(moved, randomImage(17, 5, 4, 7)));
}

TEST(KivImageExpend, OfAViewKeepsTheParent) {
  KivImage parent = randomImage(40, 5, 3, 1);
  {
    KivImage plane = parent.Plane(0);
    plane.Expend(parent);
    plane = flatImage(plane.size, plane.channels, 2.0F);
    KivImage roi = parent.ROI(3, 0, 4, 5);
    roi.Expend(KivImage(1, 1, 5));
    EXPECT_EQ(roi.stride, parent.stride);
    roi = flatImage(roi.size, roi.channels, 3.0F);
  }
  EXPECT_EQ(*parent.At(0, 0, 0), 2.0F);
  EXPECT_EQ(*parent.At(2, 3, 4), 3.0F);
  EXPECT_EQ(*parent.At(1, 0, 0), *randomImage(40, 5, 3, 1).At(1, 0, 0));
}

}  // namespace
