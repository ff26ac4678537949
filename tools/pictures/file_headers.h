// What the headers of picture files tell, and the image library doesn't.
#pragma once

#include <optional>
#include <string>

namespace orbel {

struct TiffHeader {
  int compression = 0;  // of libtiff's COMPRESSION_…
  int bits = 0;         // of a sample
  bool floats = false;
  bool indexed = false;  // colours
};

// Of a page, from 1. Nothing for what is no TIFF file.
std::optional<TiffHeader> tiffHeader(const std::string& file, int page);

// By its word for --compression, else by libtiff's name for it.
std::string tiffCompression(const std::string& file, int page);

// "lossy" or "lossless", by the first picture in the file; empty where neither can be told.
std::string webpCompression(const std::string& file, int page);

// How many pixels share a sample of chroma in a JPEG file, across and down: 1 and 1 for 4:4:4, 2 and 2 for 4:2:0.
struct ChromaShare {
  int across = 1;
  int down = 1;
};

// Nothing for grey and inks, and for what is no JPEG file.
std::optional<ChromaShare> jpegChroma(const std::string& file);

// Whether all of a file has to be read before its first line is known.
bool jpegIsProgressive(const std::string& file);
bool pngIsInterlaced(const std::string& file);

// Whether a PPM, PGM or PFM file is of this size by its header; true for other files.
bool netpbmSizeIs(const std::string& file, int width, int height);

// The bits of a PNG file's sample.
int pngBits(const std::string& file);

// The bits of a sample in one of Photoshop's own files; 0 for other files.
int photoshopBits(const std::string& file);

}  // namespace orbel
