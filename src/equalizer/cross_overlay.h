// The cross overlay a line at a time: both diagonals and a stripe right of the centre, darkened to 0.8.
#pragma once

#include <vector>

#include "image/kiv_image.h"

class CrossOverlay {
 public:
  // thickness in samples; 0 or less draws nothing.
  CrossOverlay(IppiSize size, int thickness);

  // Columns left to left + width - 1 of row y of a plane. What falls outside them is clipped.
  void draw(int y, int left, int width, float* columns) const;

 private:
  int width_;
  int thickness_;
  std::vector<int> falling_;  // the left edge of each diagonal in each row
  std::vector<int> rising_;
};

// KivImage::CrossIt_I.
void drawCross(KivImage& image, int thickness);
