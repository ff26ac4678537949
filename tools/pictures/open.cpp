// Pictures from files: which are taken, and how they are made RGB or grey.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "pictures/colour_models.h"
#include "pictures/errors.h"
#include "pictures/file_headers.h"
#include "pictures/formats.h"
#include "pictures/photoshop_file.h"
#include "pictures/picture.h"
#include "pictures/read_metadata.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;
using vips::VOption;

namespace {

const char* nickname(GType type, int value) { return vips_enum_nick(type, value); }

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
  if (format != VIPS_FORMAT_UCHAR && format != VIPS_FORMAT_USHORT && format != VIPS_FORMAT_FLOAT) {
    return std::string("its sample type (") + nickname(VIPS_TYPE_BAND_FORMAT, format) +
           ") is not supported; only 8 and 16 bits and 32-bit floats are";
  }
  // The library's floats in plain RGB run to 255, in every other model to 1.
  if (format == VIPS_FORMAT_FLOAT && (model == VIPS_INTERPRETATION_sRGB || model == VIPS_INTERPRETATION_RGB)) {
    return "its float samples are not on a scale of 0 to 1";
  }
  return {};
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

// What the image library leaves to us of a picture.
unsigned traitsOf(const VImage& picture, const std::string& name) {
  const FileFormat* const format = formatOf(pictureOf(picture, name));
  return format == nullptr ? 0 : format->loader.traits;
}

// The one page that was chosen, if the picture has so many.
VImage onePage(const VImage& opened, const std::string& name, std::optional<int> page) {
  const bool several = opened.get_typeof(VIPS_META_N_PAGES) != 0 && (traitsOf(opened, name) & pagesAreOne) == 0;
  const int count = several ? opened.get_int(VIPS_META_N_PAGES) : 1;
  if (count == 1 && page.value_or(1) == 1) return opened;
  const std::string has = "has " + std::to_string(count) + (count == 1 ? " page" : " pages or frames");
  if (!page) throw Failure(name, has + "; --page N takes one of them", Cause::SeveralPages);
  if (name == pipeName) throw Failure(name, has + "; --page wants a file", Cause::SeveralPages);
  if (*page > count) throw Failure(name, has + ", and no page " + std::to_string(*page), Cause::SeveralPages);
  VImage chosen = openFile(name, *page).copy();
  chosen.remove(VIPS_META_N_PAGES);
  return chosen;
}

// Throws Failure, and vips::VError where the file can't be opened.
VImage openAsRgbOrGrey(const std::string& name, Notes& notes, std::optional<int> page) {
  VImage opened = onePage(openFile(name, 0), name, page);
  const unsigned traits = traitsOf(opened, name);
  if ((traits & whiteUnsaid) != 0 && opened.format() == VIPS_FORMAT_FLOAT && opened.bands() == 3) {
    opened = opened.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB));
  }
  if ((traits & sizeClipped) != 0 && name != pipeName && !netpbmSizeIs(name, opened.width(), opened.height())) {
    throw Failure(name, saysWhatCannotBe, Cause::Damaged);
  }
  const std::string packed = name == pipeName ? "" : noteOnPackedSamples(name, page.value_or(1), opened);
  if (!packed.empty()) notes.push_back(packed);
  const std::string converted = convertToRgb(opened);
  if (!converted.empty()) notes.push_back(converted);
  if (const std::string reason = objection(opened); !reason.empty()) throw Failure(name, reason, Cause::Unsupported);
  putMetadataRight(opened, traits);
  return opened;
}

}  // namespace

Picture openPicture(const std::string& name, Notes& notes, std::optional<int> page) {
  if (name != pipeName) requireFileWithContent(name);
  // Some of them hold a small preview that would pass for the picture.
  if (isCameraRaw(extensionOf(name))) {
    throw Failure(name, std::string("is a camera's raw file; ") + developFirst, Cause::CameraRaw);
  }
  return translated([&] { return whyUnread(name); },
                    [&] { return pictureOf(openAsRgbOrGrey(name, notes, page), name); });
}

Picture decodePicture(const Picture& opened, const std::string& name) {
  return translated(name, Cause::Damaged, [&] {
    const VImage decoded = VImage::new_memory();
    imageOf(opened).write(decoded);
    return pictureOf(decoded, name);
  });
}

void requireThatItDecodes(const Picture& opened, const std::string& name) {
  translated(name, Cause::Damaged, [&] { return imageOf(opened).avg(); });
}

Picture loadPicture(const std::string& name, std::optional<int> page) {
  Notes notes;
  return decodePicture(openPicture(name, notes, page), name);
}

void requireFileWithContent(const std::string& name) {
  struct stat file {};
  if (stat(name.c_str(), &file) != 0) throw Failure(name, std::generic_category().message(errno), Cause::Unreadable);
  if (S_ISDIR(file.st_mode)) throw Failure(name, std::generic_category().message(EISDIR), Cause::Unreadable);
  // Anything else may never end, or never begin.
  if (!S_ISREG(file.st_mode)) throw Failure(name, "is not a regular file", Cause::Unreadable);
  if (file.st_size == 0) throw Failure(name, "the file is empty", Cause::Unreadable);
}

}  // namespace orbel
