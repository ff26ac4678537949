// The cutting into blocks and strips, and Pre and Post at all depths.
#include "image/block_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "support/images.h"

namespace {

// Counts the visits of each row in its first sample; notes the strips' heights, block by block.
struct Visits {
  std::mutex mutex;
  std::vector<std::pair<const float*, int>> strips;
};

void countRows(KivImage& in, KivImage& out, void* user) {
  for (int y = 0; y < out.size.height; ++y) *out.At(0, 0, y) += *in.At(0, 0, y);
  auto& visits = *static_cast<Visits*>(user);
  const std::lock_guard<std::mutex> lock(visits.mutex);
  visits.strips.emplace_back(out.planes[0], out.size.height);
}

std::vector<int> stripHeights(int height) {
  KivImage in(1, height, 1);
  KivImage out(1, height, 1);
  fill(in, 1.0F);
  fill(out, 0.0F);
  Visits visits;
  DoMP(in, out, countRows, &visits);
  EXPECT_TRUE(sameBits(in, out)) << height << " rows";
  std::sort(visits.strips.begin(), visits.strips.end());
  std::vector<int> heights;
  for (const auto& strip : visits.strips) heights.push_back(strip.second);
  return heights;
}

TEST(BlockDriver, VisitsEachRowOnceInLowStrips) {
  for (int height = 1; height <= 1000; ++height) {
    for (const int rows : stripHeights(height)) ASSERT_LE(rows, 10) << height << " rows";
  }
}

TEST(BlockDriver, CutsWhereItSays) {
  const auto tens = [](std::size_t count) { return std::vector<int>(count, 10); };
  const auto joined = [](std::initializer_list<std::vector<int>> parts) {
    std::vector<int> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  EXPECT_EQ(stripHeights(10), tens(1));
  EXPECT_EQ(stripHeights(11), joined({tens(1), {1}}));
  EXPECT_EQ(stripHeights(25), joined({tens(2), {5}}));
  EXPECT_EQ(stripHeights(199), joined({tens(19), {9}}));
  EXPECT_EQ(stripHeights(200), tens(20));
  EXPECT_EQ(stripHeights(201), joined({tens(5), {1}, tens(5), {1}, tens(5), {1}, tens(4), {8}}));
}

TEST(BlockDriver, FindsNoStripInAViewOfLessThanNothing) {
  KivImage image(2, 4, 1);
  const auto fail = [](KivImage&, KivImage&, void*) { throw std::runtime_error("strip"); };
  for (const int margin : {2, 3, 9}) {
    KivImage view = image.Sub_Section(0, margin);
    EXPECT_NO_THROW(DoMP(view, view, fail, nullptr)) << margin;
  }
}

TEST(BlockDriver, HandsOnAnException) {
  KivImage image = randomImage(3, 230, 1, 1);
  const auto fail = [](KivImage& in, KivImage&, void* user) {
    if (*in.At(0, 0, 0) == *static_cast<float*>(user)) throw std::runtime_error("strip");
  };
  EXPECT_THROW(DoMP(image, image, fail, image.At(0, 0, 68)), std::runtime_error);  // the second block's second strip
}

// A host's buffer: rows of pixels, padding behind each row and a fence around all, with random bytes everywhere.
template <typename Sample>
struct Buffer {
  static constexpr int fence = 64;
  int width, height, interleave;
  int rowSamples;
  std::vector<Sample> samples;

  Buffer(int columns, int rows, int perPixel)
      : width(columns), height(rows), interleave(perPixel), rowSamples(columns * perPixel + 3) {
    samples.resize(static_cast<std::size_t>(rowSamples * rows + 2 * fence));
    std::mt19937 random(static_cast<unsigned>(rowSamples));
    for (Sample& sample : samples) {
      if (std::is_floating_point_v<Sample>) {
        sample = static_cast<Sample>(static_cast<double>(random()) / 4e9 * 1.5 - 0.25);
      } else {
        sample = static_cast<Sample>(random());
      }
    }
  }

  Sample& at(int x, int y, int c) {
    return samples[static_cast<std::size_t>(fence + y * rowSamples + x * interleave + c)];
  }

  PS_Database database() {
    const int rowBytes = rowSamples * static_cast<int>(sizeof(Sample));
    const int depthCode = sizeof(Sample) == 1 ? 0 : sizeof(Sample) == 2 ? 1 : 2;
    return {&at(0, 0, 0), &at(0, 0, 0), interleave, rowBytes, rowBytes, width, height, depthCode};
  }
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
      KivImage parent = randomImage(size.width + 7, size.height + 2, interleave, 5);
      KivImage before;
      before = parent;
      PS_Database in = source.database();
      Pre(parent.ROI(3, 1, size.width, size.height), false, in);
      const float white = sizeof(TypeParam) == 1 ? 255.0F : sizeof(TypeParam) == 2 ? 32768.0F : 1.0F;
      for (int c = 0; c < interleave; ++c) {
        const int x = size.width - 1;
        const int y = size.height - 1;
        ASSERT_FLOAT_EQ(*parent.At(c, 3 + x, 1 + y), static_cast<float>(source.at(x, y, c)) / white);
      }

      Buffer<TypeParam> target = source;
      for (int y = 0; y < size.height; ++y) {
        for (int i = 0; i < size.width * interleave; ++i) target.at(0, y, i) = TypeParam{};
      }
      PS_Database out = target.database();
      Post(parent.ROI(3, 1, size.width, size.height), before.ROI(3, 1, size.width, size.height), 1.0F, false, out,
           true);
      EXPECT_EQ(std::memcmp(source.samples.data(), target.samples.data(), source.samples.size() * sizeof(TypeParam)), 0)
          << size.width << " x " << size.height << " x " << interleave;
      // The margin of the view is as it was.
      for (int y = 0; y < parent.size.height; ++y) {
        const bool within = y >= 1 && y <= size.height;
        for (int x = 0; x < parent.size.width; x = within && x == 2 ? 3 + size.width : x + 1) {
          ASSERT_EQ(bitsOf(*parent.At(0, x, y)), bitsOf(*before.At(0, x, y)));
        }
      }
    }
  }
}

