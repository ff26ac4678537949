// A picture's planes reduced by area means, its lines coming from the top downwards, some at a time. A new line is the
// mean of old lines first, each weighed and added in turn, and then along itself, so its bits don't depend on how the
// lines came.
#pragma once

#include <utility>
#include <vector>

#include "equalizer/area_mean.h"
#include "equalizer/look.h"

class PlaneReduction {
 public:
  // To a size that is at most the picture's. Throws NO_MEMORY_ERROR, std::bad_alloc.
  PlaneReduction(IppiSize picture, IppiSize to, const Planes& planes);

  // The next count lines of the picture; lines go by numbers from the first of them. progress may be null, and gets
  // linesWork of them. Throws NO_MEMORY_ERROR, and Cancelled, and wants to be thrown away then.
  void add(const PlaneLines& lines, int count, Progress* progress);

  bool isDone() const { return added_ == picture_.height; }

  // The planes, when all lines have been added.
  KivImage take() { return std::move(reduced_); }

  // Of memory, beside the reduced planes.
  static double bytesOf(IppiSize picture, const Planes& planes, int threads);

 private:
  IppiSize picture_;
  Planes planes_;
  AreaMean across_;
  AreaMean down_;
  KivImage reduced_;
  std::vector<float> begun_;  // a line for each plane: what the reduced line that comes next has of lines so far
  std::vector<float> next_;   // the same, after the lines that are being added
  int added_ = 0;
};
