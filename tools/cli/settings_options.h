// The options that settings are given by, shared by all commands that run the plug-in or speak of its settings.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "settings/settings.h"

namespace CLI {
class App;
}

namespace orbel {

// The options as they were typed; lists and values are still text.
struct SettingsArguments {
  std::optional<std::string> preset;
  std::optional<std::string> gain;
  std::optional<std::string> radius;
  std::optional<std::string> threshold;
  std::optional<std::string> edges;
  std::vector<std::string> bands;
  std::vector<std::string> pairs;
  std::optional<std::string> residual;
  std::optional<bool> half;
  std::optional<bool> luminance;
  std::optional<std::string> overlay;
  std::optional<std::string> mix;
  std::optional<std::string> mask;
  std::optional<std::string> referenceEdge;
  std::optional<std::string> form;
  std::optional<bool> limit;
  bool printSettings = false;
};

// Registers all of them with the command, in groups by purpose. The arguments must outlive the parse.
void addSettingsOptions(CLI::App& command, SettingsArguments& arguments);

// What the arguments ask for. Each of these wins over those before it: what is built in, the preset, lists and options
// for the whole picture, options for one band, keys. Throws SettingsError, which names the option or the file.
Settings chooseSettings(const SettingsArguments& arguments);

// With --print-settings: prints the settings to standard output, as a settings file, and returns true.
bool printIfAsked(const SettingsArguments& arguments, const Settings& settings);

}  // namespace orbel
