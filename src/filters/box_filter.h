// Box means of planes: what the operations of KivImage share that pass a square box over an image.
#pragma once

#include <cstdint>

#include "image/kiv_image.h"

// A square box for planes of one size. The buffer belongs to one thread at a time.
class BoxFilter {
 public:
  // border is a code of the primitives, value what ippBorderConst takes. A side below 1 gives a filter that does
  // nothing; a side or buffer too large for its integer type throws NO_MEMORY_ERROR.
  BoxFilter(IppiSize size, std::int64_t side, std::uint32_t border = ippBorderRepl, float value = 1.0F);

  bool isServed() const { return bufferSize_ > 0; }

  // Plane i of dst = the mean of plane i of src over the box, for count planes; src and dst may be the same image.
  void run(const KivImage& src, KivImage& dst, int count) const;
  // The same, with the planes spread over threads.
  void runOnThreads(const KivImage& src, KivImage& dst, int count) const;

 private:
  void runPlane(const KivImage& src, KivImage& dst, int i, void* buffer) const;

  IppiSize size_;
  IppiSize mask_;
  std::uint32_t border_;
  float value_;
  int bufferSize_ = 0;
};

// The side of the box that reaches radius samples each way.
inline std::int64_t boxSide(int radius) { return 2 * std::int64_t{radius} + 1; }
