// Pre and Post at all depths.
#include "host/block_stages.h"

#include <gtest/gtest.h>

#include <vector>

#include "primitives/region.h"
#include "support/images.h"

namespace {

// A host's buffer: rows of random pixels, padding behind each row and a fence around all.
template <typename Sample>
struct Buffer : Region<Sample> {
  Buffer(int width, int height, int perPixel, int padding = 3)
      : Region<Sample>({width, height}, 0, padding * static_cast<int>(sizeof(Sample)), perPixel), interleave(perPixel) {
    std::mt19937 random(static_cast<unsigned>(this->step));
    this->fill([&](int, int) {
      const auto any = static_cast<Sample>(random());
      if constexpr (std::is_floating_point_v<Sample>) return any / 4e9F * 1.5F - 0.25F;
      return any;
    });
  }
  Sample at(int x, int y, int c) const { return Region<Sample>::at(x * interleave + c, y); }
  std::vector<float> samples() const {
    std::vector<float> all;
    this->appendSamplesTo(all);
    return all;
  }
  PS_Database database() {
    const int depthCode = sizeof(Sample) == 1 ? 0 : sizeof(Sample) == 2 ? 1 : 2;
    return {this->data(), this->data(),     interleave,        this->step,
            this->step,   this->size.width, this->size.height, depthCode};
  }
  int interleave;
};

template <typename Sample>
class Exchange : public testing::Test {};
using Samples = testing::Types<unsigned char, unsigned short, float>;
TYPED_TEST_SUITE(Exchange, Samples, );

// Bit for bit at every depth: 1 / 32768 is a power of two, so that even truncation finds whole numbers. Into a view,
// whose row step no scratch plane has.
TYPED_TEST(Exchange, PreThenPostReturnsTheBuffer) {
  for (const int interleave : {1, 3}) {
    for (const IppiSize size : {IppiSize{1, 1}, {37, 11}, {5, 199}, {8, 203}}) {
      Buffer<TypeParam> source(size.width, size.height, interleave);
      Buffer<TypeParam> target(size.width, size.height, interleave, 5);
      PS_Database db = source.database();
      db.outData = target.database().outData;
      db.outRowBytes = target.database().outRowBytes;
      KivImage parent = randomImage(size.width + 7, size.height + 2, interleave, 5);
      const KivImage before = copyOf(parent);
      Pre(parent.ROI(3, 1, size.width, size.height), false, db);
      const float white = sizeof(TypeParam) == 1 ? 255.0F : sizeof(TypeParam) == 2 ? 32768.0F : 1.0F;
      const KivImage samples = imageOf(
          size, interleave, [&](int c, int x, int y) { return static_cast<float>(source.at(x, y, c)) / white; });
      EXPECT_TRUE(within(2e-7, parent.ROI(3, 1, size.width, size.height), samples));

      Post(parent.ROI(3, 1, size.width, size.height), before.ROI(3, 1, size.width, size.height), 1.0F, false, db, true);
      EXPECT_EQ(source.samples(), target.samples()) << size.width << " x " << size.height << " x " << interleave;
      target.expectSurroundingsIntact();
      parent.ROI(3, 1, size.width, size.height) = before.ROI(3, 1, size.width, size.height);
      EXPECT_TRUE(sameBits(parent, before)) << "beside the view";
    }
  }
}

TEST(BlockExchange, SixteenBitsRoundToNearestInOnePlaneAndTruncateInThree) {
  for (const int interleave : {1, 3}) {
    Buffer<unsigned short> target(1, 1, interleave);
    PS_Database db = target.database();
    Post(flatImage({1, 1}, interleave, 100.75F / 32768.0F), KivImage(1, 1, interleave), 1.0F, false, db, false);
    EXPECT_EQ(target.at(0, 0, interleave - 1), interleave == 1 ? 101 : 100);
  }
}

TEST(BlockExchange, BlendsLimitedSamplesWithTheBase) {
  const struct {
    float sample, base, blend, expected;
    bool doBlend;
  } cases[] = {
      {2.0F, 0.5F, 0.25F, 0.625F, true}, {-3.0F, 0.5F, 0.5F, 0.25F, true}, {2.0F, 0.5F, 0.0F, 0.5F, true},
      {2.0F, 0.5F, 1.0F, 2.0F, true},    {2.0F, 0.5F, 0.25F, 2.0F, false},
  };
  for (const auto& c : cases) {
    Buffer<float> target(2, 12, 3);
    PS_Database db = target.database();
    Post(flatImage({2, 12}, 3, c.sample), flatImage({2, 12}, 3, c.base), c.blend, false, db, c.doBlend);
    EXPECT_EQ(target.at(1, 11, 2), c.expected) << c.sample << " at " << c.blend;
  }
}

TEST(BlockExchange, YuvComesAndGoes) {
  Buffer<float> source(9, 210, 3);
  PS_Database db = source.database();
  KivImage yuv(9, 210, 3);
  Pre(std::move(yuv), true, db);
  EXPECT_NEAR(*yuv.At(0, 4, 205),
              0.299 * source.at(4, 205, 0) + 0.587 * source.at(4, 205, 1) + 0.114 * source.at(4, 205, 2), 2e-5);
  const Buffer<float> before = source;
  Post(std::move(yuv), KivImage(9, 210, 3), 1.0F, true, db, false);
  const std::vector<float> original = before.samples();
  const std::vector<float> returned = source.samples();
  for (std::size_t i = 0; i < original.size(); ++i) ASSERT_NEAR(returned[i], original[i], 1e-6);

  float pixel[] = {0.5F, 0.1F, -0.2F};
  Buffer<float> target(1, 1, 3);
  db = target.database();
  Post(KivImage(pixel, {1, 1}, 3), KivImage(1, 1, 3), 1.0F, true, db, false);
  EXPECT_NEAR(target.at(0, 0, 0), 0.21957, 1e-6);
  EXPECT_NEAR(target.at(0, 0, 1), 0.60847, 1e-6);
  EXPECT_NEAR(target.at(0, 0, 2), 0.67702, 1e-6);
}

TEST(BlockExchange, DoesNothingWhereNoConverterFits) {
  Buffer<float> buffer(4, 4, 3);
  const Buffer<float> before = buffer;
  const PS_Database good = buffer.database();
  std::vector<PS_Database> bad(5, good);
  bad[0].depthCode = 3;
  bad[1].depthCode = -1;
  bad[2].inData = bad[2].outData = nullptr;
  bad[3].interleave = 1;
  bad[4].interleave = 4;
  for (PS_Database& db : bad) {
    KivImage image = randomImage(4, 4, 3, 6);
    Pre(std::move(image), true, db);
    Post(std::move(image), KivImage(4, 4, 3), 0.5F, true, db, true);
    EXPECT_TRUE(sameBits(image, randomImage(4, 4, 3, 6)));
    EXPECT_EQ(buffer.samples(), before.samples());
  }
}

// Scratch planes of this width pass every limit of the allocator; the samples themselves are never reached.
TEST(BlockExchange, RefusesScratchThatCannotBeHad) {
  float sample = 0.0F;
  Buffer<unsigned short> buffer(1, 1, 3);
  PS_Database db = buffer.database();
  KivImage wide(&sample, {500'000'000, 1}, 3);
  EXPECT_THROW(Pre(std::move(wide), false, db), NO_MEMORY_ERROR);
  EXPECT_THROW(Post(std::move(wide), KivImage(1, 1, 3), 1.0F, false, db, false), NO_MEMORY_ERROR);
}

}  // namespace
