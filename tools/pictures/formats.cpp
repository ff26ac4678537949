#include "pictures/formats.h"

#include <algorithm>
#include <cctype>
#include <vips/vips8>

#include "files/failure.h"
#include "pictures/file_headers.h"
#include "pictures/hidden_metadata.h"

namespace orbel {

namespace {

constexpr SampleType bits8 = SampleType::bytes;
constexpr SampleType bits16 = SampleType::words;
constexpr SampleType floats = SampleType::floats;
constexpr Loader jpeg{"jpeg", readsTwice | seesMetadata, nullptr, nullptr, 6, 0, jpegIsProgressive};
constexpr Loader png{"png", readsTwice | seesSomeMetadata, nullptr, pngHidesMetadata, 0, 1, pngIsInterlaced};
constexpr Loader tiff{"tiff", readsTwice | seesXmp | garblesIptc, tiffCompression, tiffHidesMetadata};
constexpr Loader webp{"webp", readsTwice | resolutionInExif | seesMetadata, webpCompression, nullptr, 7.5};
constexpr Loader heif{"heif", resolutionInExif | lendsMetadata, nullptr, nullptr, 7.5};
constexpr Loader jpeg2000{"jp2k", pagesAreOne, nullptr, nullptr, 12};
constexpr Loader netpbm{"ppm", readsTwice | whiteUnsaid | sizeClipped | seesMetadata, nullptr, nullptr, 0, 1};
constexpr Loader magick{"magick", pagesAreOne | garblesIptc, nullptr, nullptr, 16};
constexpr Loader gif{"gif", goesOnInComments, nullptr, nullptr, 8};
constexpr Loader jpegXl{"jxl", 0, nullptr, nullptr, 0, 2};

const Saver none{};

Saver tiffSaver() {
  const auto packed = [](const char* word, int value) { return Compression{word, {"compression", value}}; };
  Saver saver{
      "tiffsave_target",
      0,
      {packed("none", VIPS_FOREIGN_TIFF_COMPRESSION_NONE), packed("lzw", VIPS_FOREIGN_TIFF_COMPRESSION_LZW),
       packed("deflate", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE),
       packed("packbits", VIPS_FOREIGN_TIFF_COMPRESSION_PACKBITS), packed("zstd", VIPS_FOREIGN_TIFF_COMPRESSION_ZSTD)}};
  saver.standIn = "deflate";
  saver.predicts = true;
  return saver;
}

Saver jpegSaver() {
  Saver saver{"jpegsave_target", 95, {}};
  saver.halvesChroma = true;
  saver.mostXmp = 60000;  // about what one segment holds; a larger one goes, and the metadata behind it
  return saver;
}

Saver pngSaver() {
  Saver saver{"pngsave_target", 0, {}};
  for (int level = 0; level <= 9; ++level) {
    saver.compressions.push_back({std::to_string(level), {"compression", level}});
  }
  saver.checksSums = true;
  return saver;
}

Saver lossyOrLossless(const char* operation) {
  return {operation, 95, {{"lossy", {"lossless", 0}}, {"lossless", {"lossless", 1}}}};
}

Saver heifSaver() {
  Saver saver = lossyOrLossless("heifsave_target");
  saver.wantsBareXmp = true;
  saver.nanosecondsPerPixel = 1500;
  saver.heldBytes = 27;
  return saver;
}

Saver jpeg2000Saver() {
  Saver saver = lossyOrLossless("jp2ksave_target");
  saver.wholeFirst = true;
  return saver;
}

Saver netpbmSaver(VipsForeignPpmFormat format) {
  Saver saver{"ppmsave_target", 0, {}};
  saver.options = {{"format", format}};
  return saver;
}

bool contains(const std::vector<std::string>& all, const std::string& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

}  // namespace

const std::vector<FileFormat>& fileFormats() {
  constexpr Metadata nothing{};
  constexpr Metadata all{true, true, true, true};
  constexpr Metadata noIptc{true, true, true, false};
  constexpr Metadata noExif{true, false, true, false};
  constexpr Metadata exifAndXmp{false, true, true, false};
  constexpr Metadata texts{false, true, true, true};
  Saver webpSaver = lossyOrLossless("webpsave_target");
  webpSaver.heldBytes = 7.7;  // 30 where it is lossless
  const Saver ppmSaver = netpbmSaver(VIPS_FOREIGN_PPM_FORMAT_PPM);
  const Saver pgmSaver = netpbmSaver(VIPS_FOREIGN_PPM_FORMAT_PGM);
  const Saver pfmSaver = netpbmSaver(VIPS_FOREIGN_PPM_FORMAT_PFM);
  static const std::vector<FileFormat> formats = {
      {{"jpg", "jpeg", "jpe"}, "JPEG", jpeg, jpegSaver(), 0, false, {bits8}, all, texts},
      {{"png"}, "PNG", png, pngSaver(), 0, true, {bits8, bits16}, noIptc, texts},
      {{"tif", "tiff"}, "TIFF", tiff, tiffSaver(), 0, true, {bits8, bits16, floats}, noExif, texts},
      {{"webp"}, "WebP", webp, webpSaver, 0, true, {bits8}, noIptc, exifAndXmp},
      {{"heic", "heif"}, "HEIF", heif, heifSaver(), 0, true, {bits8}, noIptc, exifAndXmp},
      {{"jp2"}, "JPEG 2000", jpeg2000, jpeg2000Saver(), 0, true, {bits8, bits16}, nothing, texts},
      {{"ppm"}, "PPM", netpbm, ppmSaver, 3, false, {bits8, bits16}, nothing, nothing},
      {{"pgm"}, "PGM", netpbm, pgmSaver, 1, false, {bits8, bits16}, nothing, nothing},
      {{"pfm"}, "PFM", netpbm, pfmSaver, 0, false, {floats}, nothing, nothing},
      {{"psd", "psb"}, "Photoshop", magick, none, 0, true, {bits8, bits16}, nothing, nothing},
      {{"gif"}, "GIF", gif, none, 0, true, {bits8}, nothing, nothing},
      {{"avif"}, "AVIF", heif, none, 0, true, {bits8}, nothing, nothing},
      {{"jxl"}, "JPEG XL", jpegXl, none, 0, true, {bits8, bits16, floats}, nothing, nothing},
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

const FileFormat* formatOf(const Picture& opened) {
  const std::string loader = opened.loader();
  const auto& all = fileFormats();
  const auto found = std::find_if(all.begin(), all.end(), [&](const FileFormat& f) { return loader == f.loader.name; });
  return found == all.end() ? nullptr : &*found;
}

bool isCameraRaw(const std::string& extension) {
  static const std::vector<std::string> extensions = {"3fr", "arw", "cr2", "cr3", "crw", "dcr", "dng", "erf", "fff",
                                                      "iiq", "kdc", "mef", "mos", "mrw", "nef", "nrw", "orf", "pef",
                                                      "raf", "raw", "rw2", "rwl", "sr2", "srf", "srw", "x3f"};
  return contains(extensions, extension);
}

const FileFormat& writableFormat(const std::string& extension, const std::string& name) {
  const FileFormat* const found = findFormat(extension);
  if (found != nullptr && found->isWritten()) return *found;
  if (found != nullptr)
    throw Failure(name, found->name + " files can be read only; TIFF files hold the same", Cause::OutputFormat);
  std::string known;
  for (const FileFormat& format : fileFormats()) {
    if (!format.isWritten()) continue;
    for (const std::string& candidate : format.extensions) known += (known.empty() ? "" : ", ") + candidate;
  }
  throw Failure(name,
                (extension.empty() ? "no extension tells" : "'" + extension + "' doesn't tell") +
                    std::string(" the file format; known are ") + known,
                Cause::OutputFormat);
}

std::string samplesName(SampleType samples) {
  return samples == bits8 ? "8-bit samples" : samples == bits16 ? "16-bit samples" : "float samples";
}

void requireThatFormatHolds(const FileFormat& format, const Picture& picture, SampleType samples,
                            const std::string& name) {
  const auto refuse = [&](const std::string& what, const std::string& advice) {
    throw Failure(name, format.name + " files hold no " + what + "; " + advice, Cause::OutputFormat);
  };
  if (picture.hasAlpha() && !format.alpha) refuse("alpha channel", "TIFF files do");
  if (format.colours == 1 && picture.colours() == 3) refuse("colour", "TIFF files do");
  if (format.colours == 3 && picture.colours() == 1) refuse("grey pictures", "TIFF files do");
  if (std::find(format.samples.begin(), format.samples.end(), samples) == format.samples.end()) {
    refuse(samplesName(samples), "TIFF files do, or choose another depth with -d");
  }
}

}  // namespace orbel
