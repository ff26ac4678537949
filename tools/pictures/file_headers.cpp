#include "pictures/file_headers.h"

#include <tiffio.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <limits>
#include <memory>

namespace orbel {

namespace {

using Tiff = std::unique_ptr<TIFF, void (*)(TIFF*)>;

// A number of some bytes, the first of them the most significant.
template <std::size_t count>
std::uint32_t bigEndian(std::istream& stream) {
  std::array<char, count> bytes{};
  stream.read(bytes.data(), bytes.size());
  std::uint32_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

std::string word(std::istream& stream) {
  std::string four(4, '\0');
  stream.read(four.data(), 4);
  return four;
}

// Start of frame, of any kind: beside these there are tables in the same range of markers.
bool beginsFrame(std::uint32_t marker) {
  return marker >= 0xFFC0 && marker <= 0xFFCF && marker != 0xFFC4 && marker != 0xFFC8 && marker != 0xFFCC;
}

// The marker of a JPEG file's frame, whose content comes next; 0 where there is none.
std::uint32_t jpegFrame(std::ifstream& stream) {
  if (bigEndian<2>(stream) != 0xFFD8) return 0;
  while (stream) {
    std::uint32_t marker = bigEndian<2>(stream);
    while (marker == 0xFFFF) marker = 0xFF00 | bigEndian<1>(stream);  // fill bytes
    const std::uint32_t size = bigEndian<2>(stream);
    if (marker < 0xFFC0 || size < 2) return 0;
    if (beginsFrame(marker)) return marker;
    stream.seekg(size - 2, std::ios::cur);
  }
  return 0;
}

}  // namespace

std::optional<TiffHeader> tiffHeader(const std::string& file, int page) {
  // Not mapped into memory (m): another program may cut the file short.
  const Tiff tiff(TIFFOpen(file.c_str(), "rm"), TIFFClose);
  if (!tiff || (page > 1 && TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page - 1)) == 0)) return std::nullopt;
  const auto field = [&](std::uint32_t tag) {
    std::uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff.get(), tag, &value);
    return value;
  };
  return TiffHeader{field(TIFFTAG_COMPRESSION), field(TIFFTAG_BITSPERSAMPLE),
                    field(TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP,
                    field(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_PALETTE};
}

std::string tiffCompression(const std::string& file, int page) {
  const std::optional<TiffHeader> header = tiffHeader(file, page);
  if (!header) return "";
  switch (header->compression) {
    case COMPRESSION_NONE:
      return "none";
    case COMPRESSION_LZW:
      return "lzw";
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return "deflate";
    case COMPRESSION_PACKBITS:
      return "packbits";
    case COMPRESSION_ZSTD:
      return "zstd";
    default: {
      const TIFFCodec* const codec = TIFFFindCODEC(static_cast<std::uint16_t>(header->compression));
      return codec != nullptr ? codec->name : "number " + std::to_string(header->compression);
    }
  }
}

std::string webpCompression(const std::string& file, int /*page*/) {
  std::ifstream stream(file, std::ios::binary);
  stream.seekg(12);  // behind "RIFF", the size, and "WEBP"
  for (int chunk = 0; stream && chunk < 100; ++chunk) {
    const std::string name = word(stream);
    if (name == "VP8L") return "lossless";
    if (name == "VP8 ") return "lossy";
    std::uint32_t size = 0;  // the least significant byte first
    for (int i = 0; i < 4; ++i) size |= bigEndian<1>(stream) << 8 * i;
    stream.seekg(std::streamoff{size} + size % 2, std::ios::cur);
  }
  return "";
}

bool jpegIsProgressive(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::uint32_t marker = jpegFrame(stream);
  return marker == 0xFFC2 || marker == 0xFFCA;  // by Huffman's codes, and by arithmetic ones
}

std::optional<ChromaShare> jpegChroma(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (jpegFrame(stream) == 0) return std::nullopt;
  stream.seekg(5, std::ios::cur);  // precision, height, width
  if (bigEndian<1>(stream) != 3) return std::nullopt;
  std::array<std::uint32_t, 3> factors{};  // across in the high four bits, down in the low ones
  for (std::uint32_t& factor : factors) factor = (bigEndian<3>(stream) >> 8) & 0xFF;
  const std::uint32_t across = factors[1] >> 4;
  const std::uint32_t down = factors[1] & 15;
  if (!stream || across == 0 || down == 0 || factors[1] != factors[2]) return std::nullopt;
  const ChromaShare share{static_cast<int>((factors[0] >> 4) / across), static_cast<int>((factors[0] & 15) / down)};
  return share.across > 0 && share.down > 0 ? std::optional<ChromaShare>(share) : std::nullopt;
}

bool netpbmSizeIs(const std::string& file, int width, int height) {
  std::ifstream stream(file, std::ios::binary);
  if (stream.get() != 'P') return true;
  stream.get();  // the kind
  for (const int side : {width, height}) {
    while ((stream >> std::ws).peek() == '#') stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    std::int64_t number = 0;
    if (!(stream >> number) || number != side) return false;
  }
  return true;
}

int pngBits(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return stream.seekg(24).get();
}

bool pngIsInterlaced(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return stream.seekg(28).get() == 1;
}

int photoshopBits(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (word(stream) != "8BPS") return 0;
  stream.seekg(22);
  return static_cast<int>(bigEndian<2>(stream));
}

}  // namespace orbel
