#include "pictures/hidden_metadata.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <set>

namespace orbel {

namespace {

// Numbers of a file in its byte order. Behind its end they are 0, and the file is no longer good().
class Numbers {
 public:
  explicit Numbers(const std::string& file) : stream_(file, std::ios::binary) {}

  bool good() const { return stream_.good(); }
  void setBigEndian(bool big) { big_ = big; }
  void go(std::uint64_t position) { stream_.seekg(static_cast<std::streamoff>(position)); }
  void skip(std::uint64_t bytes) { stream_.seekg(static_cast<std::streamoff>(bytes), std::ios::cur); }

  std::uint64_t number(unsigned bytes) {
    unsigned char raw[8] = {};
    stream_.read(reinterpret_cast<char*>(raw), bytes);
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i) value = value << 8 | raw[big_ ? i : bytes - 1 - i];
    return value;
  }
  std::string text(std::size_t bytes) {
    std::string raw(bytes, '\0');
    stream_.read(raw.data(), static_cast<std::streamsize>(bytes));
    return raw;
  }

 private:
  std::ifstream stream_;
  bool big_ = true;
};

// Tags of a TIFF directory that say how the samples lie, with those that the library keeps: orientation, resolution,
// XMP and the colour profile. (TIFF 6.0, its Technical Notes 1 and 2, and Adobe's tags of Photoshop's layers.)
const std::set<std::uint64_t> plainTags = {254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266,   273,  274, 277,
                                           278, 279, 280, 281, 282, 283, 284, 290, 291, 296, 297,   301,  317, 318,
                                           319, 320, 321, 322, 323, 324, 325, 330, 332, 333, 334,   336,  337, 338,
                                           339, 340, 341, 342, 347, 529, 530, 531, 532, 700, 34675, 37724};

}  // namespace

bool pngHidesMetadata(const std::string& file, const Metadata& seen) {
  Numbers numbers(file);
  numbers.go(8);
  while (true) {
    const std::uint64_t length = numbers.number(4);
    const std::string type = numbers.text(4);
    if (!numbers.good()) return true;
    if (type == "IEND") return false;
    std::uint64_t read = 0;
    if (type == "tEXt" || type == "zTXt" || type == "iTXt") {
      constexpr std::uint64_t longestKeyword = 79;
      read = std::min(length, longestKeyword + 1);
      std::string keyword = numbers.text(read);
      keyword.resize(std::min(keyword.size(), keyword.find('\0')));
      const bool isXmp = keyword == "XML:com.adobe.xmp";
      if (isXmp && !seen.xmp) return true;
      // The library writes a keyword up to its first blank, and any text in Latin-1. IPTC is under such a keyword.
      if (!isXmp && (type == "iTXt" || keyword.find(' ') != std::string::npos)) return true;
    }
    if (type == "eXIf" && !seen.exif) return true;
    constexpr std::uint64_t checksum = 4;
    numbers.skip(length - read + checksum);
  }
}

bool tiffHidesMetadata(const std::string& file, const Metadata& /*seen*/) {
  Numbers numbers(file);
  numbers.setBigEndian(numbers.text(2) == "MM");
  const bool big = numbers.number(2) == 43;  // BigTIFF
  if (big) numbers.skip(4);
  numbers.go(numbers.number(big ? 8 : 4));
  const std::uint64_t entries = numbers.number(big ? 8 : 2);
  for (std::uint64_t i = 0; i < entries && numbers.good(); ++i) {
    if (plainTags.count(numbers.number(2)) == 0) return true;
    numbers.skip(big ? 18 : 10);
  }
  return !numbers.good();
}

}  // namespace orbel
