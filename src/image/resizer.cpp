#include "image/resizer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "image/row_bands.h"

namespace {

// A band makes its first source row once more than the whole plane would.
constexpr int bandRows = 64;

template <typename Sample>
Sample* advance(Sample* plane, std::int64_t row, int step) {
  return plane + row * (step / static_cast<int>(sizeof(Sample)));
}

}  // namespace

Resizer::Resizer(IppiSize from, IppiSize to) : from_(from), to_(to) {
  constexpr int withoutAntialiasing = 0;
  int specBytes = 0;
  int initBytes = 0;
  const IppStatus served = ippiResizeGetSize_32f(from, to, ippLinear, withoutAntialiasing, &specBytes, &initBytes);
  if (served == ippStsSizeTooBigErr) throw NO_MEMORY_ERROR();
  if (served != ippStsNoErr) return;
  spec_ = makeScratch(specBytes);
  ippiResizeLinearInit_32f(from, to, spec_.get());
  int bytes = 0;
  if (ippiResizeGetBufferSize_8u(spec_.get(), to, 1, &bytes) == ippStsSizeTooBigErr) throw NO_MEMORY_ERROR();
  scratchBytes_ = bytes;
}

// The primitive wants the source row that corresponds to y.
std::int64_t Resizer::sourceRow(int y) const {
  const double ratio = static_cast<double>(from_.height) / static_cast<double>(to_.height);
  return static_cast<std::int64_t>(std::floor(y * ratio));
}

// A target row's centre lies at most half a source row before, and half a step of the target behind, the row that
// corresponds to it; the other of its two neighbours comes on top.
Resizer::Rows Resizer::sourceRows(int y, int count) const {
  const std::int64_t first = sourceRow(y) - 1;
  const std::int64_t end = sourceRow(y + count) + 2;
  return {static_cast<int>(std::max<std::int64_t>(first, 0)),
          static_cast<int>(std::min<std::int64_t>(end, from_.height))};
}

void Resizer::rows(const float* src, int srcStep, int firstRow, int y, int count, float* dst, int dstStep,
                   void* scratch) const {
  ippiResizeLinear_32f_C1R(advance(src, sourceRow(y) - firstRow, srcStep), srcStep, dst, dstStep, {0, y},
                           {to_.width, count}, ippBorderRepl, nullptr, spec_.get(), scratch);
}

void Resizer::plane(const float* src, int srcStep, float* dst, int dstStep) const {
  eachBand(to_.height, bandRows, scratchBytes_, [&](int y, int count, void* scratch) {
    rows(src, srcStep, 0, y, count, advance(dst, y, dstStep), dstStep, scratch);
  });
}
