// A Gaussian on plane 0 in horizontal bands, and the size of a Gaussian's kernel.
#pragma once

#include "image/kiv_image.h"
#include "image/scratch.h"

// The samples that a kernel reaches on each side: multiplier times sigma, a product in single precision, rounded up.
// Below 1 where no primitive serves the kernel (NaN included); a reach whose kernel has no size throws NO_MEMORY_ERROR.
int gaussianReach(float sigma, int multiplier);

// A Gaussian of standard deviation sigma that reaches gaussianReach(sigma, multiplier) samples, for planes of one size
// whose edge samples repeat, any band of rows at a time. Bands read their real neighbour rows, so that a cut into bands
// leaves no trace.
class GaussianBands {
 public:
  // mostRows is the height of the largest band. Throws NO_MEMORY_ERROR.
  GaussianBands(IppiSize size, float sigma, int multiplier, int mostRows);

  // False where there is nothing to do: sigma isn't above 0, or no primitive serves the kernel.
  bool isServed() const { return spec_ != nullptr; }

  std::int64_t scratchBytes() const { return scratchBytes_; }

  // Rows y to y + count - 1. src addresses row y of the source, whose rows lie in memory as far as the band reaches;
  // dst is other pixels. A band begins and ends at the plane's edges or at least the kernel's reach from them. Steps
  // are in bytes.
  void rows(const float* src, int srcStep, int y, int count, float* dst, int dstStep, void* scratch) const;

 private:
  IppiSize size_;
  std::int64_t scratchBytes_ = 0;
  Scratch spec_;
};
