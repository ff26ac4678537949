// The cross overlay a line at a time: both diagonals and a stripe right of the centre, darkened to 0.8.
#pragma once

#include <vector>

#include "image/kiv_image.h"

class CrossOverlay {
 public:
  // thickness in samples; 0 or less draws nothing.
  CrossOverlay(IppiSize size, int thickness);

  // Row y of a plane. What falls outside the row is clipped.
  void draw(int y, float* row) const;

 private:
  int width_;
  int thickness_;
  std::vector<int> falling_;  // the left edge of each diagonal in each row
  std::vector<int> rising_;
};

// KivImage::CrossIt_I.
void drawCross(KivImage& image, int thickness);
