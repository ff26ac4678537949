// What a file's content comes to.
#pragma once

#include <string>

namespace orbel {

// SHA-256 in hexadecimal digits; empty when the file can't be read, or is no regular file.
std::string sha256Of(const std::string& file);

}  // namespace orbel
