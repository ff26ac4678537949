#include "pictures/colour_models.h"

#include "pictures/file_headers.h"

namespace orbel {

using vips::VImage;

std::string convertToRgb(VImage& picture) {
  switch (picture.interpretation()) {
    case VIPS_INTERPRETATION_CMYK: {
      if (picture.bands() != 4) return {};
      const bool own = picture.get_typeof(VIPS_META_ICC_NAME) != 0;
      const int depth = picture.format() == VIPS_FORMAT_USHORT ? 16 : 8;
      // Without a profile in the file the library's own for inks stands in.
      picture = picture.icc_transform("srgb", VImage::option()
                                                  ->set("embedded", true)
                                                  ->set("input_profile", "cmyk")
                                                  ->set("intent", VIPS_INTENT_RELATIVE)
                                                  ->set("depth", depth));
      return std::string("inks (CMYK) converted to sRGB, by ") + (own ? "the file's profile" : "a general profile");
    }
    case VIPS_INTERPRETATION_LAB:
    case VIPS_INTERPRETATION_LABS:
    case VIPS_INTERPRETATION_LABQ:
      picture = picture.colourspace(VIPS_INTERPRETATION_RGB16);
      picture.remove(VIPS_META_ICC_NAME);
      return "Lab converted to sRGB of 16 bits";
    default:
      return {};
  }
}

std::string noteOnPackedSamples(const std::string& name, int page, const VImage& picture) {
  const std::string loader = picture.get_string(VIPS_META_LOADER);
  const char* const indexed = "indexed colours converted to 8 bits";
  const char* const oneBit = "one-bit samples converted to 8 bits";
  if (picture.get_typeof("palette-bit-depth") != 0) return indexed;
  if (loader.rfind("png", 0) == 0 && pngBits(name) == 1) return oneBit;
  const std::optional<TiffHeader> tiff = loader.rfind("tiff", 0) == 0 ? tiffHeader(name, page) : std::nullopt;
  if (!tiff) return {};
  return tiff->indexed ? indexed : tiff->bits == 1 ? oneBit : "";
}

}  // namespace orbel
