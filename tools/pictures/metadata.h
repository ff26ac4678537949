// What a picture's file says about it beside its samples, and how it gets into the file that is written.
#pragma once

#include <string>

#include "files/target_file.h"
#include "pictures/exiftool.h"
#include "pictures/formats.h"
#include "pictures/picture.h"

namespace orbel {

// As far as the image library sees it. It doesn't see EXIF and IPTC of TIFF and Photoshop files.
Metadata metadataOf(const Picture& picture);

// The picture with its file's XMP where only exiftool sees that: what is put into the packet goes beside it then.
Picture withHiddenXmp(const std::string& input, const Picture& picture, const FileFormat& format,
                      const AskExiftool& askExiftool);

// Puts into a file that the image library has written what the library leaves out, by exiftool where that is installed,
// and looks whether it is there; target is null for the standard output, which exiftool can't reach. Tags of structure
// are left out, the colour profile is the library's business. Returns notes on what is missing then, and why. Throws
// Failure when the file can't be replaced.
Notes completeMetadata(const std::string& input, const Picture& picture, TargetFile* target, const FileFormat& format,
                       const AskExiftool& askExiftool);

}  // namespace orbel
