// A one-dimensional filter of odd length, for KivImage::Filter and Filter_With_Pad.
#pragma once

#include <cstdint>

// Any other value acts as the Gaussian.
enum KERNEL_TYPE : std::int32_t {
  KERNEL_TYPE_TENT = 0,   // 1/4, 1/2 and 1/4 on the first, middle and last tap, 0 between
  KERNEL_TYPE_GAUSS = 1,  // exp(-d^2 / (2 spread^2)) at distance d from the middle, over the sum of all
};

class Kernel {
 public:
  int radius;  // half length
  int size;    // taps: 2 radius + 1
  int spread;  // the Gaussian's standard deviation in samples; 0 for taps of the caller's
  float* taps;
  bool ownsTaps;  // released in the destructor

  // spread is above 0 for a Gaussian. A radius that gives no size, or taps that can't be had, throw NO_MEMORY_ERROR.
  Kernel(KERNEL_TYPE type, int radius, int spread);
  // Wraps the caller's 2 radius + 1 taps, which outlive the kernel.
  Kernel(float* taps, int radius);
  // Moves: other is left without taps.
  Kernel(Kernel&& other) noexcept;
  Kernel& operator=(Kernel&& other) noexcept;
  Kernel(const Kernel&) = delete;
  Kernel& operator=(const Kernel&) = delete;
  ~Kernel();
};
