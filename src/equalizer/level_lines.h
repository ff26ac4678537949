// The lines of a level, in memory or made as they are asked for.
#pragma once

#include <functional>

#include "image/kiv_image.h"

// Makes lines of a plane that isn't kept. Called on several threads at once; doesn't throw.
struct LineSource {
  // Writes line y, as wide as the plane. scratch has scratchRows rows, each with room for a line and on a 64-byte
  // boundary.
  std::function<void(int y, float* to, float* scratch)> line;
  int scratchRows = 0;
};

// The rows of scratch that it takes to have so many lines at once.
struct RowsOfLines {
  bool areMade;
  int more;

  int inScratch(int lines) const { return areMade ? lines + more : 0; }
};

class LevelLines {
 public:
  // Both outlive the lines.
  explicit LevelLines(const KivImage& image);
  LevelLines(IppiSize size, const LineSource& source);

  IppiSize size() const { return size_; }

  RowsOfLines rowsOfLines() const { return {image_ == nullptr, image_ == nullptr ? source_->scratchRows : 0}; }

  // Rows first to end - 1, where they lie or in scratch, whose rows are scratchBytes apart.
  struct Rows {
    const float* first;
    int stride;  // bytes
  };
  Rows rows(int first, int end, float* scratch, int scratchBytes) const;

  // Puts lines that are made into an image of their size. Throws NO_MEMORY_ERROR.
  void readInto(KivImage& image) const;

  // The plane as a whole: image, where the lines are those of one, else made, which gets the lines. Throws
  // NO_MEMORY_ERROR.
  const KivImage& whole(KivImage& made) const;

 private:
  IppiSize size_;
  const KivImage* image_ = nullptr;
  const LineSource* source_ = nullptr;
};
