// The cutting into blocks and strips.
#include "image/block_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "support/images.h"

namespace {

struct Visits {
  const KivImage& in;
  const KivImage& out;
  std::mutex mutex = {};
  std::vector<std::tuple<std::ptrdiff_t, std::ptrdiff_t, int>> strips = {};  // the places in both images; rows
};

void note(KivImage& in, KivImage& out, void* user) {
  auto& visits = *static_cast<Visits*>(user);
  const std::lock_guard<std::mutex> lock(visits.mutex);
  visits.strips.emplace_back(in.planes[0] - visits.in.planes[0], out.planes[0] - visits.out.planes[0], out.size.height);
}

TEST(BlockDriver, CutsIntoFourBlocksFrom200RowsOnAndIntoStripsOfTen) {
  KivImage in(1, 1000, 1);
  KivImage out(20, 1000, 1);
  for (int height = 1; height <= 1000; ++height) {
    Visits expected{in, out};
    const int blockRows = height < 200 ? height : (height + 3) / 4;
    for (int block = 0; block < height; block += blockRows) {
      const int end = std::min(block + blockRows, height);
      for (int y = block; y < end; y += 10) {
        expected.strips.emplace_back(in.At(0, 0, y) - in.planes[0], out.At(0, 0, y) - out.planes[0],
                                     std::min(10, end - y));
      }
    }
    Visits visits{in, out};
    in.size.height = out.size.height = height;
    DoMP(in, out, note, &visits);
    std::sort(visits.strips.begin(), visits.strips.end());
    ASSERT_EQ(visits.strips, expected.strips) << height;
  }
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

}  // namespace
