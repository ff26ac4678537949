#include "pictures/thumbnail.h"

#include <cstddef>

#include "pictures/errors.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

namespace {

constexpr const char* thumbnailField = "jpeg-thumbnail-data";
constexpr int longestSide = 160;

// Throws vips::VError.
void renew(const VImage& picture) {
  VImage small = picture.thumbnail_image(longestSide, VImage::option()
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

}  // namespace

void renewThumbnail(Picture& picture) {
  if (imageOf(picture).get_typeof(thumbnailField) == 0) return;
  translated(nameOf(picture), Cause::Other, [&] { renew(imageOf(picture)); });
}

}  // namespace orbel
