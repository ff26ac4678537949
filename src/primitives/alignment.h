// Rounding up to an alignment, for body files only. Internal linkage, see lanes.h.
#pragma once

#include <cstdint>

namespace ROW {
namespace {

// The multiple of alignment, a power of two, at or above n.
template <typename Number>
inline Number roundUp(Number n, Number alignment) {
  return (n + alignment - 1) & ~(alignment - 1);
}

template <typename Sample>
inline Sample* alignUp(Sample* pointer, std::uintptr_t alignment) {
  return reinterpret_cast<Sample*>(roundUp(reinterpret_cast<std::uintptr_t>(pointer), alignment));
}

}  // namespace
}  // namespace ROW
