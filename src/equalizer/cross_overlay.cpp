#include "equalizer/cross_overlay.h"

#include <algorithm>

namespace {

constexpr double darkening = 0.8;

// Darkens count samples of row y from column first on, in all planes, as far as the row reaches.
void darken(KivImage& image, int y, std::int64_t first, std::int64_t count) {
  const std::int64_t end = std::min<std::int64_t>(first + count, image.size.width);
  for (int plane = 0; plane < image.channels; ++plane) {
    float* row = image.At(plane, 0, y);
    for (std::int64_t x = first; x < end; ++x) row[x] = static_cast<float>(row[x] * darkening);
  }
}

// The left edge of a diagonal stripe, row by row, until it reaches the image's right edge.
class Diagonal {
 public:
  Diagonal(IppiSize size, int thickness)
      : width_(static_cast<float>(size.width)),
        aspect_(static_cast<float>(size.width) / static_cast<float>(size.height)),
        reach_(static_cast<float>(thickness) + aspect_) {}

  int next() {
    const int column = static_cast<int>(x_);
    if (width_ > x_ + reach_) x_ += aspect_;
    return column;
  }

 private:
  float width_;
  float aspect_;
  float reach_;
  float x_ = 0.0F;
};

}  // namespace

void drawCross(KivImage& image, int thickness) {
  Diagonal falling(image.size, thickness);
  for (int y = 0; y < image.size.height; ++y) darken(image, y, falling.next(), thickness);
  Diagonal rising(image.size, thickness);
  for (int y = image.size.height - 1; y >= 0; --y) darken(image, y, rising.next(), thickness);
  const std::int64_t middle = image.size.width / 2;
  for (int y = image.size.height - 1; y >= 0; --y) darken(image, y, middle + 1, std::int64_t{thickness} - 1);
}
