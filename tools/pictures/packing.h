// Of save.h, what is for the image library alone.
#pragma once

#include <vips/vips8>

#include "pictures/save.h"

namespace orbel {

// Sets the options for the format's saver; what isn't given is as the library has it.
void setPacking(const FileFormat& format, SampleType samples, const SaveOptions& options, vips::VOption& saver);

}  // namespace orbel
