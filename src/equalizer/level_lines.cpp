#include "equalizer/level_lines.h"

#include <cstddef>

#include "image/row_bands.h"

LevelLines::LevelLines(const KivImage& image) : size_(image.size), image_(&image) {}

LevelLines::LevelLines(IppiSize size, const LineSource& source) : size_(size), source_(&source) {}

LevelLines::Rows LevelLines::rows(int first, int end, float* scratch, int scratchBytes) const {
  if (image_ != nullptr) return {image_->At(0, 0, first), image_->stride};
  const std::ptrdiff_t step = scratchBytes / static_cast<int>(sizeof(float));
  float* const own = scratch + (end - first) * step;
  for (int y = first; y < end; ++y) source_->line(y, scratch + (y - first) * step, own);
  return {scratch, scratchBytes};
}

const KivImage& LevelLines::whole(KivImage& made) const {
  if (image_ != nullptr) return *image_;
  made.Init(size_, 1);
  readInto(made);
  return made;
}

void LevelLines::readInto(KivImage& image) const {
  constexpr int bandRows = 16;
  const std::int64_t scratchBytes = std::int64_t{rowsOfLines().inScratch(1)} * rowBytesFor(size_.width) + 1;
  eachBand(size_.height, bandRows, scratchBytes, [&](int first, int count, void* scratch) {
    for (int y = first; y < first + count; ++y) source_->line(y, image.At(0, 0, y), static_cast<float*>(scratch));
  });
}
