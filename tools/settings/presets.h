// Presets: settings files with a name. Some come with the program; people keep their own beside its configuration.
#pragma once

#include <string>
#include <vector>

#include "settings/settings.h"

namespace orbel {

struct Preset {
  std::string name;  // as people say it, with spaces: the file's name without extension, hyphens as spaces
  std::string file;
  bool own;  // the user's, not the program's
};

// All presets by name. One of the user's hides the program's of the same name.
std::vector<Preset> allPresets();

// The file of a preset, whose name may have hyphens for spaces and capitals; what has a slash in it or ends in .toml is
// a file already. Throws SettingsError, which names the presets that there are.
std::string presetFile(const std::string& nameOrFile);

// Where a preset of the user's of that name stands or would stand. Throws SettingsError for a name of other characters
// than letters, digits, hyphens, underscores and spaces, and when there is no home folder.
std::string ownPresetFile(const std::string& name);

}  // namespace orbel
