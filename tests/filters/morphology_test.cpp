#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include "support/targets.h"

namespace {

using Mask = std::vector<unsigned char>;

Mask fullMask(int side) { return Mask(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1); }

Mask crossMask(int side) {
  Mask mask(fullMask(side).size(), 0);
  for (int i = 0; i < side; ++i) {
    mask[static_cast<std::size_t>(i * side + side / 3)] = 1;
    mask[static_cast<std::size_t>((side - 1) * side + i)] = 255;
  }
  return mask;
}

KivImage naive(const KivImage& src, const Mask& mask, int side, bool insideOnly, bool largest) {
  const int lost = insideOnly ? side - 1 : 0;
  const int anchor = insideOnly ? 0 : (side - 1) / 2;
  const int middle = (side - 1) / 2 - anchor;
  return imageOf({src.size.width - lost, src.size.height - lost}, src.channels, [&](int p, int x, int y) {
    float result = NAN;
    for (int j = 0; j < side; ++j) {
      for (int i = 0; i < side; ++i) {
        const int sx = x + i - anchor;
        const int sy = y + j - anchor;
        if (mask[static_cast<std::size_t>(j * side + i)] == 0) continue;
        if (sx < 0 || sy < 0 || sx >= src.size.width || sy >= src.size.height) continue;
        result = largest ? std::fmax(result, *src.At(p, sx, sy)) : std::fmin(result, *src.At(p, sx, sy));
      }
    }
    return std::isnan(result) ? *src.At(p, x + middle, y + middle) : result;
  });
}

KivImage withHoles(int width, int height, int channels) {
  KivImage image = randomImage(width, height, channels, 3);
  *image.At(0, width / 2, height / 2) = NAN;
  // An edge of infinities of either sign, with nothing but NaN beside them.
  for (int y = height / 2; y < height; ++y) {
    for (int x = 0; x < width / 2; ++x) {
      *image.At(0, x, y) = (x + y) % 4 == 0 ? NAN : x < width / 4 ? -INFINITY : INFINITY;
    }
  }
  // Under some masks lies nothing but NaN here; one number stands where the middle of a cross may be, or just beside
  // it.
  for (int y = 1; y < std::min(8, height); ++y) {
    for (int x = 1; x < std::min(9, width); ++x) *image.At(channels - 1, x, y) = NAN;
  }
  if (width > 4 && height > 4) *image.At(channels - 1, 4, 4) = 0.5F;
  return image;
}

class Morphology : public testing::TestWithParam<std::tuple<int, bool, bool>> {};

TEST_P(Morphology, EqualsTheNaiveExtremeInEveryForm) {
  const auto [side, isFull, insideOnly] = GetParam();
  Mask mask = isFull ? fullMask(side) : crossMask(side);
  for (const auto& [width, height] : {std::pair{1, 1}, {5, 9}, {64, 7}, {131, 40}, {40, 66}}) {
    if (insideOnly && (width < side || height < side)) continue;
    const KivImage src = withHoles(width, height, 2);
    const KivImage largest = naive(src, mask, side, insideOnly, true);
    const KivImage smallest = naive(src, mask, side, insideOnly, false);
    onEachRow([&, n = side, inside = insideOnly] {
      KivImage dilated = made(&KivImage::Dilate, src, mask.data(), n, inside);
      EXPECT_TRUE(sameBits(dilated, largest));
      KivImage eroded = made(&KivImage::Erode, src, mask.data(), n, inside);
      EXPECT_TRUE(sameBits(eroded, smallest));
    });
    if (insideOnly) continue;

    KivImage result;
    result = src.Dilate_R(mask.data(), side);
    EXPECT_TRUE(sameBits(result, largest));
    expectInEveryTarget(src, smallest, [&, n = side](KivImage& target, const KivImage& from) {
      target = from.Erode_R(mask.data(), n);
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, Morphology,
                         testing::Combine(testing::Values(1, 2, 3, 6, 7, 25, 50), testing::Bool(), testing::Bool()));

// Of rows of this length the turned strips leave 32 bits.
TEST(MorphologyRule, SaysWhenItHasNoMemory) {
  const KivImage src(4'300'000, 1, 1);
  Mask mask = fullMask(1);
  EXPECT_THROW(KivImage().Dilate(src, mask.data(), 1, false), NO_MEMORY_ERROR);
}

TEST(MorphologyRule, RefusesAMaskThatFitsNowhere) {
  const KivImage src = randomImage(9, 30, 1, 1);
  Mask mask = fullMask(10);
  KivImage fresh;
  EXPECT_THROW(fresh.Dilate(src, mask.data(), 10, true), NO_MEMORY_ERROR);
  KivImage shaped = randomImage(4, 4, 1, 2);
  shaped.Dilate(src, mask.data(), 10, true);
  shaped.Dilate(src, mask.data(), 0, false);
  EXPECT_TRUE(sameBits(shaped, randomImage(4, 4, 1, 2)));
}

}  // namespace
