// Writes the registration resources of 64-bit Windows: pipl.bin, by which a host finds and lists the filter, and
// aete.bin, the terminology of its script keys. Usage: resource_blobs DIRECTORY
//
// Both are little-endian. The vendor's descriptions of the two formats leave two points to the host: whether a
// property's length counts its padding, and whether terminology is aligned. So properties are multiples of four bytes
// long, padding counted in, and the names of suite and event have an even number of bytes with their length byte.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>

#include "host/host_interface.h"
#include "host/script_keys.h"

namespace {

constexpr OSType eventClass = fourCharacters("OrBE");
constexpr std::uint16_t terminologyId = 16000;
constexpr const char* vendorName = "Orbel";
constexpr const char* menuName = "Band Equalizer";
constexpr const char* eventName = "Band Equalization";

class Blob {
 public:
  Blob& integer(std::uint32_t value, int byteCount) {
    for (int i = 0; i < byteCount; ++i) bytes_ += static_cast<char>(value >> 8 * i & 0xFF);
    return *this;
  }
  Blob& int8(std::uint8_t value) { return integer(value, 1); }
  Blob& int16(std::uint16_t value) { return integer(value, 2); }
  Blob& int32(std::uint32_t value) { return integer(value, 4); }
  Blob& pascalString(const std::string& text) {
    int8(static_cast<std::uint8_t>(text.size()));
    bytes_ += text;
    return *this;
  }
  Blob& cString(const std::string& text) {
    bytes_ += text;
    return int8(0);
  }
  Blob& append(const Blob& other) {
    bytes_ += other.bytes_;
    return *this;
  }
  Blob& padToFour() {
    while (bytes_.size() % 4 != 0) int8(0);
    return *this;
  }
  std::uint32_t length() const { return static_cast<std::uint32_t>(bytes_.size()); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

class PropertyList {
 public:
  void add(const char (&key)[5], Blob data) {
    data.padToFour();
    properties_.int32(photoshopSignature).int32(fourCharacters(key)).int32(0).int32(data.length()).append(data);
    ++count_;
  }
  Blob finished() const {
    constexpr std::uint32_t version = 0;
    return Blob().int16(1).int32(version).int32(count_).append(properties_);
  }

 private:
  Blob properties_;
  std::uint32_t count_ = 0;
};

// One bit a mode, the most significant first.
Blob imageModes() {
  std::uint8_t flags[4] = {};
  for (const int mode : {plugInModeRGBColor, plugInModeRGB48, plugInModeRGB96}) {
    flags[mode / 8] = static_cast<std::uint8_t>(flags[mode / 8] | 0x80 >> mode % 8);
  }
  Blob blob;
  for (const std::uint8_t byte : flags) blob.int8(byte);
  return blob;
}

// For each of the seven kinds of layer and selection: straight data in, straight data out, no flags.
Blob filterCases() {
  Blob blob;
  for (int i = 0; i < 7; ++i) blob.int8(1).int8(1).int8(0).int8(0);
  return blob;
}

Blob properties() {
  PropertyList list;
  list.add("kind", Blob().int32(fourCharacters("8BFM")));
  list.add("vers", Blob().int32(0x00040000));  // 4.0, the highest that every host takes
  list.add("catg", Blob().pascalString(vendorName));
  list.add("name", Blob().pascalString(menuName));
  list.add("8664", Blob().cString("PluginMain"));
  list.add("mode", imageModes());
  list.add("enbl", Blob().cString("in (PSHOP_ImageMode, RGBMode, RGB48Mode, RGB96Mode)"));
  list.add("fici", filterCases());
  list.add("hstm", Blob().int32(0).int32(eventClass).int32(filterEventId).int16(terminologyId).cString(filterScope));
  return list.finished();
}

Blob terminology() {
  constexpr std::uint16_t english = 0;
  constexpr std::uint16_t roman = 0;
  constexpr const char* none = "";  // the two of reply and direct parameter must be empty
  Blob blob;
  blob.int16(1).int8(1).int8(0).int16(english).int16(roman);
  blob.int16(1).pascalString(vendorName).pascalString(none).int32(eventClass).int16(1).int16(1);
  blob.int16(1).pascalString(eventName).pascalString(none).int32(eventClass).int32(filterEventId);
  blob.int32(typeNull).pascalString(none).int16(0);
  blob.int32(typeNull).pascalString(none).int16(0);
  blob.int16(scriptKeyCount);
  for (const ScriptKey& key : scriptKeys) {
    blob.pascalString(key.name).int32(key.code).int32(descriptorType(key.kind)).pascalString(none);
    blob.int16(static_cast<std::uint16_t>(actionOptionalParameter));
  }
  return blob.int16(0).int16(0).int16(0);  // classes, comparisons, enumerations
}

bool write(const std::string& path, const Blob& blob) {
  std::ofstream file(path, std::ios::binary);
  file.write(blob.bytes().data(), static_cast<std::streamsize>(blob.length()));
  file.close();
  if (!file) std::cerr << "resource_blobs: cannot write " << path << "\n";
  return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: resource_blobs DIRECTORY\n";
    return 2;
  }
  const std::string directory = argv[1];
  const bool written = write(directory + "/pipl.bin", properties()) && write(directory + "/aete.bin", terminology());
  return written ? 0 : 1;
}
