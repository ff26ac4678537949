// Planes in memory, taken apart by one of the forms.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "equalizer/plan.h"
#include "equalizer/pyramid.h"

class Progress;

// Memory that is taken at most.
struct StackBytes {
  double making;    // while a picture is taken apart, with what is kept
  double kept;      // afterwards
  double weighing;  // beside that, while a look is made, and by it
};

class PlaneStack {
 public:
  virtual ~PlaneStack() = default;

  // The planes as they were.
  const KivImage& planes() const { return planes_; }

  // The planes put together. progress may be null, and gets weighingWork(). Throws NO_MEMORY_ERROR, and Cancelled.
  virtual KivImage weigh(const float* gains, float baseGain, Progress* progress) const = 0;

  // In taps.
  virtual double weighingWork() const { return 0; }

 protected:
  explicit PlaneStack(KivImage&& planes) : planes_(std::move(planes)) {}

 private:
  const KivImage planes_;
};

// By the plan's form. progress may be null, and gets the levels' taps, here or while the planes are weighed. Throws
// NO_MEMORY_ERROR, and Cancelled.
std::unique_ptr<PlaneStack> takePlanesApart(KivImage&& planes, const Plan& plan, Progress* progress);

// Of so many planes, themselves included.
StackBytes planeStackBytes(const Plan& plan, int planes, int threads);
