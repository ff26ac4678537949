// The plug-in's settings as people write them: its 24 four-character keys, and lists of one value a band.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "script_descriptor.h"

// A setting that can't be understood; what() names the option and the value.
struct SettingsError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The keys that were given a value; the plug-in's own defaults hold for the others. WDTH alone starts out with 0: the
// plug-in would draw its overlay.
class Settings {
 public:
  Settings();

  // One key, from text. Throws SettingsError when there is no such key or the text is no value of its type: a finite
  // number, an integer of 32 bits, or one of on, off, true, false, yes, no, 1, 0.
  void set(const std::string& option, const std::string& key, const std::string& value);

  // "KEY=VALUE"
  void setPair(const std::string& option, const std::string& pair);

  // The five keys of a family ("CON", "RAD", "THR", "EDG"), from five values between commas, finest band first, or from
  // one value for all.
  void setBands(const std::string& option, const std::string& family, const std::string& values);

  // What the plug-in runs with: the value that was given, or the plug-in's default. For keys that there are.
  double value(const std::string& key) const;

  // In the order of the plug-in's record.
  std::vector<ScriptValue> script() const;

 private:
  std::vector<std::optional<double>> values_;  // one a key
};