TEST(BlockExchange, SixteenBitsRoundToNearestInOnePlaneAndTruncateInThree) {
  for (const int interleave : {1, 3}) {
    Buffer<unsigned short> target(1, 1, interleave);
    PS_Database db = target.database();
    KivImage image(1, 1, interleave);
    fill(image, 100.75F / 32768.0F);
    Post(std::move(image), KivImage(1, 1, interleave), 1.0F, false, db, false);
    EXPECT_EQ(target.at(0, 0, interleave - 1), interleave == 1 ? 101 : 100);
  }
}

struct BlendCase {
  float sample, base, blend, expected;
  bool doBlend;
};

TEST(BlockExchange, BlendsLimitedSamplesWithTheBase) {
  const BlendCase cases[] = {
      {2.0F, 0.5F, 0.25F, 0.625F, true}, {-3.0F, 0.5F, 0.5F, 0.25F, true}, {2.0F, 0.5F, 0.0F, 0.5F, true},
      {2.0F, 0.5F, 1.0F, 2.0F, true},    {2.0F, 0.5F, 0.25F, 2.0F, false},
  };
  for (const BlendCase& c : cases) {
    Buffer<float> target(2, 12, 3);
    PS_Database db = target.database();
    KivImage image(2, 12, 3);
    KivImage base(2, 12, 3);
    fill(image, c.sample);
    fill(base, c.base);
    Post(std::move(image), std::move(base), c.blend, false, db, c.doBlend);
    EXPECT_EQ(target.at(1, 11, 2), c.expected) << c.sample << " at " << c.blend;
  }
}

TEST(BlockExchange, YuvComesAndGoes) {
  Buffer<float> source(9, 210, 3);
  PS_Database db = source.database();
  KivImage yuv(9, 210, 3);
  Pre(std::move(yuv), true, db);
  // Luminance of a known pixel; grey has no colour.
  EXPECT_NEAR(*yuv.At(0, 4, 205),
              0.299 * source.at(4, 205, 0) + 0.587 * source.at(4, 205, 1) + 0.114 * source.at(4, 205, 2), 2e-5);
  const Buffer<float> before = source;
  Post(std::move(yuv), KivImage(9, 210, 3), 1.0F, true, db, false);
  for (std::size_t i = 0; i < before.samples.size(); ++i) ASSERT_NEAR(source.samples[i], before.samples[i], 1e-6);

  KivImage pixel(1, 1, 3);
  *pixel.At(0, 0, 0) = 0.5F;
  *pixel.At(1, 0, 0) = 0.1F;
  *pixel.At(2, 0, 0) = -0.2F;
  Buffer<float> target(1, 1, 3);
  db = target.database();
  Post(std::move(pixel), KivImage(1, 1, 3), 1.0F, true, db, false);
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
    KivImage copy;
    copy = image;
    Pre(std::move(image), true, db);
    Post(std::move(image), KivImage(4, 4, 3), 0.5F, true, db, true);
    EXPECT_TRUE(sameBits(image, copy));
    EXPECT_EQ(buffer.samples, before.samples);
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
