// Settings as a script for Photoshop.
#pragma once

#include <string>

#include "settings/settings.h"

namespace orbel {

// A script that plays the filter with these settings and no dialog on the active document. Radii with a reference edge
// are scaled by the script, to the document that it meets. Throws SettingsError for a mix or a mask: those are orbel's,
// and Photoshop has layers for them.
std::string photoshopScript(const Settings& settings);

}  // namespace orbel
