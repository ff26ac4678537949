// What whole runs and stacks share.
#pragma once

#include <memory>
#include <optional>

#include "api/orbel.h"
#include "api/picture.h"
#include "equalizer/band_stack.h"
#include "equalizer/plan.h"
#include "equalizer/progress.h"

// The work on a picture of some size.
struct Task {
  IppiSize picture;
  Planes planes;
  bool isFull;                  // worked on at the picture's own size, line by line
  ScaledParameters parameters;  // with the radii that are worked with
  double radii;                 // what the settings' were multiplied by
  Plan plan;                    // of the size that is worked on

  Task(const orbel_settings& settings, const orbel_picture& shape);

  // In taps.
  double takingApart() const;
  double puttingTogether() const { return linesWork(picture); }

  StackBytes bytes(int threads) const;
};

// Throws Refusal for a task that has no room.
void requireAdmitted(const Task& task, const orbel_settings& settings);

// progress may be null, and gets takingApart(). Throws NO_MEMORY_ERROR, and Cancelled.
std::unique_ptr<BandStack> takeApart(const Task& task, const PictureLines& picture, Progress* progress);

// The mask of a picture, where the options name one. Throws Refusal.
std::optional<orbel_picture> maskFor(const orbel_options& options, const orbel_picture& picture);

// Nothing where nobody wants to be told. options outlives the progress.
std::optional<Progress> progressFor(const orbel_options& options, double work);
