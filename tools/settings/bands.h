// What shows each band of a picture by itself, as settings.
#pragma once

#include <string>
#include <vector>

#include "api/orbel.h"

namespace orbel {

// One of the six settings that show a picture taken apart.
struct BandView {
  std::string name;   // of its file: band1 to band5, residual
  std::string label;  // for people, two lines
  orbel_settings run;
};

// Each band by itself, around middle grey: its own gain, every other gain and the residual's at 0, half on. Then the
// residual by itself: all gains at 0, half off. All of them plane by plane, whole and without the overlay, so that with
// what the settings give each, the bands less middle grey and the residual add up to the equalized planes.
std::vector<BandView> bandViews(const orbel_settings& run);

}  // namespace orbel
