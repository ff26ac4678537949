// Image files in and out, through libvips.
#pragma once

#include <string>
#include <vips/vips8>

#include "plugin_host.h"

// libvips, started and shut down; pictures live in between. Its own warnings go to the error output when verbose,
// nowhere otherwise.
class ImageLibrary {
 public:
  ImageLibrary(const char* programName, bool verbose);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;
};

// The whole picture, decoded into memory of its own. Colour is three bands, grey one, and one band of alpha may follow;
// samples are of 8 or 16 bits or floats. Throws Failure for what is no such picture: colour models other than RGB and
// grey, several pages, other sample types, and files that can't be read to their end.
vips::VImage loadPicture(const std::string& name);

// The picture's colour planes as a document of the depth of its samples: one plane for grey, alpha left out.
//
// 16-bit files reach to 65535 and documents to 32768, so two levels of a file share one of the document: samples that
// the plug-in leaves alone come back at most 1 of 65535 away.
Document documentOf(const vips::VImage& picture);

// Puts the document's planes in the place of the picture's colour samples, where they lie in memory: alpha and metadata
// stay as they were loaded. What exceeds a 16-bit file's white becomes white.
void putDocument(const Document& document, vips::VImage& picture);

// A file format that pictures can be written in.
struct FileFormat;

// The format that a name's extension stands for. Throws Failure when there is none.
const FileFormat& formatOf(const std::string& name);

// Throws Failure when the format would lose something of the picture: alpha, colour or the depth of its samples.
void requireThatFormatHolds(const FileFormat& format, const vips::VImage& picture, const std::string& name);

// Encodes the picture into an open file. name is for messages. Throws Failure.
void savePicture(const vips::VImage& picture, const FileFormat& format, int descriptor, const std::string& name);
