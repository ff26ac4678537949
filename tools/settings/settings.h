// The plug-in's settings: its 24 four-character keys, and the words by which people know them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/script_keys.h"
#include "plugin/script_descriptor.h"
#include "settings/text_values.h"

namespace orbel {

// A setting with a value for each band ("contrast": CON1 to CON5), or one for the whole picture ("factor": FCTR). The
// words are those of the command line and of settings files alike.
//
// The plug-in takes any number. The program refuses what can only be a slip: gains of more than tenfold, lengths beyond
// the longest side of a picture, thresholds beyond the difference of black and white in 8 bits.
struct SettingWord {
  const char* word;
  const char* key;  // the first three characters of a band's keys, or the whole key
  ScriptKind kind;
  double least;
  double most;
};
inline constexpr SettingWord bandWords[] = {{"contrast", "CON", ScriptKind::Float, -1000, 1000},
                                            {"radius", "RAD", ScriptKind::Float, 0, 32767},
                                            {"threshold", "THR", ScriptKind::Float, 0, 255},
                                            {"edges", "EDG", ScriptKind::Flag, 0, 1}};
inline constexpr SettingWord pictureWords[] = {{"factor", "FCTR", ScriptKind::Float, -1000, 1000},
                                               {"half", "HALF", ScriptKind::Flag, 0, 1},
                                               {"luminance", "LUMI", ScriptKind::Flag, 0, 1},
                                               {"cross", "WDTH", ScriptKind::Integer, 0, 32767}};

// Throws SettingsError, which begins with the option, when the value exceeds the word's range.
void requireInRange(const std::string& option, const SettingWord& word, double value);

// The four characters of a key.
std::string nameOf(DescriptorKeyID code);

// The keys that were given a value; the plug-in's own defaults hold for the others. WDTH alone starts out with 0: the
// plug-in would draw its overlay.
class Settings {
 public:
  Settings();

  // One key, from text. Throws SettingsError when there is no such key, or the text is no value of its type and range.
  void set(const std::string& option, const std::string& key, const std::string& value);

  // One key, from a number that suits its type, of any range. For keys that there are.
  void setNumber(const std::string& key, double value);

  // "KEY=VALUE"
  void setPair(const std::string& option, const std::string& pair);

  // The five keys of a family ("CON", "RAD", "THR", "EDG"), from five values between commas, finest band first, or from
  // one value for all.
  void setBands(const std::string& option, const std::string& family, const std::string& values);

  // "N:WORD=VALUE,...": some of one band's values, by the words of bandWords.
  void setBand(const std::string& option, const std::string& text);

  // What the plug-in runs with: the value that was given, or the plug-in's default. For keys that there are.
  double value(const std::string& key) const;

  // In the order of the plug-in's record: the keys that were given a value, or all of them.
  std::vector<ScriptValue> script() const;
  std::vector<ScriptValue> wholeScript() const;

 private:
  std::array<std::optional<double>, scriptKeyCount> values_;  // one a key
};

}  // namespace orbel
