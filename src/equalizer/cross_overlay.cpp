#include "equalizer/cross_overlay.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr double darkening = 0.8;

// Darkens columns first to first + count - 1, as far as they are among those that are there.
void darken(float* columns, int left, int width, std::int64_t first, std::int64_t count) {
  const std::int64_t end = std::min<std::int64_t>(first + count - left, width);
  for (std::int64_t x = std::max<std::int64_t>(first - left, 0); x < end; ++x) {
    columns[x] = static_cast<float>(columns[x] * darkening);
  }
}

// The left edge of a falling diagonal stripe, row by row, until it reaches the image's right edge.
std::vector<int> diagonalOf(IppiSize size, int thickness) {
  const auto width = static_cast<float>(size.width);
  const float aspect = width / static_cast<float>(size.height);
  const float reach = static_cast<float>(thickness) + aspect;
  std::vector<int> columns;
  columns.reserve(static_cast<std::size_t>(std::max(size.height, 0)));
  float x = 0.0F;
  for (int y = 0; y < size.height; ++y) {
    columns.push_back(static_cast<int>(x));
    if (width > x + reach) x += aspect;
  }
  return columns;
}

}  // namespace

CrossOverlay::CrossOverlay(IppiSize size, int thickness)
    : width_(size.width),
      thickness_(thickness),
      falling_(diagonalOf(size, thickness)),
      rising_(falling_.rbegin(), falling_.rend()) {}

void CrossOverlay::draw(int y, int left, int width, float* columns) const {
  darken(columns, left, width, falling_[static_cast<std::size_t>(y)], thickness_);
  darken(columns, left, width, rising_[static_cast<std::size_t>(y)], thickness_);
  darken(columns, left, width, std::int64_t{width_ / 2} + 1, std::int64_t{thickness_} - 1);
}

void drawCross(KivImage& image, int thickness) {
  const CrossOverlay cross(image.size, thickness);
  for (int y = 0; y < image.size.height; ++y) {
    for (int plane = 0; plane < image.channels; ++plane) cross.draw(y, 0, image.size.width, image.At(plane, 0, y));
  }
}
