// The option that picks a page of a picture that has several.
#pragma once

#include <optional>

#include "cli/commands.h"

namespace orbel {

inline CLI::Option* addPageOption(CLI::App& command, std::optional<int>& page) {
  return command
      .add_option("--page", page, "Of a picture with several pages or frames, take the one of this number, from 1")
      ->type_name("N")
      ->check(CLI::Range(1, 1 << 20).description(""));
}

}  // namespace orbel
