// The file formats that pictures are read from and written in.
#pragma once

#include <string>
#include <vector>
#include <vips/vips8>

// Kinds of metadata.
struct Metadata {
  bool icc = false;
  bool exif = false;  // with the orientation
  bool xmp = false;
  bool iptc = false;
};

struct FileFormat {
  std::vector<std::string> extensions;
  std::string name;
  const char* operation;  // that writes it; null: only read
  int quality;            // of what is written without --quality; 0: the format has none
  int colours;            // bands beside alpha: 1, 3, or 0 for either
  bool alpha;
  std::vector<VipsBandFormat> samples;
  Metadata kept;      // by the image library
  Metadata repaired;  // by exiftool, beyond that
};

const std::vector<FileFormat>& fileFormats();

// In lower case and without its point; empty when there is none.
std::string extensionOf(const std::string& name);

// The format of an extension, or null.
const FileFormat* findFormat(const std::string& extension);

// The format to write a file of this extension in. Throws Failure about the file when there is none.
const FileFormat& writableFormat(const std::string& extension, const std::string& name);

// "8-bit samples", …
std::string samplesName(VipsBandFormat samples);

// Throws Failure about the file when the format would lose something of a picture with these samples: alpha, colour or
// depth.
void requireThatFormatHolds(const FileFormat& format, const vips::VImage& picture, VipsBandFormat samples,
                            const std::string& name);
