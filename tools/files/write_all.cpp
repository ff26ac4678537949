#include "files/write_all.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "files/failure.h"

namespace orbel {

void writeAll(int descriptor, const char* data, std::size_t size, const std::string& name) {
  while (size > 0) {
    const ssize_t written = write(descriptor, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw Failure(name, std::generic_category().message(errno), Cause::Unwritable);
    data += written;
    size -= static_cast<std::size_t>(written);
  }
}

}  // namespace orbel
