#include "pictures/errors.h"

#include <cstddef>
#include <optional>

#include "pictures/file_headers.h"
#include "pictures/formats.h"
#include "pictures/picture.h"

namespace orbel {

std::string lastError() {
  std::string text = vips_error_buffer();
  vips_error_clear();
  // The system's own reason, where there is one, without all that followed from it.
  const std::string system = "unix error: ";
  if (const std::size_t at = text.find(system); at != std::string::npos) {
    text = text.substr(at + system.size());
    return text.substr(0, text.find('\n'));
  }
  while (!text.empty() && text.back() == '\n') text.pop_back();
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) text.replace(at, 1, "; ");
  return text.empty() ? saysWhatCannotBe : text;
}

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

}  // namespace orbel
