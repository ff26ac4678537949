// The band decomposition of a plane whose every resize is served, with no step's result kept that the next can take as
// it comes. The same bits as the steps by themselves: each sample goes through the same operations in the same order.
//
// What is kept of a level is its image C(i + 1), the low-pass at half size; its band is worked out again while the
// level is put together: R(i) = R(i + 1) expanded + gains[i] * (C(i) - C(i + 1) expanded), a few rows at a time.
#pragma once

#include <array>
#include <functional>

#include "equalizer/level_lines.h"
#include "equalizer/levels.h"

class Pyramid {
 public:
  // Above 32 samples each way the last of six sizes still has two.
  static bool serves(IppiSize size) { return size.width > 32 && size.height > 32; }

  // Takes apart a plane that serves, and puts all but its finest level together again. The plane is read only, now and
  // later; made line by line, it is never had as a whole unless its low-pass needs it so. Throws NO_MEMORY_ERROR.
  Pyramid(LevelLines finest, const Levels& levels, const float* gains, float baseGain);

  // R(0). target has plane's size and may be plane itself.
  void rebuildInto(KivImage& target) const;

  // C(0) and R(0) line by line, in no order and on several threads at once; sink doesn't throw.
  using LineSink = std::function<void(int y, const float* before, const float* after)>;
  void rebuild(const LineSink& sink) const;

 private:
  void takeApart(const Levels& levels);

  LevelLines finest_;
  float gain_;  // of the finest level
  // Entry i holds C(i + 1) and R(i + 1).
  std::array<KivImage, levelCount> reduced_;
  std::array<KivImage, levelCount> rebuilt_;
};
