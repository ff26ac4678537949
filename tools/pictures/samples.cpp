#include "pictures/samples.h"

namespace orbel {

using vips::VImage;

VipsInterpretation modelFor(VipsBandFormat format, const VImage& picture) {
  if (picture.format() == format) return picture.interpretation();
  const bool grey = colourBands(picture) == 1;
  if (format == VIPS_FORMAT_USHORT) return grey ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16;
  if (grey) return VIPS_INTERPRETATION_B_W;
  return format == VIPS_FORMAT_UCHAR ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_scRGB;
}

VImage scaledTo(VipsBandFormat format, const VImage& picture) {
  if (picture.format() == format) return picture;
  const VImage scaled = picture * (whiteOf(format) / whiteOf(picture.format()));
  return (format == VIPS_FORMAT_FLOAT ? scaled : scaled.rint())
      .cast(format)
      .copy(VImage::option()->set("interpretation", modelFor(format, picture)));
}

}  // namespace orbel
