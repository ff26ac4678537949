// Settings as presets for GIMP's dialog of orbel:band-equalizer: the file in which GIMP keeps them, and what the user
// has saved there.
#pragma once

#include <string>
#include <vector>

#include "settings/settings.h"

namespace orbel {

// A name as GIMP's list shows it.
struct GimpPreset {
  std::string name;
  Settings settings;
};

// "$XDG_CONFIG_HOME/GIMP/VERSION/filters/GimpGegl-orbel-band-equalizer-config.settings", or below ~/.config. Throws
// SettingsError where there is no home folder.
std::string gimpPresetsFile(const std::string& version);

struct GimpMerge {
  std::string text;               // of the whole file
  std::vector<std::string> left;  // those that were there already by name, and stay as they were
};

// What a file holds, with these presets after it. Nothing of it is lost. Throws SettingsError, naming the file, for a
// text that isn't GIMP's; and naming the preset, for settings that the operation hasn't: an overlay and a mask.
GimpMerge mergedGimpPresets(const std::string& file, const std::string& text, const std::vector<GimpPreset>& presets);

}  // namespace orbel
