// Writing to a descriptor until it has everything.
#pragma once

#include <cstddef>
#include <string>

namespace orbel {

// Throws Failure, which names name, when the descriptor takes no more.
void writeAll(int descriptor, const char* data, std::size_t size, const std::string& name);

}  // namespace orbel
