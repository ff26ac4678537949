// All that a run is set to: the plug-in's own settings, and what is done with its result.
#pragma once

#include <optional>
#include <string>

#include "settings/settings.h"

namespace orbel {

struct SettingsChoice {
  Settings settings;
  double mix = 100;                 // percent of the result in the blend with the original, 0 to 100
  std::optional<std::string> mask;  // picture that is white where the result shows in full
  std::optional<int> refEdge;       // long edge in pixels of the picture that the radii are meant for
  bool printSettings = false;
};

// The two that settings files and the command line both take. Throw SettingsError when mix is not within 0 to 100, or
// ref-edge below 0; a ref-edge of 0 takes the radii as they are.
void setMix(const std::string& option, double mix, SettingsChoice& choice);
void setRefEdge(const std::string& option, int pixels, SettingsChoice& choice);

}  // namespace orbel
