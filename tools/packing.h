// How samples are packed in a file: its compression, and the chroma of JPEG files. Both are kept from the input, as far
// as the output's format and samples allow.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <vips/vips8>

#include "formats.h"

struct SaveOptions {
  std::optional<int> quality;              // 1 to 100
  std::optional<std::string> compression;  // one of the format's words; if not given, or "keep", the input's
  std::optional<bool> halfChroma;          // both ways; if not given, as the image library does at that quality
};

// Throws Failure about the file when the format has no such quality or compression.
void requireThatFormatKnows(const FileFormat& format, const SaveOptions& options, const std::string& name);

// What is asked for, and the input's own packing where nothing is. `opened` came from `input`, by its page (from 1),
// and goes into the format with these samples. What can't be kept is noted. Compressions are kept within a format, and
// where they are lossless, never for a lossy one.
SaveOptions keepPacking(const std::string& input, int page, const vips::VImage& opened, const FileFormat& format,
                        VipsBandFormat samples, const SaveOptions& asked, std::vector<std::string>& notes);

// Sets them for the format's saver. Nothing is kept from here: without a compression it is the library's own.
void setPacking(const FileFormat& format, VipsBandFormat samples, const SaveOptions& options, vips::VOption& saver);
