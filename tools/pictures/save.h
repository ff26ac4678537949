// Pictures into files: what can be chosen about it, and the writing.
#pragma once

#include <optional>
#include <string>

#include "pictures/formats.h"
#include "pictures/picture.h"

namespace orbel {

// How samples are packed: a file's compression, and the chroma of JPEG files.
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
SaveOptions keepPacking(const std::string& input, int page, const Picture& opened, const FileFormat& format,
                        const SaveOptions& asked, Notes& notes);

// Encodes the picture into an open file. name is for messages. Throws Failure.
void savePicture(const Picture& picture, const FileFormat& format, int descriptor, const std::string& name,
                 const SaveOptions& options = {});

// The same to the standard output, which gets all or nothing.
void savePictureToPipe(const Picture& picture, const FileFormat& format, const SaveOptions& options);

}  // namespace orbel
