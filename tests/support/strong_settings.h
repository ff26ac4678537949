// Settings of a run that show in every sample, for tests.
#pragma once

#include <gtest/gtest.h>

#include "api/orbel.h"

// No two bands alike, the residual and the overlay away from their defaults.
inline orbel_settings strongSettings(bool luminance) {
  orbel_settings s;
  EXPECT_EQ(orbel_settings_init(&s, sizeof s), ORBEL_OK);
  const double gains[] = {150, 40, 210, -30, 120};
  const double radii[] = {1.5, 2, 0, 3, 0.7};
  for (int i = 0; i < ORBEL_BANDS; ++i) s.bands[i] = {gains[i], radii[i], 20.0 + 15 * i, i % 2, 0};
  s.residual = 90;
  s.luminance = luminance ? 1 : 0;
  s.overlay = 3;
  return s;
}
