// Metadata that the image library reads otherwise than the file has it, put right.
#pragma once

#include <vips/vips8>

namespace orbel {

// A field of pictures whose file holds IPTC that the library can't read.
inline constexpr const char* droppedIptc = "orbel-dropped-iptc";

// For loaders with these traits (see formats.h), before anything else looks at the picture. Throws vips::VError.
void putMetadataRight(vips::VImage& picture, unsigned loaderTraits);

// Leaves IPTC out of a picture, and says so in the field above. Throws vips::VError.
void dropIptc(vips::VImage& picture);

}  // namespace orbel
