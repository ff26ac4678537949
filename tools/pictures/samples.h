// Types of samples, by the image library's names for them.
#pragma once

#include <vips/vips8>

#include "pictures/picture.h"

namespace orbel {

constexpr VipsBandFormat formatFor(SampleType samples) {
  return samples == SampleType::bytes   ? VIPS_FORMAT_UCHAR
         : samples == SampleType::words ? VIPS_FORMAT_USHORT
                                        : VIPS_FORMAT_FLOAT;
}

constexpr SampleType samplesOf(VipsBandFormat format) {
  return format == VIPS_FORMAT_UCHAR    ? SampleType::bytes
         : format == VIPS_FORMAT_USHORT ? SampleType::words
                                        : SampleType::floats;
}

inline int colourBands(const vips::VImage& picture) { return picture.bands() >= 3 ? 3 : 1; }

inline double whiteOf(VipsBandFormat format) {
  return format == VIPS_FORMAT_UCHAR ? 255 : format == VIPS_FORMAT_USHORT ? 65535 : 1;
}

// The colour model of such a picture, grey or RGB, with samples of this format; its own where it has them.
VipsInterpretation modelFor(VipsBandFormat format, const vips::VImage& picture);

// The picture with samples of this format, scaled from white to white, alpha too; itself if it has them. Throws
// vips::VError.
vips::VImage scaledTo(VipsBandFormat format, const vips::VImage& picture);

}  // namespace orbel
