// What a picture's file says about it beside its samples, and how it gets into the file that is written.
#pragma once

#include <string>

#include "exiftool.h"
#include "image_file.h"
#include "target_file.h"

// As far as the image library sees it. It doesn't see EXIF and IPTC of TIFF and Photoshop files.
Metadata metadataOf(const vips::VImage& picture);

// The picture's XMP packet; empty where it has none. And the picture with another one.
std::string xmpOf(const vips::VImage& picture);
vips::VImage withXmp(const std::string& packet, const vips::VImage& picture);

// The picture with its file's XMP where only exiftool sees that: what is put into the packet goes beside it then.
vips::VImage withHiddenXmp(const std::string& input, const vips::VImage& picture, const FileFormat& format,
                           const AskExiftool& askExiftool);

// Puts into a file that the image library has written what the library leaves out, by exiftool where that is installed,
// and looks whether it is there; target is null for the standard output, which exiftool can't reach. Tags of structure
// are left out, the colour profile is the library's business. Returns notes on what is missing then, and why. Throws
// Failure when the file can't be replaced.
Notes completeMetadata(const std::string& input, const vips::VImage& picture, TargetFile* target,
                       const FileFormat& format, const AskExiftool& askExiftool);
