// What the bodies of pointwise primitives share: the checks of their arguments and the walk over rows, for body files
// only. Internal linkage throughout, see lanes.h.
#pragma once

#include "primitives/lanes.h"
#include "primitives/primitives.h"

namespace ROW {
namespace {

inline bool isNull(const void* pointer) { return pointer == nullptr; }
inline bool isEmpty(IppiSize size) { return size.width < 1 || size.height < 1; }

// The row below a row: steps count bytes.
template <typename Sample>
inline Sample* advance(Sample* row, std::ptrdiff_t step) {
  return reinterpret_cast<Sample*>(reinterpret_cast<std::uintptr_t>(row) + static_cast<std::uintptr_t>(step));
}

// The common order of checks: pointers, size.
template <typename... Pointers>
inline IppStatus checkRegion(IppiSize size, const Pointers*... pointers) {
  if ((isNull(pointers) || ...)) return ippStsNullPtrErr;
  return isEmpty(size) ? ippStsSizeErr : ippStsNoErr;
}

template <typename... Steps>
inline IppStatus checkSteps(Steps... steps) {
  return ((steps < 1) || ...) ? ippStsStepErr : ippStsNoErr;
}

// Stops at the first check that failed.
#define RETURN_UNLESS_OK(check)                                                 \
  do {                                                                          \
    if (const IppStatus failed = (check); failed != ippStsNoErr) return failed; \
  } while (false)

// dst = operation(src) over one line. The end of the line takes the same operation, on a vector filled up with padding.
template <typename Source, typename Target, typename SourceVector, typename Operation>
inline void mapLine(const Source* src, Target* dst, int width, Source padding, Operation operation) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(dst + x, operation(load<SourceVector>(src + x)));
  if (x < width) storePart(dst + x, operation(loadPart<SourceVector>(src + x, width - x, padding)), width - x);
}

// dst = operation(src1, src2) over one line.
template <typename Operation>
inline void mapLine2(const float* src1, const float* src2, float* dst, int width, float padding, Operation operation) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(dst + x, operation(load<Floats>(src1 + x), load<Floats>(src2 + x)));
  if (x < width) {
    const Floats a = loadPart<Floats>(src1 + x, width - x, padding);
    const Floats b = loadPart<Floats>(src2 + x, width - x, padding);
    storePart(dst + x, operation(a, b), width - x);
  }
}

// Calls line(sourceRow, targetRow) for each row of the region.
template <typename Source, typename Target, typename Line>
inline void eachRow(const Source* src, int srcStep, Target* dst, int dstStep, IppiSize size, Line line) {
  for (int y = 0; y < size.height; ++y) {
    line(src, dst);
    src = advance(src, srcStep);
    dst = advance(dst, dstStep);
  }
}

// dst = operation(src) over a region of floats.
template <typename Operation>
inline void map(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, Operation operation) {
  eachRow(src, srcStep, dst, dstStep, size,
          [&](const float* s, float* d) { mapLine<float, float, Floats>(s, d, size.width, 1.0F, operation); });
}

}  // namespace
}  // namespace ROW
