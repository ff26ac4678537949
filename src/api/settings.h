// The door's settings as the equalizer takes them.
#pragma once

#include "api/orbel.h"
#include "equalizer/plan.h"

// Throws Refusal for a record that isn't one, and for what a member doesn't allow.
orbel_settings requireSettings(const orbel_settings* settings);

ScaledParameters parametersOf(const orbel_settings& settings);

// Whether radii, thresholds, edges, luminance, reference edge and form are the same: what a picture is taken apart by.
bool takeApartAlike(const orbel_settings& a, const orbel_settings& b);
