// A picture taken apart at the size that its settings are meant for.
//
// Its planes Y are reduced by area means (or enlarged by Lanczos, where the picture is the smaller one), and equalized
// there. Of what that changes, c = equalized - g * reduced with the finest band's gain g, nothing is fine: the finest
// band cancels out. So c comes back to the picture's size by bilinear interpolation (by area means where the picture is
// the smaller one) without a loss, and the picture's own detail is weighed as the finest band: Y becomes
// g * Y + c. At the reference size itself the planes become what a run without a reference makes of them, to the bit.
//
// With edge-avoiding wavelets c jumps at edges, as the bands do, and comes back to a larger picture by guided_change.h.
#pragma once

#include <memory>
#include <optional>

#include "equalizer/band_stack.h"
#include "equalizer/plane_reduction.h"

class ReferenceStack : public BandStack {
 public:
  // The plan is of the working size, and admitted. Throws NO_MEMORY_ERROR, std::bad_alloc.
  ReferenceStack(IppiSize picture, const Plan& plan, const Planes& planes);

  // The picture's next lines, as in PlaneReduction. With the last one the planes are taken apart; progress gets the
  // plan's taps then.
  void add(const PlaneLines& lines, int count, Progress* progress);
  int linesAdded() const { return linesAdded_; }

  // After an exception: nothing can be done with it any more.
  bool isBroken() const { return isBroken_; }

  std::unique_ptr<Look> weigh(const float* gains, float baseGain, IppiSize size, Progress* progress) const override;
  double weighingWork() const override { return stack_->weighingWork(); }

  static StackBytes bytesOf(IppiSize picture, const Plan& plan, const Planes& planes, int threads);

 private:
  void takeApart(Progress* progress);

  IppiSize picture_;
  Plan plan_;
  std::optional<PlaneReduction> reduction_;  // until the picture is complete
  std::unique_ptr<PlaneStack> stack_;        // from then on
  int linesAdded_ = 0;
  bool isBroken_ = false;
};
