// A picture taken apart once, to be put together for any gains.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "equalizer/look.h"
#include "equalizer/plan.h"
#include "equalizer/pyramid.h"

class Progress;

// Memory that is taken at most.
struct StackBytes {
  double making;    // while a picture is taken apart, with what is kept
  double kept;      // afterwards
  double weighing;  // beside that, while a look is made, and by it
};

// Planes in memory, taken apart; those that a pyramid doesn't serve are taken apart again each time.
class PlaneStack {
 public:
  // progress may be null, and gets the levels' taps, here or while the planes are weighed. Throws NO_MEMORY_ERROR, and
  // Cancelled.
  PlaneStack(KivImage&& planes, const Levels& levels, Progress* progress);

  const KivImage& planes() const { return planes_; }

  // The planes put together. Throws NO_MEMORY_ERROR, and Cancelled.
  KivImage weigh(const float* gains, float baseGain, Progress* progress) const;

  double weighingWork() const;

  // Of so many planes, themselves included.
  static StackBytes bytesOf(const Levels& levels, int planes, int threads);

 private:
  KivImage planes_;
  Levels levels_;
  std::vector<Pyramid> pyramids_;  // one a plane, or none
};

class BandStack {
 public:
  virtual ~BandStack() = default;

  // The stack outlives the look. progress may be null, and gets weighingWork(). Throws NO_MEMORY_ERROR, and Cancelled.
  virtual std::unique_ptr<Look> weigh(const float* gains, float baseGain, Progress* progress) const = 0;

  // In taps, without the lines of the result.
  virtual double weighingWork() const = 0;
};

// At the picture's own size.
class FullStack : public BandStack {
 public:
  // The plan is of the lines' picture, and admitted. progress may be null; gets the plan's taps. Throws
  // NO_MEMORY_ERROR, and Cancelled.
  FullStack(const Plan& plan, const PlaneLines& lines, Progress* progress);

  std::unique_ptr<Look> weigh(const float* gains, float baseGain, Progress* progress) const override;
  double weighingWork() const override { return small_ ? small_->weighingWork() : 0; }

  static StackBytes bytesOf(const Plan& plan, const Planes& planes, int threads);

 private:
  std::vector<Pyramid> pyramids_;    // one a plane
  std::optional<PlaneStack> small_;  // of a picture that a pyramid doesn't serve
};
