// Image files in and out, through libvips.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include <vips/vips8>

#include "pictures/packing.h"
#include "plugin/plugin_host.h"

namespace orbel {

// libvips, started and shut down; pictures live in between. Its own warnings go to the error output when verbose,
// nowhere otherwise.
class ImageLibrary {
 public:
  ImageLibrary(const char* programName, bool verbose);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;
};

// The standard input or output in the place of a file.
inline const std::string pipeName = "-";

// A field of pictures whose file holds IPTC that the library can't read.
inline constexpr const char* droppedIptc = "orbel-dropped-iptc";

using Notes = std::vector<std::string>;

// A picture whose header has been read; its samples are decoded when it is written somewhere, once. Colour is three
// bands, grey one, and one band of alpha may follow; samples are of 8 or 16 bits or floats. What was converted to get
// there is noted. Of several pages or frames, page (from 1) takes one. Throws Failure for what is no such picture:
// other colour models, several pages and none chosen, other sample types, a camera's raw data, and files that can't be
// read.
vips::VImage openPicture(const std::string& name, Notes& notes, std::optional<int> page = {});

// Throws Failure for what can't be read, isn't a regular file, or is empty.
void requireFileWithContent(const std::string& name);

// The whole picture in memory of its own. Throws Failure about the file when it can't be read to its end.
vips::VImage decodePicture(const vips::VImage& opened, const std::string& name);

// Reads the samples and keeps none of them. Throws Failure as decodePicture does.
void requireThatItDecodes(const vips::VImage& opened, const std::string& name);

// Both, for whoever does without the notes.
vips::VImage loadPicture(const std::string& name, std::optional<int> page = {});

int colourBands(const vips::VImage& picture);  // 1 or 3
bool hasAlpha(const vips::VImage& picture);

// The picture with samples of this format, scaled from white to white, alpha too; in memory of its own.
vips::VImage withSamples(const vips::VImage& picture, VipsBandFormat samples);

// The depth of the picture's samples: 8, 16 or 32.
int depthOf(const vips::VImage& picture);

// The picture's colour planes as a document of this depth: one plane for grey, alpha left out. White goes to white.
//
// 16-bit files reach to 65535 and 16-bit documents to 32768, so two levels of a file share one of such a document:
// samples that the plug-in leaves alone come back at most 1 of 65535 away. By way of 32 bits they come back as they
// were.
Document documentOf(const vips::VImage& picture, int depth);
inline Document documentOf(const vips::VImage& picture) { return documentOf(picture, depthOf(picture)); }

// Puts the document's planes in the place of the picture's colour samples, where they lie in memory: alpha and metadata
// stay as they are. What exceeds the range of the picture's integers becomes its black or white.
void putDocument(const Document& document, vips::VImage& picture);

// Encodes the picture into an open file. name is for messages. Throws Failure.
void savePicture(const vips::VImage& picture, const FileFormat& format, int descriptor, const std::string& name,
                 const SaveOptions& options = {});

// The same to the standard output, which gets all or nothing.
void savePictureToPipe(const vips::VImage& picture, const FileFormat& format, const SaveOptions& options);

}  // namespace orbel
