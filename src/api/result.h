// The lines of a result on their way into the target: overlay, blend with the original, the target's type, and alpha.
#pragma once

#include <optional>

#include "api/picture.h"
#include "equalizer/cross_overlay.h"

class PictureResult : public ResultLines {
 public:
  // All outlive the object; mask may be null.
  PictureResult(const orbel_settings& settings, const PictureLines& source, const orbel_picture& target,
                const orbel_picture* mask);

  // Of scratch: the original's colours and the weights.
  static constexpr int rows = BandStack::mostScratchRows;
  int scratchRows() const override { return rows; }
  void write(int y, float* const* colours, float* const* scratch) override;

 private:
  void blend(int y, float* const* colours, float* const* scratch) const;
  void carryAlpha(int y, float* scratch) const;

  const PictureLines& source_;
  PictureLines target_;
  std::optional<CrossOverlay> overlay_;
  std::optional<PictureLines> mask_;
  float mix_;
  bool isBlended_;
};
