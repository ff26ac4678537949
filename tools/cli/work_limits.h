// The bounds that a command's work is held to, and the options that set them.
#pragma once

#include <cstdint>
#include <optional>

namespace CLI {
class App;
}

namespace orbel {

struct Limits {
  double mostMinutes = 10;              // 0: none
  std::optional<std::uint64_t> memory;  // bytes

  // Bytes: as given, else what the machine has to offer; 0 where nobody knows.
  double mostMemory() const;
};

// Registers --memory and --max-minutes with the command. The limits must outlive the parse.
void addLimitOptions(CLI::App& command, Limits& limits, const char* group);

}  // namespace orbel
