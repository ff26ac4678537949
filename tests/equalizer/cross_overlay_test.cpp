#include <vector>

#include "image/kiv_image.h"
#include "support/images.h"

namespace {

// Darkens all planes of the image from the description of the three stripes.
void darkenByHand(KivImage& image, std::int64_t thickness) {
  const int w = image.size.width;
  const int h = image.size.height;
  const auto darken = [&](int y, std::int64_t first, std::int64_t count) {
    for (std::int64_t x = first; x < first + count && x < w; ++x) {
      for (int plane = 0; plane < 3; ++plane) {
        float& sample = *image.At(plane, static_cast<int>(x), y);
        sample = static_cast<float>(static_cast<double>(sample) * 0.8);
      }
    }
  };
  const float aspect = static_cast<float>(w) / static_cast<float>(h);
  float x = 0;
  for (int y = 0; y < h; ++y) {
    darken(y, static_cast<std::int64_t>(x), thickness);
    darken(h - 1 - y, static_cast<std::int64_t>(x), thickness);
    darken(y, w / 2 + 1, thickness - 1);
    if (static_cast<float>(w) > x + (static_cast<float>(thickness) + aspect)) x += aspect;
  }
}

struct Cross {
  int width, height, thickness;
};

TEST(CrossOverlay, DarkensEachStripeOnceAndNothingElse) {
  for (const Cross& c : {Cross{60, 40, 10}, Cross{40, 60, 1}, Cross{7, 100, 3}, Cross{1, 1, 1}, Cross{9, 9, 20},
                         Cross{30, 20, INT32_MAX}}) {
    KivImage actual = randomImage(c.width + 4, c.height + 2, 3, 1);
    KivImage expected = randomImage(c.width + 4, c.height + 2, 3, 1);
    actual.ROI(2, 1, c.width, c.height).CrossIt_I(c.thickness);
    KivImage view = expected.ROI(2, 1, c.width, c.height);
    darkenByHand(view, c.thickness);
    EXPECT_TRUE(sameBits(actual, expected));
  }
}

}  // namespace
