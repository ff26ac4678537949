#include "settings/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace orbel {

namespace {

constexpr const char* formWords[] = {"pyramid", "wavelets"};  // by the engine's numbers

template <std::size_t count>
const SettingWord* find(const SettingWord (&words)[count], const std::string& word) {
  const auto* const found =
      std::find_if(std::begin(words), std::end(words), [&](const SettingWord& known) { return isSaid(known, word); });
  return found == std::end(words) ? nullptr : found;
}

// The word that people know a key by.
const char* wordOf(const std::string& key) {
  for (const SettingWord& word : bandWords) {
    if (key.rfind(word.key, 0) == 0) return word.word;
  }
  for (const SettingWord& word : pictureWords) {
    if (key == word.key) return word.word;
  }
  return "";
}

}  // namespace

Settings::Settings() : run{} { orbel_settings_init(&run, sizeof run); }

bool isSaid(const SettingWord& known, const std::string& word) {
  return known.word == word || (known.other != nullptr && known.other == word);
}

const SettingWord* bandWord(const std::string& word) { return find(bandWords, word); }
const SettingWord* pictureWord(const std::string& word) { return find(pictureWords, word); }

std::string keyOf(const SettingWord& word, int band) { return word.key + std::to_string(band); }

orbel_key_kind kindOf(const std::string& key) {
  orbel_key_kind kind = ORBEL_KEY_NUMBER;
  orbel_key_kind_of(key.c_str(), &kind);
  return kind;
}

double valueOf(const Settings& settings, const std::string& key) {
  double value = 0;
  orbel_settings_get(&settings.run, key.c_str(), &value);
  return value;
}

void setNumber(Settings& settings, const std::string& key, double value) {
  orbel_settings_set(&settings.run, key.c_str(), value);
}

void setInRange(Settings& settings, const std::string& option, const std::string& key, double value) {
  double least = 0;
  double most = 0;
  orbel_key_range(key.c_str(), &least, &most);
  if (!(value >= least && value <= most)) {
    throw SettingsError(
        fmt::format("{}: {} is out of range; {} goes from {} to {}", option, value, wordOf(key), least, most));
  }
  setNumber(settings, key, value);
}

void setMix(Settings& settings, const std::string& option, double percent) {
  if (!(percent >= 0 && percent <= 100)) throw SettingsError(option + ": a mix goes from 0 to 100");
  settings.run.mix = percent;
}

void setReferenceEdge(Settings& settings, const std::string& option, int pixels) {
  constexpr int longestSide = 32767;
  if (pixels < 0 || pixels > longestSide) {
    throw SettingsError(fmt::format("{}: an edge goes from 0 to {} pixels", option, longestSide));
  }
  settings.run.reference_edge = pixels;
}

void setForm(Settings& settings, const std::string& option, const std::string& word) {
  const auto* const found = std::find(std::begin(formWords), std::end(formWords), word);
  if (found == std::end(formWords))
    throw SettingsError(option + ": a form is pyramid or wavelets, not " + quoted(word));
  settings.run.form = static_cast<std::int32_t>(found - std::begin(formWords));
}

const char* formOf(const Settings& settings) { return formWords[settings.run.form]; }

void requireThatKeysSay(const orbel_settings& settings, const std::string& what) {
  if (settings.form != ORBEL_PYRAMID) {
    throw SettingsError(what + " knows the form pyramid alone, and these settings are for wavelets");
  }
  if (settings.limit != 0) throw SettingsError(what + " knows no limit, which these settings ask for");
}

void setKey(Settings& settings, const std::string& option, const std::string& key, const std::string& value) {
  orbel_key_kind kind = ORBEL_KEY_NUMBER;
  if (orbel_key_kind_of(key.c_str(), &kind) != ORBEL_OK) {
    throw SettingsError(option + ": there is no key " + quoted(key));
  }
  const double number = kind == ORBEL_KEY_NUMBER    ? numberFrom(option, value)
                        : kind == ORBEL_KEY_INTEGER ? integerFrom(option, value)
                        : truthFrom(option, value)  ? 1.0
                                                    : 0.0;
  setInRange(settings, option, key, number);
}

void setPair(Settings& settings, const std::string& option, const std::string& pair) {
  const auto [key, value] = pairFrom(option, pair);
  setKey(settings, option + " " + pair, key, value);
}

void setBands(Settings& settings, const std::string& option, const SettingWord& word, const std::string& values) {
  std::vector<std::string> parts = split(values, ',');
  if (parts.size() == 1) parts.resize(ORBEL_BANDS, parts.front());
  if (parts.size() != ORBEL_BANDS)
    throw SettingsError(option + ": " + quoted(values) + " is neither one value nor five");
  for (int band = 1; band <= ORBEL_BANDS; ++band) {
    setKey(settings, option, keyOf(word, band), parts[static_cast<std::size_t>(band) - 1]);
  }
}

void setBand(Settings& settings, const std::string& option, const std::string& text) {
  const std::size_t colon = text.find(':');
  const std::string band = text.substr(0, colon);
  if (colon == std::string::npos || band.size() != 1 || band < "1" || band > "5") {
    throw SettingsError(option + ": " + quoted(text) + " is not BAND:WORD=VALUE,... with a band from 1 to 5");
  }
  const std::string place = option + " " + text;
  for (const std::string& part : split(text.substr(colon + 1), ',')) {
    const Pair pair = pairFrom(place, part);
    const SettingWord* const word = bandWord(pair.key);
    if (word == nullptr) {
      throw SettingsError(place + ": a band has gain, radius, threshold and edges, but no " + quoted(pair.key));
    }
    setKey(settings, place, word->key + band, pair.value);
  }
}

bool isBlended(const Settings& settings) { return settings.run.mix != 100 || settings.mask; }

orbel_settings scaledTo(int width, int height, const orbel_settings& settings) {
  orbel_settings scaled = settings;
  scaled.reference_edge = 0;
  if (settings.reference_edge == 0) return scaled;
  const double scale = static_cast<double>(std::max(width, height)) / settings.reference_edge;
  for (orbel_band& band : scaled.bands) band.radius *= scale;
  return scaled;
}

}  // namespace orbel
