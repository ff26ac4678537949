#include "settings/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace orbel {

namespace {

const ScriptKey* findKey(const std::string& key) {
  return std::find_if(std::begin(scriptKeys), std::end(scriptKeys),
                      [&](const ScriptKey& k) { return key == nameOf(k.code); });
}

// Every key has one.
const SettingWord& wordOf(const std::string& key) {
  const auto isOf = [&](const SettingWord& word) { return key.rfind(word.key, 0) == 0; };
  const auto* const ofBand = std::find_if(std::begin(bandWords), std::end(bandWords), isOf);
  return ofBand != std::end(bandWords) ? *ofBand
                                       : *std::find_if(std::begin(pictureWords), std::end(pictureWords), isOf);
}

std::size_t positionOf(const ScriptKey* key) { return static_cast<std::size_t>(key - std::begin(scriptKeys)); }

}  // namespace

std::string nameOf(DescriptorKeyID code) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(code >> shift & 0xFF);
  return name;
}

void requireInRange(const std::string& option, const SettingWord& word, double value) {
  if (value >= word.least && value <= word.most) return;
  throw SettingsError(
      fmt::format("{}: {} is out of range; {} goes from {} to {}", option, value, word.word, word.least, word.most));
}

Settings::Settings() { setNumber("WDTH", 0); }

void Settings::set(const std::string& option, const std::string& key, const std::string& value) {
  const ScriptKey* const found = findKey(key);
  if (found == std::end(scriptKeys)) throw SettingsError(option + ": there is no key " + quoted(key));
  const auto number = [&]() -> double {
    if (found->kind == ScriptKind::Float) return numberFrom(option, value);
    if (found->kind == ScriptKind::Integer) return integerFrom(option, value);
    return truthFrom(option, value) ? 1.0 : 0.0;
  }();
  requireInRange(option, wordOf(key), number);
  values_.at(positionOf(found)) = number;
}

void Settings::setNumber(const std::string& key, double value) { values_.at(positionOf(findKey(key))) = value; }

void Settings::setPair(const std::string& option, const std::string& pair) {
  const auto [key, value] = pairFrom(option, pair);
  set(option + " " + pair, key, value);
}

void Settings::setBands(const std::string& option, const std::string& family, const std::string& values) {
  std::vector<std::string> parts = split(values, ',');
  if (parts.size() == 1) parts.resize(5, parts.front());
  if (parts.size() != 5) throw SettingsError(option + ": " + quoted(values) + " is neither one value nor five");
  for (std::size_t band = 0; band < 5; ++band) set(option, family + std::to_string(band + 1), parts[band]);
}

void Settings::setBand(const std::string& option, const std::string& text) {
  const std::size_t colon = text.find(':');
  const std::string band = text.substr(0, colon);
  if (colon == std::string::npos || band.size() != 1 || band < "1" || band > "5") {
    throw SettingsError(option + ": " + quoted(text) + " is not BAND:WORD=VALUE,... with a band from 1 to 5");
  }
  const std::string place = option + " " + text;
  for (const std::string& part : split(text.substr(colon + 1), ',')) {
    const Pair pair = pairFrom(place, part);
    const auto* const word = std::find_if(std::begin(bandWords), std::end(bandWords),
                                          [&](const SettingWord& known) { return known.word == pair.key; });
    if (word == std::end(bandWords)) {
      throw SettingsError(place + ": a band has contrast, radius, threshold and edges, but no " + quoted(pair.key));
    }
    set(place, word->key + band, pair.value);
  }
}

double Settings::value(const std::string& key) const {
  const ScriptKey* const found = findKey(key);
  return values_.at(positionOf(found)).value_or(found->fallback);
}

std::vector<ScriptValue> Settings::script() const {
  std::vector<ScriptValue> script;
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (values_.at(i)) script.push_back({scriptKeys[i].code, descriptorType(scriptKeys[i].kind), *values_.at(i)});
  }
  return script;
}

std::vector<ScriptValue> Settings::wholeScript() const {
  std::vector<ScriptValue> script;
  for (const ScriptKey& key : scriptKeys) {
    script.push_back({key.code, descriptorType(key.kind), value(nameOf(key.code))});
  }
  return script;
}

}  // namespace orbel
