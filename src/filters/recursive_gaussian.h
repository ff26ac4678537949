// The recursive Gaussian of third order along one line, both ways.
#pragma once

#include "image/kiv_image.h"

// w(n) = (gain x(n) - (f2 w(n - 2) + f3 w(n - 3))) - f1 w(n - 1), and the same backward over w. The coefficients are
// those of Young and van Vliet (1995).
class RecursiveGaussian {
 public:
  explicit RecursiveGaussian(double sigma);

  // False where the coefficients are those of no blur: for a sigma below about 0.306, NaN, or beyond all numbers.
  bool blurs() const { return q_ > 0.0 && gain_ > 0.0; }

  // Filters the rows of plane i in place, as if each row's edge samples went on for ever. Throws NO_MEMORY_ERROR.
  void filterRows(KivImage& image, int i) const;

 private:
  static constexpr int order = 3;

  void findEndWeights();
  void filterLines(double* samples, int length) const;

  double q_;
  double gain_;
  double feedback_[order];
  // Where the backward run starts: its difference to the edge sample u at the j + 1st position behind the end is the
  // sum of row j by e(0) = w - u, e(1) = the change of w and e(2) = the change of this change, at the line's last
  // sample.
  double endWeights_[order][order];
};
