#include "pictures/picture.h"

#include <cstddef>
#include <new>

#include "pictures/errors.h"
#include "pictures/samples.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

int bytesOf(SampleType samples) { return samples == SampleType::bytes ? 1 : samples == SampleType::words ? 2 : 4; }
int depthOf(SampleType samples) { return 8 * bytesOf(samples); }

int Picture::width() const { return impl_->image.width(); }
int Picture::height() const { return impl_->image.height(); }
int Picture::colours() const { return colourBands(impl_->image); }
bool Picture::hasAlpha() const { return impl_->image.bands() != colours(); }
SampleType Picture::samples() const { return samplesOf(impl_->image.format()); }
int Picture::orientation() const { return vips_image_get_orientation(impl_->image.get_image()); }

std::string Picture::loader() const {
  if (impl_->image.get_typeof(VIPS_META_LOADER) == 0) return "";
  const std::string operation = impl_->image.get_string(VIPS_META_LOADER);
  return operation.substr(0, operation.find("load"));
}

orbel_picture Picture::shape() const {
  const orbel_samples types[] = {ORBEL_UINT8, ORBEL_UINT16, ORBEL_FLOAT32};
  const std::ptrdiff_t rowStep = std::ptrdiff_t{width()} * channels() * bytesOf(samples());
  orbel_picture shape;
  orbel_picture_interleaved(&shape, sizeof shape, types[static_cast<int>(samples())], width(), height(), channels(),
                            nullptr, rowStep);
  return shape;
}

orbel_picture Picture::record() const {
  orbel_picture record = shape();
  // Whoever wants to write owns the memory; the library's pointers tell less than that.
  auto* const data = static_cast<unsigned char*>(const_cast<void*>(impl_->image.data()));
  for (int i = 0; i < record.channels; ++i) record.base[i] = data + std::ptrdiff_t{i} * bytesOf(samples());
  return record;
}

// The library copies metadata only with a picture, and metadata that are set one by one are not the same: it reads the
// EXIF block again. Where the type stays, copying the samples costs no more than touching the memory for the first
// time.
Picture roomFor(const Picture& like, SampleType samples) {
  const auto noMemory = [] {
    vips_error_clear();
    return std::bad_alloc();
  };
  return translated(noMemory, [&] {
    return pictureOf(scaledTo(formatFor(samples), imageOf(like)).copy().copy_memory(), nameOf(like));
  });
}

Picture uprightColours(const Picture& decoded) {
  return translated(nameOf(decoded), Cause::Damaged, [&] {
    VImage upright = imageOf(decoded).autorot();
    if (decoded.hasAlpha()) upright = upright.extract_band(0, VImage::option()->set("n", decoded.colours()));
    return pictureOf(upright.copy_memory(), nameOf(decoded));
  });
}

void requireThatPartLiesIn(const Rectangle& part, const Picture& picture, const std::string& name) {
  const bool turned = picture.orientation() > 4;
  const int width = turned ? picture.height() : picture.width();
  const int height = turned ? picture.width() : picture.height();
  if (part.width <= width - part.x && part.height <= height - part.y) return;
  throw Failure(name,
                "--crop " + std::to_string(part.width) + "x" + std::to_string(part.height) + "+" +
                    std::to_string(part.x) + "+" + std::to_string(part.y) + " reaches beyond its " +
                    std::to_string(width) + " x " + std::to_string(height) + " pixels",
                Cause::Settings);
}

// Exif 2.32, 4.6.4, the tag Orientation: from 5 on rows are shown as columns.
Rectangle asStored(const Rectangle& shown, const Picture& picture) {
  const int orientation = picture.orientation();
  Rectangle part = shown;
  if (orientation > 4) part = {shown.y, shown.x, shown.height, shown.width};
  const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
  const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
  if (fromRight) part.x = picture.width() - part.x - part.width;
  if (fromBottom) part.y = picture.height() - part.y - part.height;
  return part;
}

Picture cutOut(const Picture& decoded, const Rectangle& part) {
  return translated(nameOf(decoded), Cause::Other, [&] {
    return pictureOf(imageOf(decoded).extract_area(part.x, part.y, part.width, part.height).copy_memory(),
                     nameOf(decoded));
  });
}

std::string xmpOf(const Picture& picture) {
  const VImage& image = imageOf(picture);
  if (image.get_typeof(VIPS_META_XMP_NAME) != VIPS_TYPE_BLOB) return "";
  std::size_t size = 0;
  const auto* const bytes = static_cast<const char*>(image.get_blob(VIPS_META_XMP_NAME, &size));
  return {bytes, size};
}

Picture withXmp(const Picture& picture, const std::string& packet) {
  return translated(nameOf(picture), Cause::Other, [&] {
    const VImage copy = imageOf(picture).copy();
    vips_image_set_blob_copy(copy.get_image(), VIPS_META_XMP_NAME, packet.data(), packet.size());
    return pictureOf(copy, nameOf(picture));
  });
}

}  // namespace orbel
