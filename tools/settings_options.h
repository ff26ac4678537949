// The settings as options of a command line.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "settings.h"

// As typed; lists and values are still text.
struct SettingsArguments {
  std::optional<std::string> contrast;
  std::optional<std::string> radius;
  std::optional<std::string> threshold;
  std::optional<std::string> edge;
  std::optional<std::string> factor;
  std::optional<std::string> cross;
  std::vector<std::string> pairs;
  bool half = false;
  bool luminance = false;
  bool planes = false;
};

struct SettingsChoice {
  Settings settings;
  double mix = 100;
  std::optional<std::string> mask;
  std::optional<int> refEdge;
  bool printSettings = false;
};

// Registers all settings in groups of the command's help.
void addSettingsOptions(CLI::App& command, SettingsArguments& arguments);

// Throws SettingsError.
SettingsChoice chooseSettings(const SettingsArguments& arguments);
