// A picture taken apart and weighed, with all that its results are to be.
#pragma once

#include <memory>
#include <optional>

#include "api/run.h"
#include "equalizer/cross_overlay.h"

class WeighedPicture {
 public:
  // Of the task's picture, or of that picture in another size. stack outlives the object. progress may be null, and
  // gets the stack's weighingWork(). Throws NO_MEMORY_ERROR, and Cancelled.
  WeighedPicture(const Task& task, const BandStack& stack, const orbel_settings& settings, IppiSize size,
                 Progress* progress);

  IppiSize size() const { return size_; }

  // Puts a part of the picture together: source, target and mask, which may be null, are that part. progress may be
  // null, and gets linesWork of the part. Throws NO_MEMORY_ERROR, and Cancelled, before any sample is written.
  void render(const KivRect& part, const PictureLines& source, const orbel_picture& target, const orbel_picture* mask,
              Progress* progress) const;

 private:
  IppiSize size_;
  Planes planes_;
  orbel_settings settings_;
  std::unique_ptr<Look> look_;
  std::optional<CrossOverlay> overlay_;
};
