#include "image_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "failure.h"

using vips::VError;
using vips::VImage;
using vips::VOption;

struct FileFormat {
  std::vector<const char*> extensions;
  const char* name;
  const char* operation;
  int quality;  // 0: the format has none
  int colours;  // bands beside alpha: 1, 3, or 0 for either
  bool alpha;
  std::vector<VipsBandFormat> samples;
};

namespace {

constexpr VipsBandFormat bits8 = VIPS_FORMAT_UCHAR;
constexpr VipsBandFormat bits16 = VIPS_FORMAT_USHORT;
constexpr VipsBandFormat floats = VIPS_FORMAT_FLOAT;

const std::vector<FileFormat>& formats() {
  static const std::vector<FileFormat> all = {
      {{"jpg", "jpeg", "jpe"}, "JPEG", "jpegsave_target", 95, 0, false, {bits8}},
      {{"png"}, "PNG", "pngsave_target", 0, 0, true, {bits8, bits16}},
      {{"tif", "tiff"}, "TIFF", "tiffsave_target", 0, 0, true, {bits8, bits16, floats}},
      {{"webp"}, "WebP", "webpsave_target", 95, 0, true, {bits8}},
      {{"heic", "heif"}, "HEIF", "heifsave_target", 95, 0, true, {bits8}},
      {{"jp2"}, "JPEG 2000", "jp2ksave_target", 95, 0, true, {bits8, bits16}},
      {{"ppm"}, "PPM", "ppmsave_target", 0, 3, false, {bits8, bits16}},
      {{"pgm"}, "PGM", "ppmsave_target", 0, 1, false, {bits8, bits16}},
      {{"pfm"}, "PFM", "ppmsave_target", 0, 0, false, {floats}},
  };
  return all;
}

// What libvips has to say about its last failure, in one line: the system's own reason, where there is one, without
// all that followed from it.
std::string lastError() {
  std::string text = vips_error_buffer();
  vips_error_clear();
  const std::string system = "unix error: ";
  if (const std::size_t at = text.find(system); at != std::string::npos) {
    text = text.substr(at + system.size());
    return text.substr(0, text.find('\n'));
  }
  while (!text.empty() && text.back() == '\n') text.pop_back();
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) text.replace(at, 1, "; ");
  return text.empty() ? "the image library gave no reason" : text;
}

