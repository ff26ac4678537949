// Samples of other types as floats, 0 for black and 1 for white, and back: the one place where it is written down.
//
// A line is count samples, step bytes apart on the side of the other type (any number, negative too) and packed on the
// side of the floats. Samples need no alignment. Nothing beside them is read or written.
//
// There are two arithmetics. Samples of a host's document, 8 bits with white at 255 and 16 with white at 32768, go in
// single precision:
//   to floats    float(v) * scale, scale being 1 / white in single precision
//   back         v * scale, saturated to the type's range, to nearest, ties to even, scale being white; NaN, and what
//                no 32-bit integer can hold, become 0
// 16 bits of a file, with white at 65535, go in double precision, so that every level comes back:
//   to floats    float(v * scale), scale being 1 / white
//   back         v * scale, within 0 to scale, plus a half and cut off; NaN becomes 0
// Floats stay as they are. 8-bit files need no more than a host's arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>

#include "primitives/rows.h"

struct SampleKernels {
  using ToFloats = void (*)(const unsigned char* from, std::ptrdiff_t step, float* to, int count, double scale);
  using FromFloats = void (*)(const float* from, unsigned char* to, std::ptrdiff_t step, int count, double scale);
  struct Pair {
    ToFloats toFloats;
    FromFloats fromFloats;
  };

  Pair bytes;
  Pair host16;
  Pair file16;
  Pair floats;
};

DECLARE_IN_EACH_ROW(extern const SampleKernels sampleKernels)

// Those of the row in force.
inline const SampleKernels& sampleKernels() { return ofRowInForce({ADDRESS_IN_EACH_ROW(sampleKernels)}); }
