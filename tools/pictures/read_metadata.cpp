#include "pictures/read_metadata.h"

#include <cstddef>
#include <cstdio>

#include "pictures/formats.h"

namespace orbel {

using vips::VImage;

namespace {

void takeResolutionFromExif(VImage& picture) {
  const auto field = [&](const char* name) {
    double number = 0;
    double over = 1;
    if (picture.get_typeof(name) != 0) std::sscanf(picture.get_string(name), "%lf/%lf", &number, &over);
    return number / over;
  };
  const double millimetres = field("exif-ifd0-ResolutionUnit") == 3 ? 10 : 25.4;  // centimetres or inches
  const double x = field("exif-ifd0-XResolution") / millimetres;
  const double y = field("exif-ifd0-YResolution") / millimetres;
  if (x > 0 && y > 0) picture = picture.copy(VImage::option()->set("xres", x)->set("yres", y));
}

void ownMetadata(VImage& picture) {
  picture = picture.copy();
  gchar** const names = vips_image_get_fields(picture.get_image());
  for (gchar** name = names; *name != nullptr; ++name) {
    if (picture.get_typeof(*name) != VIPS_TYPE_BLOB) continue;
    std::size_t size = 0;
    const void* const lent = picture.get_blob(*name, &size);
    vips_image_set_blob_copy(picture.get_image(), *name, lent, size);
  }
  g_strfreev(names);
}

}  // namespace

void putMetadataRight(VImage& picture, unsigned loaderTraits) {
  if ((loaderTraits & resolutionInExif) != 0) takeResolutionFromExif(picture);
  if ((loaderTraits & lendsMetadata) != 0) ownMetadata(picture);
  // The library counts IPTC in TIFF files in bytes where they count in words: it reads a part.
  if ((loaderTraits & garblesIptc) != 0) dropIptc(picture);
}

void dropIptc(VImage& picture) {
  if (picture.get_typeof(VIPS_META_IPTC_NAME) == 0) return;
  picture = picture.copy();
  picture.remove(VIPS_META_IPTC_NAME);
  picture.set(droppedIptc, 1);
}

}  // namespace orbel
