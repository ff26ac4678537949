#include "image_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <system_error>
#include <type_traits>

#include "colour_models.h"
#include "failure.h"
#include "file_headers.h"
#include "write_all.h"

using vips::VError;
using vips::VImage;
using vips::VOption;

namespace {

constexpr VipsBandFormat bits8 = VIPS_FORMAT_UCHAR;
constexpr VipsBandFormat bits16 = VIPS_FORMAT_USHORT;
constexpr VipsBandFormat floats = VIPS_FORMAT_FLOAT;

const char* const saysWhatCannotBe = "it is damaged, or says of itself what can't be (no pixels, or far too many)";

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
  return text.empty() ? saysWhatCannotBe : text;
}

// Of a file that couldn't be opened.
Failure whyUnread(const std::string& name) {
  const std::string text = lastError();
  const bool unknown = text.find("is not in a known format") != std::string::npos ||
                       text.find("is not a known file format") != std::string::npos;
  if (unknown) return {name, std::string("is no picture of a known format; ") + convertFirst, Cause::UnknownFormat};
  const auto tiff = name == pipeName ? std::nullopt : tiffHeader(name, 1);
  vips_error_clear();  // libtiff's, if it is no such file
  if (tiff && tiff->floats && tiff->bits == 16) {
    return {name, "its samples are half floats, which aren't read; convert them to floats of 32 bits first",
            Cause::Unsupported};
  }
  return {name, text, Cause::Damaged};
}

