// The lines of a level, in memory or made as they are asked for.
#pragma once

#include <functional>
#include <memory>

#include "image/kiv_image.h"

// Writes line y of a plane, as wide as the plane. Called on several threads at once; doesn't throw.
using LineSource = std::function<void(int y, float* to)>;

class LevelLines {
 public:
  // Both outlive the lines.
  explicit LevelLines(const KivImage& image);
  LevelLines(IppiSize size, const LineSource& source);

  IppiSize size() const { return size_; }

  // How many of so many rows go to scratch.
  int rowsInScratch(int rows) const { return image_ != nullptr ? 0 : rows; }

  // Rows first to end - 1, where they lie or in scratch, whose rows are scratchBytes apart.
  struct Rows {
    const float* first;
    int stride;  // bytes
  };
  Rows rows(int first, int end, float* scratch, int scratchBytes) const;

  // The plane as a whole, which from now on lies in memory. Throws NO_MEMORY_ERROR.
  const KivImage& whole();

 private:
  IppiSize size_;
  const KivImage* image_ = nullptr;
  const LineSource* source_ = nullptr;
  std::shared_ptr<KivImage> made_;
};
