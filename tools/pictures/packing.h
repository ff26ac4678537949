// How samples are packed in a file: its compression, and the chroma of JPEG files. Both are kept from the input, as far
// as the output's format and samples allow.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <vips/vips8>

#include "pictures/formats.h"

namespace orbel {

struct SaveOptions {
  std::optional<int> quality;              // 1 to 100
  std::optional<std::string> compression;  // one of the format's words; if not given, or "keep", the input's
  std::optional<bool> halfChroma;          // both ways; if not given, as the image library does at that quality
};

// Throws Failure about the file when the format has no such quality or compression.
void requireThatFormatKnows(const FileFormat& format, const SaveOptions& options, const std::string& name);

// What is asked for, and the input's own packing where nothing is, within a format. `opened` came from `input`, by its
// page (from 1). What isn't kept is noted: a lossy compression in a TIFF file becomes a lossless one, or the picture
// would lose again.
SaveOptions keepPacking(const std::string& input, int page, const vips::VImage& opened, const FileFormat& format,
                        const SaveOptions& asked, std::vector<std::string>& notes);

// Sets them for the format's saver; what isn't given is as the library has it.
void setPacking(const FileFormat& format, VipsBandFormat samples, const SaveOptions& options, vips::VOption& saver);

}  // namespace orbel
