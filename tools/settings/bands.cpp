#include "settings/bands.h"

#include <fmt/format.h>

namespace orbel {

namespace {

constexpr int bandCount = 5;

std::string keyOf(const char* family, int band) { return family + std::to_string(band); }

// Nothing but the band, or nothing but the residual for band 0.
Settings alone(Settings settings, int band) {
  for (int other = 1; other <= bandCount; ++other) {
    if (other != band) settings.setNumber(keyOf("CON", other), 0);
  }
  if (band != 0) settings.setNumber("FCTR", 0);
  settings.setNumber("HALF", band != 0 ? 1 : 0);
  settings.setNumber("LUMI", 0);
  settings.setNumber("WDTH", 0);
  return settings;
}

std::string describe(const Settings& settings, int band) {
  const double gain = settings.value(keyOf("CON", band));
  const double radius = settings.value(keyOf("RAD", band));
  if (settings.value(keyOf("EDG", band)) == 0) return fmt::format("gain {:.4g} %, radius {:.4g}", gain, radius);
  return fmt::format("gain {:.4g} %, radius {:.4g}, edges from {:.4g}", gain, radius,
                     settings.value(keyOf("THR", band)));
}

}  // namespace

std::vector<BandRun> bandRuns(const Settings& settings) {
  std::vector<BandRun> runs;
  for (int band = 1; band <= bandCount; ++band) {
    const char* const end = band == 1 ? " (finest)" : band == bandCount ? " (coarsest)" : "";
    runs.push_back({fmt::format("band{}", band), fmt::format("Band {}{}\n{}", band, end, describe(settings, band)),
                    alone(settings, band)});
  }
  runs.push_back({"residual", fmt::format("Residual\nfactor {:.4g} %", settings.value("FCTR")), alone(settings, 0)});
  return runs;
}

}  // namespace orbel
