// Values as people type them, with refusals that name the option.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace orbel {

// A setting that can't be understood; what() names the option or the file, and the value.
struct SettingsError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string quoted(const std::string& text);

// Each takes the whole text, and throws SettingsError for anything else than a finite number, an integer of 32 bits, or
// one of on, off, true, false, yes, no, 1, 0.
double numberFrom(const std::string& option, const std::string& text);
std::int32_t integerFrom(const std::string& option, const std::string& text);
bool truthFrom(const std::string& option, const std::string& text);

// The parts between separators; one more than there are separators.
std::vector<std::string> split(const std::string& text, char separator);

// "KEY=VALUE", taken apart at the first equals sign. Throws SettingsError when there is none.
struct Pair {
  std::string key;
  std::string value;
};
Pair pairFrom(const std::string& option, const std::string& text);

}  // namespace orbel
