// What results tell of how they were made.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/made_with.h"

namespace orbel {

// By its metadata, else its recipe, for each of the results; nothing for one that tells nothing, or that can't be read.
// They are read in a process of its own: a file that brings it down tells nothing, and spoils no other.
std::vector<std::optional<MadeWith>> madeWithOf(const std::vector<std::string>& results);

}  // namespace orbel
