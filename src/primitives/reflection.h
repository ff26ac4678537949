// Reflection about the edge sample, for body files only. Internal linkage, see lanes.h.
#pragma once

#include <cstdint>

namespace ROW {
namespace {

// The position from 0 to length - 1 that stands for n: to and fro between the first and the last, neither of which
// occurs twice in a row.
inline std::int64_t reflected(std::int64_t n, std::int64_t length) {
  if (length == 1) return 0;
  const std::int64_t period = 2 * (length - 1);
  const std::int64_t phase = (n % period + period) % period;
  return phase < length ? phase : period - phase;
}

}  // namespace
}  // namespace ROW
