// The Gaussian filter from its formula.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/images.h"

// The Gaussian of the given reach in double precision, the edge samples repeated.
inline KivImage gaussian(const KivImage& src, double sigma, int reach) {
  std::vector<double> taps;
  double total = 0.0;
  for (int d = -reach; d <= reach; ++d) {
    taps.push_back(std::exp(-d * d / (2.0 * sigma * sigma)));
    total += taps.back();
  }
  return imageOf(src.size, src.channels, [&](int plane, int x, int y) {
    double sum = 0.0;
    for (int j = 0; j <= 2 * reach; ++j) {
      const int line = std::clamp(y + j - reach, 0, src.size.height - 1);
      for (int i = 0; i <= 2 * reach; ++i) {
        const int column = std::clamp(x + i - reach, 0, src.size.width - 1);
        sum += taps[static_cast<std::size_t>(i)] * taps[static_cast<std::size_t>(j)] *
               double{*src.At(plane, column, line)};
      }
    }
    return static_cast<float>(sum / (total * total));
  });
}