void silence(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

const char* nickname(GType type, int value) { return vips_enum_nick(type, value); }

int colourBands(const VImage& picture) { return picture.bands() >= 3 ? 3 : 1; }
bool hasAlpha(const VImage& picture) { return picture.bands() != colourBands(picture); }

int pages(const VImage& picture) {
  if (picture.get_typeof(VIPS_META_N_PAGES) == 0) return 1;
  // The pages of a JPEG 2000 file are the one picture at several resolutions.
  const bool resolutions = std::strncmp(picture.get_string(VIPS_META_LOADER), "jp2k", 4) == 0;
  return resolutions ? 1 : picture.get_int(VIPS_META_N_PAGES);
}

// Empty when orbel can work on such a picture, else why not.
std::string objection(const VImage& picture) {
  if (pages(picture) > 1) {
    return "has several pages or frames; only single pictures are supported";
  }
  const VipsInterpretation model = picture.interpretation();
  const bool grey = model == VIPS_INTERPRETATION_B_W || model == VIPS_INTERPRETATION_GREY16;
  const bool colour = model == VIPS_INTERPRETATION_sRGB || model == VIPS_INTERPRETATION_RGB ||
                      model == VIPS_INTERPRETATION_RGB16 || model == VIPS_INTERPRETATION_scRGB;
  if ((!grey && !colour) || picture.coding() != VIPS_CODING_NONE) {
    return std::string("its colour model (") + nickname(VIPS_TYPE_INTERPRETATION, model) +
           ") is not supported; convert it to RGB or grey first";
  }
  const int expected = grey ? 1 : 3;
  if (picture.bands() != expected && picture.bands() != expected + 1) {
    return "has " + std::to_string(picture.bands()) +
           " channels; only RGB and grey, with or without alpha, are supported";
  }
  const VipsBandFormat format = picture.format();
  if (format != bits8 && format != bits16 && format != floats) {
    return std::string("its sample type (") + nickname(VIPS_TYPE_BAND_FORMAT, format) +
           ") is not supported; only 8 and 16 bits and 32-bit floats are";
  }
  // The library's floats in plain RGB run to 255, in every other model to 1.
  if (format == floats && (model == VIPS_INTERPRETATION_sRGB || model == VIPS_INTERPRETATION_RGB)) {
    return "its float samples are not on a scale of 0 to 1";
  }
  return {};
}

// The library's WebP loader leaves the resolution in the EXIF block, and its saver writes the picture's own there.
void takeResolutionFromExif(VImage& picture) {
  const auto field = [&](const char* name) {
    double number = 0;
    double over = 1;
    if (picture.get_typeof(name) != 0) std::sscanf(picture.get_string(name), "%lf/%lf", &number, &over);
    return number / over;
  };
  const double millimetres = field("exif-ifd0-ResolutionUnit") == 3 ? 10 : 25.4;  // centimetres or inches
  const double x = field("exif-ifd0-XResolution") / millimetres;
  const double y = field("exif-ifd0-YResolution") / millimetres;
  if (x > 0 && y > 0) picture = picture.copy(VImage::option()->set("xres", x)->set("yres", y));
}

// Between a 16-bit file's white of 65535 and the document's, rounding to nearest. 65535 is odd and the document's white
// a power of two: no value lies half way, either way.
std::uint16_t toDocument(std::uint16_t sample) {
  return static_cast<std::uint16_t>((std::uint32_t{sample} * white16 + 32767U) / 65535U);
}
std::uint16_t fromDocument(std::uint16_t sample) {
  const std::uint32_t inside = std::min<std::uint32_t>(sample, white16);
  return static_cast<std::uint16_t>((inside * 65535U + white16 / 2) / white16);
}

template <typename T>
T unchanged(T sample) {
  return sample;
}

template <typename T, T (*convert)(T)>
void split(const VImage& picture, Document& document) {
  const auto count = static_cast<std::size_t>(document.width) * static_cast<std::size_t>(document.height);
  const auto bands = static_cast<std::size_t>(picture.bands());
  for (std::size_t band = 0; band < document.planes.size(); ++band) {
    const T* from = static_cast<const T*>(picture.data()) + band;
    T* to = reinterpret_cast<T*>(document.planes[band].data());
    for (std::size_t i = 0; i < count; ++i) to[i] = convert(from[i * bands]);
  }
}

template <typename T, T (*convert)(T)>
void merge(const Document& document, VImage& picture) {
  const auto count = static_cast<std::size_t>(document.width) * static_cast<std::size_t>(document.height);
  const auto bands = static_cast<std::size_t>(picture.bands());
  for (std::size_t band = 0; band < document.planes.size(); ++band) {
    const T* from = reinterpret_cast<const T*>(document.planes[band].data());
    T* to = const_cast<T*>(static_cast<const T*>(picture.data())) + band;
    for (std::size_t i = 0; i < count; ++i) to[i * bands] = convert(from[i]);
  }
}

}  // namespace

ImageLibrary::ImageLibrary(const char* programName, bool verbose) {
  if (VIPS_INIT(programName) != 0) throw Failure("libvips", lastError());
  if (!verbose) {
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION),
                      silence, nullptr);
  }
  // Nothing is computed twice here, and pictures are changed where they lie: no result may be remembered.
  vips_cache_set_max(0);
}

ImageLibrary::~ImageLibrary() { vips_shutdown(); }

