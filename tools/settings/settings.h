// All that a run is set to, and the words by which people know it.
#pragma once

#include <optional>
#include <string>

#include "api/orbel.h"
#include "settings/text_values.h"

namespace orbel {

struct Settings {
  orbel_settings run;               // as the engine has it; the reference edge is the one that the radii are meant for
  std::optional<std::string> mask;  // a picture that is white where the result shows in full

  Settings();  // the engine's defaults
};

// A setting with a value for each band ("gain": the keys CON1 to CON5), or one for the whole picture ("residual":
// FCTR). The words are those of the command line and of settings files alike; where there are two, both are understood,
// and the first is written.
struct SettingWord {
  const char* word;
  const char* other;  // null where there is one
  const char* key;    // the first three characters of a band's keys, or the whole key
};
inline constexpr SettingWord bandWords[] = {
    {"gain", "contrast", "CON"}, {"radius", nullptr, "RAD"}, {"threshold", nullptr, "THR"}, {"edges", "edge", "EDG"}};
inline constexpr SettingWord pictureWords[] = {{"residual", "factor", "FCTR"},
                                               {"half", nullptr, "HALF"},
                                               {"luminance", nullptr, "LUMI"},
                                               {"overlay", "cross", "WDTH"}};
inline constexpr SettingWord mixWord = {"mix", nullptr, nullptr};
inline constexpr SettingWord referenceEdgeWord = {"reference-edge", "ref-edge", nullptr};
inline constexpr SettingWord formWord = {"form", nullptr, nullptr};
inline constexpr SettingWord limitWord = {"limit", nullptr, nullptr};
inline constexpr SettingWord maskWord = {"mask", nullptr, nullptr};

bool isSaid(const SettingWord& known, const std::string& word);

// The word among those of bands, or of the picture; null where there is none.
const SettingWord* bandWord(const std::string& word);
const SettingWord* pictureWord(const std::string& word);

// The key of a band, 1 for the finest.
std::string keyOf(const SettingWord& word, int band);

// For keys that there are.
orbel_key_kind kindOf(const std::string& key);
double valueOf(const Settings& settings, const std::string& key);
void setNumber(Settings& settings, const std::string& key, double value);  // in any range

// The same, refusing what the engine doesn't allow, with a message that begins with the option.
void setInRange(Settings& settings, const std::string& option, const std::string& key, double value);
void setMix(Settings& settings, const std::string& option, double percent);
void setReferenceEdge(Settings& settings, const std::string& option, int pixels);
void setForm(Settings& settings, const std::string& option, const std::string& word);
const char* formOf(const Settings& settings);  // its word: "pyramid", "wavelets"

// From text. All of them throw SettingsError, which names the option: when there is no such key or word, and when the
// text is no value of its kind and range.
void setKey(Settings& settings, const std::string& option, const std::string& key, const std::string& value);
void setPair(Settings& settings, const std::string& option, const std::string& pair);  // "KEY=VALUE"

// The five keys of a word, from five values between commas, finest band first, or from one value for all.
void setBands(Settings& settings, const std::string& option, const SettingWord& word, const std::string& values);

// "N:WORD=VALUE,...": some of one band's values.
void setBand(Settings& settings, const std::string& option, const std::string& text);

// True when the result is blended with the original.
bool isBlended(const Settings& settings);

// Throws SettingsError for what the plug-in's 24 keys can't say; a mix and a mask are looked at elsewhere. what: who
// would have to know it.
void requireThatKeysSay(const orbel_settings& settings, const std::string& what);

// For a module, which knows radii in the picture's own pixels alone: with a reference edge, the radii times the longer
// side of a picture of this size over it. Near to what the engine makes of a reference edge, not the same.
orbel_settings scaledTo(int width, int height, const orbel_settings& settings);

}  // namespace orbel
