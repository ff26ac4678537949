// What each band of a picture holds, as runs of the plug-in.
#pragma once

#include <string>
#include <vector>

#include "settings/settings.h"

namespace orbel {

// One of the six runs that show a picture taken apart.
struct BandRun {
  std::string name;   // of its file: band1 to band5, residual
  std::string label;  // for people, two lines
  Settings settings;
};

// Each band by itself, around middle grey: its own settings, every other gain and the residual's at 0, half on. Then
// the residual by itself: all gains at 0, half off. All of them plane by plane and without the overlay, so that with
// what the settings give each, the bands less middle grey and the residual add up to the equalized planes.
std::vector<BandRun> bandRuns(const Settings& settings);

}  // namespace orbel
