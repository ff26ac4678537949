// The file formats that pictures are read from and written in.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "pictures/picture.h"

namespace orbel {

// Kinds of metadata.
struct Metadata {
  bool icc = false;
  bool exif = false;  // with the orientation
  bool xmp = false;
  bool iptc = false;
};

// What is peculiar to a format where the image library reads it.
enum LoaderTrait : unsigned {
  pagesAreOne = 1,         // what it calls pages is one picture: at several resolutions, or in layers
  resolutionInExif = 2,    // and there alone, where its savers write the picture's own
  garblesIptc = 4,         // it gets a part, or without the frame that it has in a JPEG file
  whiteUnsaid = 8,         // white is 1 in float colour, and it doesn't say so
  sizeClipped = 16,        // it takes a side that can't be for 1
  lendsMetadata = 32,      // copies of a picture have it no longer than the picture itself
  seesMetadata = 64,       // all of it
  seesSomeMetadata = 128,  // of a file that has any, or nearly always
  goesOnInComments = 256,  // metadata may follow behind a comment, which exiftool in haste takes for the end
  seesXmp = 512,           // in every file that has it
  readsTwice = 1024,       // soon enough for a picture that isn't kept to be read once more
};

struct Loader {
  const char* name;  // of its operations, to the word "load"
  unsigned traits = 0;
  // A file's compression by its word for --compression, or by the name of one that is none; empty where it can't be
  // told. Null where the library's own settings are as good as any.
  std::string (*compressionOf)(const std::string& file, int page) = nullptr;
  // Whether a file may hold metadata beside those that the library sees. Null where nobody has looked: it may.
  bool (*hidesMetadata)(const std::string& file, const Metadata& seen) = nullptr;
  // What it holds of a picture while it reads, about: bytes a pixel, measured with 8 bits in colour, and so many times
  // the decoded picture. Null for whether a file is so: all are.
  double heldBytes = 0;
  double heldPictures = 0;
  bool (*holds)(const std::string& file) = nullptr;

  double heldBytesOf(const std::string& file, int bytesOfPixel) const {
    return holds == nullptr || holds(file) ? heldBytes + heldPictures * bytesOfPixel : 0;
  }

  bool has(LoaderTrait trait) const { return (traits & trait) != 0; }
};

// An option of the image library's operation, by its number.
struct SaverOption {
  const char* name;
  int value;
};

// A way to pack samples, by its word for --compression.
struct Compression {
  std::string word;
  SaverOption option;
};

// How the image library writes a format.
struct Saver {
  const char* operation = nullptr;        // null: the format is only read
  int quality = 0;                        // of what is written without --quality; 0: the format has none
  std::vector<Compression> compressions;  // the values of --compression
  std::string standIn{};                  // the compression for an input's that can't be kept; empty: none is kept
  std::vector<SaverOption> options{};     // that are always set
  bool predicts = false;                  // differences of neighbours are packed, by the kind of the samples
  bool halvesChroma = false;              // or doesn't, as asked
  bool wholeFirst = false;                // in memory: its encoder tries for ever to write to a disk that is full
  bool checksSums = false;                // exiftool does, in the written file, unless it is told to make haste
  std::size_t mostXmp = std::numeric_limits<std::size_t>::max();  // bytes of a packet that it doesn't leave out
  bool wantsBareXmp = false;                                      // a packet in a wrapper is none to its loader
  // What reading, writing and all else but the filtering take on one core: between JPEG (40) and PNG (150), as with
  // JPEG 2000 and WebP, on an AMD EPYC.
  double nanosecondsPerPixel = 100;
  double heldBytes = 0;  // a pixel, while it writes, about
};

struct FileFormat {
  std::vector<std::string> extensions;
  std::string name;
  Loader loader;
  Saver saver;
  int colours;  // bands beside alpha: 1, 3, or 0 for either
  bool alpha;
  std::vector<SampleType> samples;
  Metadata kept;      // by the image library
  Metadata repaired;  // by exiftool, beyond that

  bool isWritten() const { return saver.operation != nullptr; }
};

const std::vector<FileFormat>& fileFormats();

// In lower case and without its point; empty when there is none.
std::string extensionOf(const std::string& name);

// The format of an extension, or null.
const FileFormat* findFormat(const std::string& extension);

// The first format of the loader that the picture came by, or null.
const FileFormat* formatOf(const Picture& opened);

// Whether files of this extension are a camera's raw data, which want a developer's decisions first.
bool isCameraRaw(const std::string& extension);

// What to do about such a file, or about one of no known format.
inline constexpr const char* developFirst = "develop it to a 16-bit TIFF first, with darktable or RawTherapee";
inline constexpr const char* convertFirst = "convert it to a 16-bit TIFF first; orbel formats lists what is read";

// The format to write a file of this extension in. Throws Failure about the file when there is none.
const FileFormat& writableFormat(const std::string& extension, const std::string& name);

// "8-bit samples", …
std::string samplesName(SampleType samples);

// Throws Failure about the file when the format would lose something of a picture with these samples: alpha, colour or
// depth.
void requireThatFormatHolds(const FileFormat& format, const Picture& picture, SampleType samples,
                            const std::string& name);

}  // namespace orbel
