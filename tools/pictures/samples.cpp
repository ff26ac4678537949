#include "pictures/samples.h"

namespace orbel {

using vips::VImage;

namespace {

// The colour model of such a picture, grey or RGB, with samples of this format.
VipsInterpretation modelFor(VipsBandFormat format, const VImage& picture) {
  const bool grey = colourBands(picture) == 1;
  if (format == VIPS_FORMAT_USHORT) return grey ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16;
  if (grey) return VIPS_INTERPRETATION_B_W;
  return format == VIPS_FORMAT_UCHAR ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_scRGB;
}

}  // namespace

VImage scaledTo(VipsBandFormat format, const VImage& picture) {
  if (picture.format() == format) return picture;
  const VImage scaled = picture * (whiteOf(format) / whiteOf(picture.format()));
  return (format == VIPS_FORMAT_FLOAT ? scaled : scaled.rint())
      .cast(format)
      .copy(VImage::option()->set("interpretation", modelFor(format, picture)));
}

}  // namespace orbel
