// A picture taken apart once, to be put together for any gains.
#pragma once

#include <memory>
#include <vector>

#include "equalizer/look.h"
#include "equalizer/plan.h"
#include "equalizer/plane_stack.h"
#include "equalizer/pyramid.h"

class Progress;

class BandStack {
 public:
  virtual ~BandStack() = default;

  // The look of the stack's picture; another size is that of the picture as it is when it is reduced or enlarged, which
  // a FullStack doesn't know. The stack outlives the look. progress may be null, and gets weighingWork(). Throws
  // NO_MEMORY_ERROR, and Cancelled.
  virtual std::unique_ptr<Look> weigh(const float* gains, float baseGain, IppiSize size, Progress* progress) const = 0;

  // In taps, without the lines of the result.
  virtual double weighingWork() const = 0;
};

// At the picture's own size.
class FullStack : public BandStack {
 public:
  // The plan is of the lines' picture, and admitted. progress may be null; gets the plan's taps. Throws
  // NO_MEMORY_ERROR, and Cancelled.
  FullStack(const Plan& plan, const PlaneLines& lines, Progress* progress);

  std::unique_ptr<Look> weigh(const float* gains, float baseGain, IppiSize size, Progress* progress) const override;
  double weighingWork() const override { return small_ ? small_->weighingWork() : 0; }

  static StackBytes bytesOf(const Plan& plan, const Planes& planes, int threads);

 private:
  std::vector<Pyramid> pyramids_;      // one a plane
  std::unique_ptr<PlaneStack> small_;  // of a picture that a pyramid doesn't serve
};
