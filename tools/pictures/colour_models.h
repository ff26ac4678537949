// Pictures of other colour models than RGB and grey.
#pragma once

#include <string>
#include <vips/vips8>

namespace orbel {

// Makes RGB of inks and Lab, and tells so in a note; empty when nothing was to be done. Other models stay as they are.
// Throws vips::VError.
std::string convertToRgb(vips::VImage& picture);

// A note about a file of indexed colours or of one bit a sample, which the image library has turned into 8 bits on its
// own; empty for all others. Looks into the file itself, at its page (from 1), as the library doesn't tell.
std::string noteOnPackedSamples(const std::string& name, int page, const vips::VImage& picture);

}  // namespace orbel
