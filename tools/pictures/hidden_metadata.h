// Looks into PNG and TIFF files for metadata that the image library doesn't see or would spoil: starting exiftool to
// find out would cost more than the picture. In doubt, and for files that make no sense, the answer is yes.
#pragma once

#include <string>

#include "pictures/formats.h"

namespace orbel {

// seen: by the image library.
bool pngHidesMetadata(const std::string& file, const Metadata& seen);
bool tiffHidesMetadata(const std::string& file, const Metadata& seen);

}  // namespace orbel
