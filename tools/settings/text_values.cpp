#include "settings/text_values.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace orbel {

namespace {

// The whole text as a number; nothing when anything is left over.
template <typename T>
std::optional<T> parse(const std::string& text) {
  const char* const end = text.data() + text.size();
  const char* const begin = text.data() + (text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
  T value{};
  const auto [rest, error] = std::from_chars(begin, end, value);
  if (error != std::errc{} || rest != end) return std::nullopt;
  return value;
}

}  // namespace

std::string quoted(const std::string& text) { return "'" + text + "'"; }

double numberFrom(const std::string& option, const std::string& text) {
  const std::optional<double> value = parse<double>(text);
  if (!value || !std::isfinite(*value)) throw SettingsError(option + ": " + quoted(text) + " is not a number");
  return *value;
}

std::int32_t integerFrom(const std::string& option, const std::string& text) {
  const std::optional<std::int32_t> value = parse<std::int32_t>(text);
  if (!value) throw SettingsError(option + ": " + quoted(text) + " is not a whole number");
  return *value;
}

bool truthFrom(const std::string& option, const std::string& text) {
  for (const char* word : {"on", "true", "yes", "1"}) {
    if (text == word) return true;
  }
  for (const char* word : {"off", "false", "no", "0"}) {
    if (text == word) return false;
  }
  throw SettingsError(option + ": " + quoted(text) + " is neither on nor off");
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

Pair pairFrom(const std::string& option, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) throw SettingsError(option + ": " + quoted(text) + " is not KEY=VALUE");
  return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace orbel
