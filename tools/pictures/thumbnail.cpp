#include "pictures/thumbnail.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pictures/errors.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

namespace {

constexpr const char* thumbnailField = "jpeg-thumbnail-data";
constexpr int longestSide = 160;

// Twice that is enough to look as good as a copy of all.
constexpr int leastOfCopy = 2 * longestSide;

// Of the lines of a square, so many count.
constexpr int mostLines = 4;

// Throws vips::VError.
void renew(const VImage& picture, const VImage& shown) {
  VImage small = shown.thumbnail_image(longestSide, VImage::option()
                                                        ->set("height", longestSide)
                                                        ->set("size", VIPS_SIZE_DOWN)
                                                        ->set("no_rotate", true)
                                                        ->set("export_profile", "srgb"));
  if (small.has_alpha()) small = small.flatten();
  VipsBlob* const blob = small.jpegsave_buffer(VImage::option()->set("Q", 85)->set("strip", true));
  std::size_t size = 0;
  const void* const bytes = vips_blob_get(blob, &size);
  vips_image_set_blob_copy(picture.get_image(), thumbnailField, bytes, size);
  vips_area_unref(VIPS_AREA(blob));
}

// Sums of squares of which a line crosses so many.
template <typename Sample>
void addLine(const void* line, int channels, int side, int squares, float* sums) {
  const auto* sample = static_cast<const Sample*>(line);
  for (int i = 0; i < squares; ++i, sums += channels) {
    for (int x = 0; x < side; ++x, sample += channels) {
      for (int c = 0; c < channels; ++c) sums[c] += static_cast<float>(sample[c]);
    }
  }
}

}  // namespace

bool hasThumbnail(const Picture& picture) { return imageOf(picture).get_typeof(thumbnailField) != 0; }

void renewThumbnail(const Picture& picture, const Picture& shown) {
  if (!hasThumbnail(picture)) return;
  translated(nameOf(picture), Cause::Other, [&] { renew(imageOf(picture), imageOf(shown)); });
}

SmallCopy::SmallCopy(const Picture& picture)
    : picture_(picture),
      side_(std::max({1, std::min({picture.width(), picture.height(),
                                   std::max(picture.width(), picture.height()) / leastOfCopy})})),
      width_(picture.width() / side_),
      height_(picture.height() / side_),
      sums_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_ * picture.channels())) {}

void SmallCopy::take(const orbel_picture& lines) {
  const int step = std::max(1, side_ / mostLines);
  for (int y = 0; y < lines.height; ++y, ++line_) {
    if (line_ % side_ % step != 0 || line_ / side_ >= height_) continue;
    const void* const line = static_cast<const unsigned char*>(lines.base[0]) + y * lines.row_step;
    float* const sums = sums_.data() + std::ptrdiff_t{line_ / side_} * width_ * lines.channels;
    const auto add = lines.samples == ORBEL_UINT8    ? addLine<std::uint8_t>
                     : lines.samples == ORBEL_UINT16 ? addLine<std::uint16_t>
                                                     : addLine<float>;
    add(line, lines.channels, side_, width_, sums);
  }
}

Picture SmallCopy::copy() const {
  const VImage& whole = imageOf(picture_);
  return translated(nameOf(picture_), Cause::Other, [&] {
    const int step = std::max(1, side_ / mostLines);
    const double samples = static_cast<double>(side_) * ((side_ - 1) / step + 1);
    const VImage sums = VImage::new_from_memory(const_cast<float*>(sums_.data()), sums_.size() * sizeof(float), width_,
                                                height_, picture_.channels(), VIPS_FORMAT_FLOAT);
    const VImage mean = sums / samples;
    const VImage small = (whole.format() == VIPS_FORMAT_FLOAT ? mean : mean.rint())
                             .cast(whole.format())
                             .copy(VImage::option()->set("interpretation", whole.interpretation()))
                             .copy_memory();
    if (whole.get_typeof(VIPS_META_ICC_NAME) != 0) {
      std::size_t size = 0;
      const void* const profile = whole.get_blob(VIPS_META_ICC_NAME, &size);
      vips_image_set_blob_copy(small.get_image(), VIPS_META_ICC_NAME, profile, size);
    }
    return pictureOf(small, nameOf(picture_));
  });
}

}  // namespace orbel
