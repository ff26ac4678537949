#include <cstring>
#include <vector>

#include "support/each_row_test.h"

namespace {

class Memory : public EachRow {};

bool isAligned(const void* block) { return reinterpret_cast<std::uintptr_t>(block) % 64 == 0; }

TEST_P(Memory, BlocksAreAlignedAndWhole) {
  std::vector<unsigned char*> blocks;
  for (int length = 1; length < 300; length += 7) {
    blocks.push_back(static_cast<unsigned char*>(length % 2 == 0 ? ippMalloc(length) : ippsMalloc_8u(length)));
    ASSERT_NE(blocks.back(), nullptr);
    EXPECT_TRUE(isAligned(blocks.back()));
    std::memset(blocks.back(), length & 0xFF, static_cast<std::size_t>(length));
  }
  int length = 1;
  for (unsigned char* block : blocks) {  // no block reaches into another one
    EXPECT_EQ(block[0], length & 0xFF);
    EXPECT_EQ(block[length - 1], length & 0xFF);
    ippFree(block);
    length += 7;
  }
}

TEST_P(Memory, LengthsBeyondTheLimitsGiveNull) {
  for (const std::int32_t length : {0, -1, INT32_MIN, INT32_MAX, INT32_MAX - 71}) {
    EXPECT_EQ(ippMalloc(length), nullptr) << length;
    EXPECT_EQ(ippsMalloc_8u(length), nullptr) << length;
  }
  void* largest = ippMalloc(INT32_MAX - 72);
  EXPECT_NE(largest, nullptr) << "untouched pages cost nothing";
  ippFree(largest);
  ippFree(nullptr);
  ippsFree(nullptr);
  ippiFree(nullptr);
}

template <typename Sample>
void expectStep(Sample* (*allocate)(std::int32_t, std::int32_t, std::int32_t*), int width, int expected) {
  std::int32_t step = -1;
  Sample* image = allocate(width, 3, &step);
  ASSERT_NE(image, nullptr);
  EXPECT_TRUE(isAligned(image));
  EXPECT_EQ(step, expected) << width;
  std::memset(image, 1, static_cast<std::size_t>(step) * 3);
  ippiFree(image);
  EXPECT_EQ(allocate(1, 1, nullptr), nullptr);
}

TEST_P(Memory, StepsAreMultiplesOf64) {
  expectStep(ippiMalloc_32f_C1, 1, 64);
  expectStep(ippiMalloc_32f_C1, 17, 128);
  expectStep(ippiMalloc_32f_C3, 6, 128);
  expectStep(ippiMalloc_32f_C3, 16, 192);
  expectStep(ippiMalloc_8u_C1, 64, 64);
  expectStep(ippiMalloc_16u_C1, 33, 128);
}

TEST_P(Memory, ImagesThatCannotBe) {
  struct Impossible {
    int width, height, step;
  };
  const Impossible images[] = {{0, 5, 0},
                               {5, 0, 0},
                               {-1, 5, 0},
                               {INT32_MAX / 4 + 1, 1, 0},     // a row of 2^31 bytes
                               {16, INT32_MAX / 64 + 1, 64},  // the row is possible, the image isn't
                               {16, (1 << 26) + 1, 64},       // of 2^32 bytes and 64
                               {16, INT32_MAX / 64, 64}};     // nor beside the allocator's own bytes
  for (const Impossible& image : images) {
    std::int32_t step = -1;
    EXPECT_EQ(ippiMalloc_32f_C1(image.width, image.height, &step), nullptr);
    EXPECT_EQ(step, image.step) << image.width << " x " << image.height;
  }
}

INSTANTIATE_TEST_SUITE_P(, Memory, allRows(), rowName);

}  // namespace
