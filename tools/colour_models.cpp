#include "colour_models.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>

using vips::VImage;

namespace {

// The number at one of a TIFF file's tags in its first directory; 0 when it isn't there. Enough for small numbers.
class TiffTags {
 public:
  explicit TiffTags(const std::string& name) : file_(name, std::ios::binary) {
    std::array<char, 4> head{};
    file_.read(head.data(), head.size());
    little_ = head[0] == 'I';
    const bool classic = head[little_ ? 2 : 3] == 42;
    directory_ = classic ? number(4, 4) : 0;
  }
  std::uint32_t tag(std::uint32_t wanted) {
    if (directory_ == 0) return 0;
    const std::uint32_t count = number(directory_, 2);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint32_t entry = directory_ + 2 + 12 * i;
      if (number(entry, 2) == wanted) return number(entry + 8, 2);
    }
    return 0;
  }

 private:
  std::uint32_t number(std::uint32_t at, int bytes) {
    file_.seekg(at);
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) {
      const auto byte = static_cast<std::uint32_t>(file_.get() & 0xFF);
      value |= byte << 8 * (little_ ? i : bytes - 1 - i);
    }
    return file_ ? value : 0;
  }

  std::ifstream file_;
  bool little_ = true;
  std::uint32_t directory_ = 0;
};

// The bits of a sample in a PNG file's header.
int pngBits(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return file.seekg(24).get();
}

}  // namespace

std::string convertToRgb(VImage& picture) {
  switch (picture.interpretation()) {
    case VIPS_INTERPRETATION_CMYK: {
      if (picture.bands() != 4) return {};
      const bool own = picture.get_typeof(VIPS_META_ICC_NAME) != 0;
      const int depth = picture.format() == VIPS_FORMAT_USHORT ? 16 : 8;
      // Without a profile in the file the library's own for inks stands in.
      picture = picture.icc_transform("srgb", VImage::option()
                                                  ->set("embedded", true)
                                                  ->set("input_profile", "cmyk")
                                                  ->set("intent", VIPS_INTENT_RELATIVE)
                                                  ->set("depth", depth));
      return std::string("inks (CMYK) converted to sRGB, by ") + (own ? "the file's profile" : "a general profile");
    }
    case VIPS_INTERPRETATION_LAB:
    case VIPS_INTERPRETATION_LABS:
    case VIPS_INTERPRETATION_LABQ:
      picture = picture.colourspace(VIPS_INTERPRETATION_RGB16);
      picture.remove(VIPS_META_ICC_NAME);
      return "Lab converted to sRGB of 16 bits";
    default:
      return {};
  }
}

std::string noteOnPackedSamples(const std::string& name, const VImage& picture) {
  const std::string loader = picture.get_string(VIPS_META_LOADER);
  const char* const indexed = "indexed colours converted to 8 bits";
  const char* const oneBit = "one-bit samples converted to 8 bits";
  if (picture.get_typeof("palette-bit-depth") != 0) return indexed;
  if (loader.rfind("png", 0) == 0 && pngBits(name) == 1) return oneBit;
  if (loader.rfind("tiff", 0) == 0) {
    constexpr std::uint32_t bitsPerSample = 258;
    constexpr std::uint32_t photometric = 262;
    constexpr std::uint32_t palette = 3;
    TiffTags tags(name);
    if (tags.tag(photometric) == palette) return indexed;
    if (tags.tag(bitsPerSample) == 1) return oneBit;
  }
  return {};
}
