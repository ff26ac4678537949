// Settings as TOML files: the words of the command line, one a line.
//
//   description = "What it is for, in a sentence."
//   gain = [100, 140, 160, 130, 110]    # one value for each band, finest first, or one for all
//   edges = [false, true, true, true, true]
//   residual = 100
//
// The words: gain, radius, threshold, edges; residual, half, luminance, overlay; mix, mask, reference-edge;
// description. Older ones stay: contrast, factor, cross, ref-edge. All may be left out.
#pragma once

#include <string>

#include "settings/settings.h"

namespace orbel {

// Puts what the file holds over the settings, and returns its description. A mask's name counts from the file's folder.
// Throws SettingsError, which names the file and the line, when the file can't be read, is no TOML, or holds a word or
// a value that is no setting.
std::string readSettings(const std::string& file, Settings& settings);

// All of the settings, as a file that readSettings takes. A mask's name becomes absolute, so that the file may lie
// anywhere. An empty description is left out.
std::string settingsText(const Settings& settings, const std::string& description);

}  // namespace orbel
