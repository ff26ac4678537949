#include "equalizer/level_lines.h"

#include <cstddef>

#include "image/parallel.h"

LevelLines::LevelLines(const KivImage& image) : size_(image.size), image_(&image) {}

LevelLines::LevelLines(IppiSize size, const LineSource& source) : size_(size), source_(&source) {}

LevelLines::Rows LevelLines::rows(int first, int end, float* scratch, int scratchBytes) const {
  if (image_ != nullptr) return {image_->At(0, 0, first), image_->stride};
  const std::ptrdiff_t step = scratchBytes / static_cast<int>(sizeof(float));
  for (int y = first; y < end; ++y) (*source_)(y, scratch + (y - first) * step);
  return {scratch, scratchBytes};
}

const KivImage& LevelLines::whole() {
  if (image_ == nullptr) {
    made_ = std::make_shared<KivImage>(size_, 1);
    eachIndex(size_.height, [&](int y) { (*source_)(y, made_->At(0, 0, y)); });
    image_ = made_.get();
  }
  return *image_;
}
