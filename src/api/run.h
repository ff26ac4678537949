// What whole runs and stacks share.
#pragma once

#include <optional>

#include "api/orbel.h"
#include "equalizer/plan.h"
#include "equalizer/progress.h"

// The mask of a picture, where the options name one. Throws Refusal.
std::optional<orbel_picture> maskFor(const orbel_options& options, const orbel_picture& picture);

// Nothing where nobody wants to be told. options outlives the progress.
std::optional<Progress> progressFor(const orbel_options& options, double work);

// Throws Refusal for a plan that isn't admitted.
Plan requirePlan(const ScaledParameters& parameters, const orbel_settings& settings, const orbel_picture& picture);
