#include "formats.h"

#include <algorithm>
#include <cctype>

#include "failure.h"
#include "image_file.h"

namespace {

constexpr VipsBandFormat bits8 = VIPS_FORMAT_UCHAR;
constexpr VipsBandFormat bits16 = VIPS_FORMAT_USHORT;
constexpr VipsBandFormat floats = VIPS_FORMAT_FLOAT;
constexpr const char* noSaver = nullptr;

bool contains(const std::vector<std::string>& all, const std::string& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

}  // namespace

const std::vector<FileFormat>& fileFormats() {
  constexpr Metadata none{};
  constexpr Metadata all{true, true, true, true};
  constexpr Metadata noIptc{true, true, true, false};
  constexpr Metadata noExif{true, false, true, false};
  constexpr Metadata exifAndXmp{false, true, true, false};
  constexpr Metadata texts{false, true, true, true};
  static const std::vector<FileFormat> formats = {
      {{"jpg", "jpeg", "jpe"}, "JPEG", "jpegsave_target", 95, 0, false, {bits8}, all, texts},
      {{"png"}, "PNG", "pngsave_target", 0, 0, true, {bits8, bits16}, noIptc, texts},
      {{"tif", "tiff"}, "TIFF", "tiffsave_target", 0, 0, true, {bits8, bits16, floats}, noExif, texts},
      {{"webp"}, "WebP", "webpsave_target", 95, 0, true, {bits8}, noIptc, exifAndXmp},
      {{"heic", "heif"}, "HEIF", "heifsave_target", 95, 0, true, {bits8}, noIptc, exifAndXmp},
      {{"jp2"}, "JPEG 2000", "jp2ksave_target", 95, 0, true, {bits8, bits16}, none, texts},
      {{"ppm"}, "PPM", "ppmsave_target", 0, 3, false, {bits8, bits16}, none, none},
      {{"pgm"}, "PGM", "ppmsave_target", 0, 1, false, {bits8, bits16}, none, none},
      {{"pfm"}, "PFM", "ppmsave_target", 0, 0, false, {floats}, none, none},
      {{"psd", "psb"}, "Photoshop", noSaver, 0, 0, true, {bits8, bits16}, none, none},
      {{"gif"}, "GIF", noSaver, 0, 0, true, {bits8}, none, none},
      {{"avif"}, "AVIF", noSaver, 0, 0, true, {bits8}, none, none},
      {{"jxl"}, "JPEG XL", noSaver, 0, 0, true, {bits8, bits16, floats}, none, none},
  };
  return formats;
}

std::string extensionOf(const std::string& name) {
  const std::size_t leaf = name.rfind('/') + 1;  // 0 without a slash
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot <= leaf) return "";  // a leading point hides a file
  std::string extension = name.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

const FileFormat* findFormat(const std::string& extension) {
  const auto& all = fileFormats();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const FileFormat& f) { return contains(f.extensions, extension); });
  return found == all.end() ? nullptr : &*found;
}

const FileFormat& writableFormat(const std::string& extension, const std::string& name) {
  const FileFormat* const found = findFormat(extension);
  if (found != nullptr && found->operation != nullptr) return *found;
  if (found != nullptr) throw Failure(name, found->name + " files can be read only; TIFF files hold the same");
  std::string known;
  for (const FileFormat& format : fileFormats()) {
    if (format.operation == nullptr) continue;
    for (const std::string& candidate : format.extensions) known += (known.empty() ? "" : ", ") + candidate;
  }
  throw Failure(name, (extension.empty() ? "no extension tells" : "'" + extension + "' doesn't tell") +
                          std::string(" the file format; known are ") + known);
}

std::string samplesName(VipsBandFormat samples) {
  return samples == bits8 ? "8-bit samples" : samples == bits16 ? "16-bit samples" : "float samples";
}

void requireThatFormatHolds(const FileFormat& format, const vips::VImage& picture, VipsBandFormat samples,
                            const std::string& name) {
  const auto refuse = [&](const std::string& what, const std::string& advice) {
    throw Failure(name, format.name + " files hold no " + what + "; " + advice);
  };
  if (hasAlpha(picture) && !format.alpha) refuse("alpha channel", "TIFF files do");
  if (format.colours == 1 && colourBands(picture) == 3) refuse("colour", "TIFF files do");
  if (format.colours == 3 && colourBands(picture) == 1) refuse("grey pictures", "TIFF files do");
  if (std::find(format.samples.begin(), format.samples.end(), samples) == format.samples.end()) {
    refuse(samplesName(samples), "TIFF files do, or choose another depth with -d");
  }
}
