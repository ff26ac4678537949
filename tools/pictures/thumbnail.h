// The small picture in a file's EXIF, which file browsers and cameras show.
#pragma once

#include "pictures/picture.h"

namespace orbel {

// Where the picture carries a thumbnail, one of the picture as it is now takes its place: turned as the picture's
// samples are, in sRGB, without alpha, at most 160 pixels a side as in Exif 2.32. Throws Failure about the picture's
// file.
void renewThumbnail(Picture& picture);

}  // namespace orbel
