#include "settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "host/script_keys.h"

namespace {

std::string nameOf(DescriptorKeyID code) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(code >> shift & 0xFF);
  return name;
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

const ScriptKey* findKey(const std::string& key) {
  return std::find_if(std::begin(scriptKeys), std::end(scriptKeys),
                      [&](const ScriptKey& k) { return key == nameOf(k.code); });
}

std::size_t positionOf(const ScriptKey* key) { return static_cast<std::size_t>(key - std::begin(scriptKeys)); }

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

Settings::Settings() : values_(std::size(scriptKeys)) { set("", "WDTH", "0"); }

void Settings::set(const std::string& option, const std::string& key, const std::string& value) {
  const ScriptKey* const found = findKey(key);
  if (found == std::end(scriptKeys)) throw SettingsError(option + ": there is no key " + quoted(key));
  std::optional<double>& target = values_[positionOf(found)];
  switch (found->kind) {
    case ScriptKind::Float:
      target = number(option, value);
      break;
    case ScriptKind::Flag:
      target = truth(option, value);
      break;
    case ScriptKind::Integer:
      target = integer(option, value);
      break;
  }
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

double Settings::value(const std::string& key) const {
  const ScriptKey* const found = findKey(key);
  return values_.at(positionOf(found)).value_or(found->fallback);
}

std::vector<ScriptValue> Settings::script() const {
  std::vector<ScriptValue> script;
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (values_[i]) script.push_back({scriptKeys[i].code, descriptorType(scriptKeys[i].kind), *values_[i]});
  }
  return script;
}
