// Shared objects as files.
#pragma once

#include <string>

namespace orbel {

// Why the system's loader must not see this file: it would wait for ever for what is no regular file, and be killed on
// reading what is missing from one that is cut short. Empty where it may, whose own reasons are good enough.
std::string reasonNotToLoad(const std::string& file);

}  // namespace orbel
