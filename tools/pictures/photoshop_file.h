// Photoshop's own files, which the image library reads by another library.
#pragma once

#include <string>
#include <vips/vips8>

namespace orbel {

// bits: of a sample, as the file's header has it. Throws vips::VError.
vips::VImage openPhotoshop(const std::string& name, int bits);

}  // namespace orbel