void silence(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

const char* nickname(GType type, int value) { return vips_enum_nick(type, value); }

bool leaves(const VImage& picture, LoaderTrait trait) {
  const FileFormat* const format = formatOf(picture);
  return format != nullptr && format->loader.has(trait);
}

int pages(const VImage& picture) {
  const bool several = picture.get_typeof(VIPS_META_N_PAGES) != 0 && !leaves(picture, pagesAreOne);
  return several ? picture.get_int(VIPS_META_N_PAGES) : 1;
}

// Empty when orbel can work on such a picture, else why not.
std::string objection(const VImage& picture) {
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

// The library counts IPTC in TIFF files in bytes where they count in words: it reads a part and writes a broken block.
// It has that of Photoshop's own files without the frame that it writes as it stands into JPEG files.
void dropIptc(VImage& picture) {
  if (picture.get_typeof(VIPS_META_IPTC_NAME) == 0) return;
  picture = picture.copy();
  picture.remove(VIPS_META_IPTC_NAME);
  picture.set(droppedIptc, 1);
}

void ownMetadata(VImage& picture) {
  picture = picture.copy();
  gchar** const names = vips_image_get_fields(picture.get_image());
  for (gchar** name = names; *name != nullptr; ++name) {
    if (picture.get_typeof(*name) != VIPS_TYPE_BLOB) continue;
    std::size_t size = 0;
    const void* const lent = picture.get_blob(*name, &size);
    vips_image_set_blob_copy(picture.get_image(), *name, lent, size);
  }
  g_strfreev(names);
}

// For formats of the trait of that name.
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

// Integers are rounded and kept within their range; NaN becomes black.
template <typename To>
To converted(double value) {
  if constexpr (std::is_floating_point_v<To>) {
    return static_cast<To>(value);
  } else {
    constexpr double most = std::numeric_limits<To>::max();
    if (!(value > 0)) return 0;
    return static_cast<To>(value < most ? value + 0.5 : most);
  }
}

double whiteOf(VipsBandFormat format) { return format == bits8 ? 255 : format == bits16 ? 65535 : 1; }
double whiteOf(const Document& document) { return document.depth == 8 ? 255 : document.depth == 16 ? white16 : 1; }

// One band of interleaved samples, and one plane.
template <typename Sample, typename PlaneSample>
void read(const Sample* from, PlaneSample* to, std::size_t count, std::size_t bands, double scale) {
  for (std::size_t i = 0; i < count; ++i) to[i] = converted<PlaneSample>(from[i * bands] * scale);
}
template <typename Sample, typename PlaneSample>
void write(const PlaneSample* from, Sample* to, std::size_t count, std::size_t bands, double scale) {
  for (std::size_t i = 0; i < count; ++i) to[i * bands] = converted<Sample>(from[i] * scale);
}

// Calls use(pointer) with data as samples of the depth's type.
template <typename Use>
void withType(int depth, void* data, Use use) {
  if (depth == 8) use(static_cast<std::uint8_t*>(data));
  if (depth == 16) use(static_cast<std::uint16_t*>(data));
  if (depth == 32) use(static_cast<float*>(data));
}

// Calls each(sample, planeSample, count, bands) for all planes, with the first of the band's samples and of the
// plane's.
template <typename Each>
void forEachPlane(const Document& document, const VImage& picture, Each each) {
  const auto count = static_cast<std::size_t>(document.width) * static_cast<std::size_t>(document.height);
  const auto bands = static_cast<std::size_t>(picture.bands());
  // Whoever wants to write owns the memory; the interface's pointers tell less than that.
  void* const samples = const_cast<void*>(picture.data());
  for (std::size_t band = 0; band < document.planes.size(); ++band) {
    void* const plane = const_cast<unsigned char*>(document.planes[band].data());
    withType(depthOf(picture), samples, [&](auto* sample) {
      withType(document.depth, plane, [&](auto* planeSample) { each(sample + band, planeSample, count, bands); });
    });
  }
}

std::string contentOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

VImage scaledTo(VipsBandFormat samples, const VImage& picture) {
  const bool grey = colourBands(picture) == 1;
  const VipsInterpretation model = samples == bits16  ? (grey ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16)
                                   : grey             ? VIPS_INTERPRETATION_B_W
                                   : samples == bits8 ? VIPS_INTERPRETATION_sRGB
                                                      : VIPS_INTERPRETATION_scRGB;
  const VImage scaled = picture * (whiteOf(samples) / whiteOf(picture.format()));
  return (samples == floats ? scaled : scaled.rint())
      .cast(samples)
      .copy(VImage::option()->set("interpretation", model));
}

// That library gives grey in three equal planes, and the depth that the samples happen to need instead of the file's.
VImage asPhotoshopHasIt(VImage picture, int bits) {
  const VipsInterpretation model = picture.interpretation();
  const bool grey = model == VIPS_INTERPRETATION_B_W || model == VIPS_INTERPRETATION_GREY16;
  if (grey && picture.bands() == 3) picture = picture[0];
  if (grey && picture.bands() == 4) picture = picture[0].bandjoin(picture[3]);
  const VipsBandFormat format = bits == 8 ? bits8 : bits16;
  const bool differs = (bits == 8 && picture.format() == bits16) || (bits == 16 && picture.format() == bits8);
  const bool inks = model == VIPS_INTERPRETATION_CMYK;
  return differs && !inks ? scaledTo(format, picture) : picture;
}

// Photoshop's own files go by another library, which takes no stream.
VImage openPhotoshop(const std::string& name, int bits) {
  const std::string content = contentOf(name);
  VipsBlob* const blob = vips_blob_copy(content.data(), content.size());
  VImage picture = VImage::magickload_buffer(blob, VImage::option()->set("fail_on", VIPS_FAIL_ON_ERROR));
  vips_area_unref(VIPS_AREA(blob));
  return asPhotoshopHasIt(picture, bits);
}

// page: from 1; 0 for formats that may have none.
VImage openFile(const std::string& name, int page) {
  if (const int bits = name == pipeName ? 0 : photoshopBits(name); bits != 0) return openPhotoshop(name, bits);
  // From a source, because a file name would be searched for options in square brackets.
  const vips::VSource source =
      name == pipeName ? vips::VSource::new_from_descriptor(STDIN_FILENO) : vips::VSource::new_from_file(name.c_str());
  VOption* const options = VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_ERROR);
  if (page != 0) options->set("page", page - 1);
  return VImage::new_from_source(source, "", options);
}

// The one page that was chosen, if the picture has so many.
VImage onePage(const VImage& opened, const std::string& name, std::optional<int> page) {
  const int count = pages(opened);
  if (count == 1 && page.value_or(1) == 1) return opened;
  const std::string has = "has " + std::to_string(count) + (count == 1 ? " page" : " pages or frames");
  if (!page) throw Failure(name, has + "; --page N takes one of them", Cause::SeveralPages);
  if (name == pipeName) throw Failure(name, has + "; --page wants a file", Cause::SeveralPages);
  if (*page > count) throw Failure(name, has + ", and no page " + std::to_string(*page), Cause::SeveralPages);
  VImage chosen = openFile(name, *page).copy();
  chosen.remove(VIPS_META_N_PAGES);
  return chosen;
}

}  // namespace

void requireFileWithContent(const std::string& name) {
  struct stat file {};
  if (stat(name.c_str(), &file) != 0) throw Failure(name, std::generic_category().message(errno), Cause::Unreadable);
  if (S_ISDIR(file.st_mode)) throw Failure(name, std::generic_category().message(EISDIR), Cause::Unreadable);
  // Anything else may never end, or never begin.
  if (!S_ISREG(file.st_mode)) throw Failure(name, "is not a regular file", Cause::Unreadable);
  if (file.st_size == 0) throw Failure(name, "the file is empty", Cause::Unreadable);
}

namespace {

void encode(VImage picture, const FileFormat& format, const vips::VTarget& target, const std::string& name,
            const SaveOptions& choice) {
  try {
    if (!format.kept.iptc) dropIptc(picture);
    VOption* const options = VImage::option()->set("in", picture)->set("target", target);
    setPacking(format, picture.format(), choice, *options);
    VImage::call(format.saver.operation, options);
  } catch (const VError&) {
    throw Failure(name, lastError(), Cause::Unwritable);
  }
}

void encodeThenWrite(const VImage& picture, const FileFormat& format, int descriptor, const std::string& name,
                     const SaveOptions& options) {
  const vips::VTarget target = vips::VTarget::new_to_memory();
  encode(picture, format, target, name, options);
  std::size_t size = 0;
  const auto* bytes = static_cast<const char*>(vips_blob_get(target.get_target()->blob, &size));
  writeAll(descriptor, bytes, size, name);
}

}  // namespace

