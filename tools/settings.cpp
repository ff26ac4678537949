#include "settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

struct Key {
  const char* name;
  DescriptorTypeID type;
};
constexpr std::array<Key, 24> keys = {
    {{"CON1", typeFloat},   {"CON2", typeFloat},   {"CON3", typeFloat},   {"CON4", typeFloat},   {"CON5", typeFloat},
     {"RAD1", typeFloat},   {"RAD2", typeFloat},   {"RAD3", typeFloat},   {"RAD4", typeFloat},   {"RAD5", typeFloat},
     {"THR1", typeFloat},   {"THR2", typeFloat},   {"THR3", typeFloat},   {"THR4", typeFloat},   {"THR5", typeFloat},
     {"EDG1", typeBoolean}, {"EDG2", typeBoolean}, {"EDG3", typeBoolean}, {"EDG4", typeBoolean}, {"EDG5", typeBoolean},
     {"FCTR", typeFloat},   {"HALF", typeBoolean}, {"LUMI", typeBoolean}, {"WDTH", typeInteger}}};

DescriptorKeyID codeOf(const char* name) {
  return fourCharacters({name[0], name[1], name[2], name[3], '\0'});
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }

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

double number(const std::string& option, const std::string& text) {
  const std::optional<double> value = parse<double>(text);
  if (!value || !std::isfinite(*value)) throw SettingsError(option + ": " + quoted(text) + " is not a number");
  return *value;
}

double integer(const std::string& option, const std::string& text) {
  const std::optional<std::int32_t> value = parse<std::int32_t>(text);
  if (!value) throw SettingsError(option + ": " + quoted(text) + " is not a whole number");
  return *value;
}

double truth(const std::string& option, const std::string& text) {
  for (const char* word : {"on", "true", "yes", "1"}) {
    if (text == word) return 1.0;
  }
  for (const char* word : {"off", "false", "no", "0"}) {
    if (text == word) return 0.0;
  }
  throw SettingsError(option + ": " + quoted(text) + " is neither on nor off");
}

std::vector<std::string> split(const std::string& list) {
  std::vector<std::string> parts(1);
  for (const char c : list) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

}  // namespace

Settings::Settings() : values_(keys.size()) { values_.back() = 0.0; }

void Settings::set(const std::string& option, const std::string& key, const std::string& value) {
  const auto* const found = std::find_if(keys.begin(), keys.end(), [&](const Key& k) { return key == k.name; });
  if (found == keys.end()) throw SettingsError(option + ": there is no key " + quoted(key));
  values_[static_cast<std::size_t>(found - keys.begin())] = found->type == typeFloat     ? number(option, value)
                                                            : found->type == typeBoolean ? truth(option, value)
                                                                                         : integer(option, value);
}

void Settings::setPair(const std::string& option, const std::string& pair) {
  const std::size_t equals = pair.find('=');
  if (equals == std::string::npos) throw SettingsError(option + ": " + quoted(pair) + " is not KEY=VALUE");
  set(option + " " + pair, pair.substr(0, equals), pair.substr(equals + 1));
}

void Settings::setBands(const std::string& option, const std::string& family, const std::string& values) {
  std::vector<std::string> parts = split(values);
  if (parts.size() == 1) parts.resize(5, parts.front());
  if (parts.size() != 5) throw SettingsError(option + ": " + quoted(values) + " is neither one value nor five");
  for (std::size_t band = 0; band < 5; ++band) set(option, family + std::to_string(band + 1), parts[band]);
}

std::vector<ScriptValue> Settings::script() const {
  std::vector<ScriptValue> script;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (values_[i]) script.push_back({codeOf(keys[i].name), keys[i].type, *values_[i]});
  }
  return script;
}
