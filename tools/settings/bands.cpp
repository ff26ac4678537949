#include "settings/bands.h"

#include <fmt/format.h>

namespace orbel {

namespace {

// Nothing but the band, or nothing but the residual for ORBEL_BANDS.
orbel_settings alone(orbel_settings run, int shown) {
  for (int band = 0; band < ORBEL_BANDS; ++band) {
    if (band != shown) run.bands[band].gain = 0;
  }
  if (shown != ORBEL_BANDS) run.residual = 0;
  run.half = shown != ORBEL_BANDS ? 1 : 0;
  run.luminance = 0;
  run.overlay = 0;
  run.mix = 100;
  run.limit = 0;
  return run;
}

std::string describe(const orbel_band& band) {
  if (band.edges == 0) return fmt::format("gain {:.4g} %, radius {:.4g}", band.gain, band.radius);
  return fmt::format("gain {:.4g} %, radius {:.4g}, edges from {:.4g}", band.gain, band.radius, band.threshold);
}

}  // namespace

std::vector<BandView> bandViews(const orbel_settings& run) {
  std::vector<BandView> views;
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    const char* const end = i == 0 ? " (finest)" : i == ORBEL_BANDS - 1 ? " (coarsest)" : "";
    const std::string label = fmt::format("Band {}{}\n{}", i + 1, end, describe(run.bands[i]));
    views.push_back({fmt::format("band{}", i + 1), label, alone(run, i)});
  }
  const std::string label = fmt::format("Residual\ngain {:.4g} %", run.residual);
  views.push_back({"residual", label, alone(run, ORBEL_BANDS)});
  return views;
}

}  // namespace orbel
