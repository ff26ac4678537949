// The lines of a result on their way into the target: overlay, blend with the original, the target's type, and alpha.
#pragma once

#include <optional>

#include "api/picture.h"
#include "equalizer/cross_overlay.h"

class PictureResult : public ResultLines {
 public:
  // The pictures are a part of a whole, of which the overlay is. mix in percent. overlay and mask may be null; they and
  // the source outlive the object.
  PictureResult(const KivRect& part, const CrossOverlay* overlay, double mix, const PictureLines& source,
                const orbel_picture& target, const orbel_picture* mask);

  // Scratch gets the original's colours and the weights.
  void write(int y, float* const* colours, float* const* scratch) override;

 private:
  void blend(int y, float* const* colours, float* const* scratch) const;
  void carryAlpha(int y, float* scratch) const;

  KivRect part_;
  const CrossOverlay* overlay_;
  const PictureLines& source_;
  PictureLines target_;
  std::optional<PictureLines> mask_;
  float mix_;
  bool isBlended_;
};
