// The band decomposition of a plane whose every resize is served, with no step's result kept that the next can take as
// it comes. The same bits as the steps by themselves: each sample goes through the same operations in the same order.
//
// What is kept of a level is its image C(i + 1), the low-pass at half size; its band is worked out again while the
// level is put together: R(i) = R(i + 1) expanded + gains[i] * (C(i) - C(i + 1) expanded), a few rows at a time.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "equalizer/level_lines.h"
#include "equalizer/plan.h"
#include "image/resizer.h"

class Progress;

// A plane taken apart.
class Pyramid {
 public:
  // Above 32 samples each way the last of six sizes still has two.
  static bool serves(IppiSize size) { return size.width > 32 && size.height > 32; }

  // Takes apart a plane that serves, which isn't needed any more afterwards. Made line by line, it is never had as a
  // whole unless its low-pass needs it so. progress may be null; gets the levels' taps. Throws NO_MEMORY_ERROR, and
  // Cancelled.
  Pyramid(const LevelLines& finest, const Levels& levels, Progress* progress);

  // C(i + 1).
  const KivImage& reduced(std::size_t i) const { return reduced_[i]; }
  IppiSize size() const { return levels_[0].size; }

  // What it takes at most, where the finest level's lines are had so.
  struct Bytes {
    double making;    // while a plane is taken apart, with what is kept
    double kept;      // afterwards
    double weighing;  // beside that, while a plane is weighed
    double scratch;   // of each thread, while its finest level is made
  };
  static Bytes bytesOf(const Levels& levels, RowsOfLines finest, int threads);

 private:
  Levels levels_;
  std::array<KivImage, levelCount> reduced_;
};

// The lines of R(i) for a band of rows at a time, from those of C(i).
class LevelRebuild {
 public:
  static constexpr int bandRows = 8;

  // reduced is C(i + 1), rebuilt R(i + 1); both outlive the object.
  LevelRebuild(IppiSize size, const KivImage& reduced, const KivImage& rebuilt, float gain);

  // Of scratch for one band; a multiple of 64.
  std::int64_t scratchBytes() const { return scratchBytesFor(expansion_, rowBytes_); }
  static std::int64_t scratchBytesFor(const Resizer& expansion, int rowBytes);

  // Makes scratch ready for rows first to first + count - 1, count being at most bandRows.
  void prepare(int first, int count, void* scratch) const;

  // Columns left to left + width - 1 of row first + i of R(i), from those of C(i); to may be level.
  void line(int i, int left, int width, const float* level, float* to, const void* scratch) const;

 private:
  std::ptrdiff_t rowFloats() const { return rowBytes_ / static_cast<int>(sizeof(float)); }

  const KivImage& reduced_;
  const KivImage& rebuilt_;
  float gain_;
  Resizer expansion_;
  int rowBytes_;
};

// A plane weighed, down to its finest level, which is made line by line.
class WeighedPyramid {
 public:
  // Puts all but the finest level together. The pyramid outlives the object. Throws NO_MEMORY_ERROR.
  WeighedPyramid(const Pyramid& pyramid, const float* gains, float baseGain);

  const LevelRebuild& finest() const { return finest_; }

  // R(0) in the place of C(0): target is the plane that was taken apart.
  void rebuildInto(KivImage& target) const;

 private:
  std::unique_ptr<KivImage> rebuilt_;  // R(1)
  LevelRebuild finest_;
};
