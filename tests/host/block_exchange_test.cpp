// The block converters by themselves; whole images go through them in image/block_driver_test.cpp.
#include "host/block_exchange.h"

#include <gtest/gtest.h>

#include <array>

#include "support/images.h"

namespace {

// Three scratch planes of two by two samples.
template <typename Sample>
struct ScratchPlanes {
  std::array<std::array<Sample, 4>, 3> samples = {};
  void* planes[3] = {samples[0].data(), samples[1].data(), samples[2].data()};
  static constexpr int step = 2 * sizeof(Sample);
};

// Both rows of a block of 2 x 2 pixels from a buffer with one byte, or sample, of padding a row.
template <typename Sample>
using Pixels = std::array<Sample, 14>;

TEST(BlockConverters, KeepTheScaleOfTheirPrimitives) {
  Pixels<unsigned char> bytes = {0, 51, 255, 102, 153, 204, 9, 1, 2, 3, 4, 5, 6, 9};
  Pixels<unsigned short> words = {0, 1, 32768, 65535, 4, 5, 9, 6, 7, 8, 100, 11, 12, 9};
  ScratchPlanes<unsigned char> byteScratch;
  ScratchPlanes<unsigned short> wordScratch;
  KivImage block(2, 2, 3);
  FromPS8(block, byteScratch.planes, byteScratch.step, bytes.data(), 7, 3);
  EXPECT_EQ(*block.At(1, 0, 0), 51 * (1.0F / 255.0F));
  EXPECT_EQ(*block.At(2, 1, 1), 6 * (1.0F / 255.0F));
  FromPS16(block, wordScratch.planes, wordScratch.step, words.data(), 14, 3);
  EXPECT_EQ(*block.At(2, 0, 0), 32768.0F);
  EXPECT_EQ(*block.At(0, 1, 0), 65535.0F);
  EXPECT_EQ(*block.At(0, 1, 1), 100.0F);

  // Nothing to put them through: the block stays, and nothing crashes.
  KivImage before;
  before = block;
  FromPS8(block, nullptr, 0, bytes.data(), 7, 3);
  FromPS16(block, wordScratch.planes, wordScratch.step, words.data(), 14, 2);
  EXPECT_TRUE(sameBits(block, before));
}

TEST(BlockConverters, RoundAsTheyAre) {
  KivImage block(2, 2, 3);
  fill(block, 100.75F);
  Pixels<unsigned short> words = {};
  ScratchPlanes<unsigned short> scratch;
  ToPS16(block, scratch.planes, scratch.step, words.data(), 14, 3);
  EXPECT_EQ(words, (Pixels<unsigned short>{100, 100, 100, 100, 100, 100, 0, 100, 100, 100, 100, 100, 100, 0}));
  KivImage plane = block.Plane(0);
  ToPS16(plane, nullptr, 0, words.data(), 14, 1);
  EXPECT_EQ(words[0], 101);
  fill(block, 0.5F);
  Pixels<unsigned char> bytes = {};
  ScratchPlanes<unsigned char> byteScratch;
  ToPS8(block, byteScratch.planes, byteScratch.step, bytes.data(), 7, 3);
  EXPECT_EQ(bytes, (Pixels<unsigned char>{128, 128, 128, 128, 128, 128, 0, 128, 128, 128, 128, 128, 128, 0}));
}

TEST(BlockConverters, FloatsPassAsTheyAre) {
  const float inf = std::numeric_limits<float>::infinity();
  const Pixels<float> samples = {-1, 2, inf, 0.25F, 5, 6, 9, 7, 8, 10, 11, 12, -0.0F, 9};
  Pixels<float> source = samples;
  KivImage block(2, 2, 3);
  FromPS32(block, nullptr, 0, source.data(), 28, 3);
  EXPECT_EQ(*block.At(2, 0, 0), inf);
  EXPECT_EQ(*block.At(0, 1, 1), 11.0F);
  Pixels<float> target = {};
  target[6] = target[13] = 9;
  ToPS32(block, nullptr, 0, target.data(), 28, 3);
  EXPECT_EQ(target, samples);
}

}  // namespace
