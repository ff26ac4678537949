#include <vector>

#include "image/kiv_image.h"
#include "support/images.h"

namespace {

// How often each sample is darkened, from the description of the three stripes.
std::vector<int> darkenings(int w, int h, std::int64_t thickness) {
  std::vector<int> counts(static_cast<std::size_t>(w * h), 0);
  const auto darken = [&](int y, std::int64_t first, std::int64_t count) {
    for (std::int64_t x = first; x < first + count && x < w; ++x) ++counts[static_cast<std::size_t>(y * w + x)];
  };
  const float aspect = static_cast<float>(w) / static_cast<float>(h);
  const float reach = static_cast<float>(thickness) + aspect;
  float x = 0;
  std::vector<std::int64_t> edge;
  for (int y = 0; y < h; ++y) {
    edge.push_back(static_cast<std::int64_t>(x));
    if (static_cast<float>(w) > x + reach) x += aspect;
  }
  for (int y = 0; y < h; ++y) {
    darken(y, edge[static_cast<std::size_t>(y)], thickness);
    darken(y, edge[static_cast<std::size_t>(h - 1 - y)], thickness);
    darken(y, w / 2 + 1, thickness - 1);
  }
  return counts;
}

struct Cross {
  int width, height, thickness;
};

class CrossOverlay : public testing::TestWithParam<Cross> {};

TEST_P(CrossOverlay, DarkensEachStripeOnce) {
  const auto [w, h, thickness] = GetParam();
  KivImage parent = randomImage(w + 4, h + 2, 3, 1);
  const KivImage before = randomImage(w + 4, h + 2, 3, 1);
  KivImage image = parent.ROI(2, 1, w, h);
  image.CrossIt_I(thickness);
  const std::vector<int> counts = darkenings(w, h, thickness);
  for (int plane = 0; plane < 3; ++plane) {
    for (int y = -1; y <= h; ++y) {
      for (int x = -2; x < w + 2; ++x) {
        float expected = *before.At(plane, x + 2, y + 1);
        const bool inside = x >= 0 && x < w && y >= 0 && y < h;
        for (int n = inside ? counts[static_cast<std::size_t>(y * w + x)] : 0; n > 0; --n) {
          expected = static_cast<float>(static_cast<double>(expected) * 0.8);
        }
        ASSERT_EQ(bitsOf(*parent.At(plane, x + 2, y + 1)), bitsOf(expected)) << x << ", " << y;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, CrossOverlay,
                         testing::Values(Cross{60, 40, 10}, Cross{40, 60, 1}, Cross{7, 100, 3}, Cross{1, 1, 1},
                                         Cross{9, 9, 20}, Cross{30, 20, INT32_MAX}));

}  // namespace