ImageLibrary::ImageLibrary(const char* programName, bool verbose) {
  if (VIPS_INIT(programName) != 0) throw Failure("libvips", lastError());
  if (!verbose) {
    g_log_set_default_handler(silence, nullptr);
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION),
                      silence, nullptr);
  }
  // Nothing is computed twice here, and pictures are changed where they lie: no result may be remembered.
  vips_cache_set_max(0);
}

ImageLibrary::~ImageLibrary() { vips_shutdown(); }

int colourBands(const VImage& picture) { return picture.bands() >= 3 ? 3 : 1; }
bool hasAlpha(const VImage& picture) { return picture.bands() != colourBands(picture); }
int depthOf(const VImage& picture) { return picture.format() == bits8 ? 8 : picture.format() == bits16 ? 16 : 32; }

VImage openPicture(const std::string& name, Notes& notes, std::optional<int> page) {
  if (name != pipeName) requireFileWithContent(name);
  // Some of them hold a small preview that would pass for the picture.
  if (isCameraRaw(extensionOf(name))) {
    throw Failure(name, std::string("is a camera's raw file; ") + developFirst, Cause::CameraRaw);
  }
  try {
    VImage opened = onePage(openFile(name, 0), name, page);
    if (leaves(opened, whiteUnsaid) && opened.format() == floats && opened.bands() == 3) {
      opened = opened.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB));
    }
    if (leaves(opened, sizeClipped) && name != pipeName && !netpbmSizeIs(name, opened.width(), opened.height())) {
      throw Failure(name, saysWhatCannotBe, Cause::Damaged);
    }
    const std::string packed = name == pipeName ? "" : noteOnPackedSamples(name, page.value_or(1), opened);
    if (!packed.empty()) notes.push_back(packed);
    const std::string converted = convertToRgb(opened);
    if (!converted.empty()) notes.push_back(converted);
    if (const std::string reason = objection(opened); !reason.empty()) {
      throw Failure(name, reason, Cause::Unsupported);
    }
    if (leaves(opened, resolutionInExif)) takeResolutionFromExif(opened);
    if (leaves(opened, lendsMetadata)) ownMetadata(opened);
    if (leaves(opened, garblesIptc)) dropIptc(opened);
    return opened;
  } catch (const VError&) {
    throw whyUnread(name);
  }
}

VImage decodePicture(const VImage& opened, const std::string& name) {
  try {
    VImage picture = VImage::new_memory();
    opened.write(picture);
    return picture;
  } catch (const VError&) {
    throw Failure(name, lastError(), Cause::Damaged);
  }
}

void requireThatItDecodes(const VImage& opened, const std::string& name) {
  try {
    opened.avg();
  } catch (const VError&) {
    throw Failure(name, lastError(), Cause::Damaged);
  }
}

VImage loadPicture(const std::string& name, std::optional<int> page) {
  Notes notes;
  return decodePicture(openPicture(name, notes, page), name);
}

VImage withSamples(const VImage& picture, VipsBandFormat samples) {
  return picture.format() == samples ? picture : scaledTo(samples, picture).copy_memory();
}

Document documentOf(const VImage& picture, int depth) {
  Document document{picture.width(), picture.height(), depth, {}};
  document.planes.resize(static_cast<std::size_t>(colourBands(picture)));
  for (auto& plane : document.planes) plane.resize(document.rowBytes() * static_cast<std::size_t>(document.height));
  const double scale = whiteOf(document) / whiteOf(picture.format());
  forEachPlane(document, picture, [&](const auto* sample, auto* planeSample, std::size_t count, std::size_t bands) {
    read(sample, planeSample, count, bands, scale);
  });
  return document;
}

void putDocument(const Document& document, VImage& picture) {
  const double scale = whiteOf(picture.format()) / whiteOf(document);
  forEachPlane(document, picture, [&](auto* sample, const auto* planeSample, std::size_t count, std::size_t bands) {
    write(planeSample, sample, count, bands, scale);
  });
}

void savePicture(const VImage& picture, const FileFormat& format, int descriptor, const std::string& name,
                 const SaveOptions& options) {
  if (format.saver.wholeFirst) return encodeThenWrite(picture, format, descriptor, name, options);
  encode(picture, format, vips::VTarget::new_to_descriptor(descriptor), name, options);
}

void savePictureToPipe(const VImage& picture, const FileFormat& format, const SaveOptions& options) {
  encodeThenWrite(picture, format, STDOUT_FILENO, "standard output", options);
}
