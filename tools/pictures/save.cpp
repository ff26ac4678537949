#include "pictures/save.h"

#include <unistd.h>

#include <cstddef>

#include "files/write_all.h"
#include "pictures/errors.h"
#include "pictures/packing.h"
#include "pictures/read_metadata.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;
using vips::VTarget;

namespace {

// Throws vips::VError.
void encode(const Picture& picture, const FileFormat& format, const VTarget& target, const SaveOptions& choice) {
  VImage image = imageOf(picture);
  // The library would write a broken block of what it reads as IPTC.
  if (!format.kept.iptc) dropIptc(image);
  vips::VOption* const options = VImage::option()->set("in", image)->set("target", target);
  setPacking(format, picture.samples(), choice, *options);
  VImage::call(format.saver.operation, options);
}

void encodeThenWrite(const Picture& picture, const FileFormat& format, int descriptor, const std::string& name,
                     const SaveOptions& options) {
  const VTarget memory = translated(name, Cause::Unwritable, [&] {
    VTarget target = VTarget::new_to_memory();
    encode(picture, format, target, options);
    return target;
  });
  std::size_t size = 0;
  const auto* bytes = static_cast<const char*>(vips_blob_get(memory.get_target()->blob, &size));
  writeAll(descriptor, bytes, size, name);
}

}  // namespace

void savePicture(const Picture& picture, const FileFormat& format, int descriptor, const std::string& name,
                 const SaveOptions& options) {
  if (format.saver.wholeFirst) return encodeThenWrite(picture, format, descriptor, name, options);
  translated(name, Cause::Unwritable,
             [&] { encode(picture, format, VTarget::new_to_descriptor(descriptor), options); });
}

void savePictureToPipe(const Picture& picture, const FileFormat& format, const SaveOptions& options) {
  encodeThenWrite(picture, format, STDOUT_FILENO, "standard output", options);
}

}  // namespace orbel