VImage loadPicture(const std::string& name) {
  struct stat file {};
  if (stat(name.c_str(), &file) != 0) throw Failure(name, std::generic_category().message(errno));
  if (S_ISDIR(file.st_mode)) throw Failure(name, std::generic_category().message(EISDIR));
  if (S_ISREG(file.st_mode) && file.st_size == 0) throw Failure(name, "the file is empty");
  try {
    // From a source, because a file name would be searched for options in square brackets.
    VImage opened = VImage::new_from_source(
        vips::VSource::new_from_file(name.c_str()), "",
        VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_ERROR));
    if (const std::string reason = objection(opened); !reason.empty()) throw Failure(name, reason);
    if (std::strncmp(opened.get_string(VIPS_META_LOADER), "webp", 4) == 0) takeResolutionFromExif(opened);
    VImage picture = VImage::new_memory();
    opened.write(picture);
    return picture;
  } catch (const VError&) {
    throw Failure(name, lastError());
  }
}

Document documentOf(const VImage& picture) {
  const std::int32_t depth = picture.format() == bits8 ? 8 : picture.format() == bits16 ? 16 : 32;
  Document document{picture.width(), picture.height(), depth, {}};
  document.planes.resize(static_cast<std::size_t>(colourBands(picture)));
  for (auto& plane : document.planes) plane.resize(document.rowBytes() * static_cast<std::size_t>(document.height));
  if (depth == 8) split<unsigned char, unchanged>(picture, document);
  if (depth == 16) split<std::uint16_t, toDocument>(picture, document);
  if (depth == 32) split<float, unchanged>(picture, document);
  return document;
}

void putDocument(const Document& document, VImage& picture) {
  if (document.depth == 8) merge<unsigned char, unchanged>(document, picture);
  if (document.depth == 16) merge<std::uint16_t, fromDocument>(document, picture);
  if (document.depth == 32) merge<float, unchanged>(document, picture);
}

const FileFormat& formatOf(const std::string& name) {
  const std::size_t dot = name.find_last_of("./");
  std::string extension = dot == std::string::npos || name[dot] == '/' ? "" : name.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  std::string known;
  for (const FileFormat& format : formats()) {
    for (const char* candidate : format.extensions) {
      if (extension == candidate) return format;
      known += std::string(known.empty() ? "" : ", ") + candidate;
    }
  }
  throw Failure(name, (extension.empty() ? "no extension tells" : "'" + extension + "' doesn't tell") +
                          std::string(" the file format; known are ") + known);
}

void requireThatFormatHolds(const FileFormat& format, const VImage& picture, const std::string& name) {
  const auto refuse = [&](const std::string& what) {
    throw Failure(name, std::string(format.name) + " files hold no " + what + "; TIFF files do");
  };
  if (hasAlpha(picture) && !format.alpha) refuse("alpha channel");
  if (format.colours == 1 && colourBands(picture) == 3) refuse("colour");
  if (format.colours == 3 && colourBands(picture) == 1) refuse("grey pictures");
  const VipsBandFormat samples = picture.format();
  if (std::find(format.samples.begin(), format.samples.end(), samples) == format.samples.end()) {
    refuse(samples == bits8 ? "8-bit samples" : samples == bits16 ? "16-bit samples" : "float samples");
  }
}

void savePicture(const VImage& picture, const FileFormat& format, int descriptor, const std::string& name) {
  try {
    VOption* options =
        VImage::option()->set("in", picture)->set("target", vips::VTarget::new_to_descriptor(descriptor));
    if (format.quality != 0) options->set("Q", format.quality);
    if (std::strcmp(format.operation, "ppmsave_target") == 0) {
      options->set("format", format.colours == 1   ? VIPS_FOREIGN_PPM_FORMAT_PGM
                             : format.colours == 3 ? VIPS_FOREIGN_PPM_FORMAT_PPM
                                                   : VIPS_FOREIGN_PPM_FORMAT_PFM);
    }
    VImage::call(format.operation, options);
  } catch (const VError&) {
    throw Failure(name, lastError());
  }
}
