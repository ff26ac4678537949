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
std::int64_t Resizer::sourceRow(int y) const { return static_cast<std::int64_t>(std::floor(y * ratioOfRows())); }

double Resizer::ratioOfRows() const { return static_cast<double>(from_.height) / static_cast<double>(to_.height); }

// By the primitive's own formula row y lies between its upper neighbour and the row below that one. The row that
// corresponds to y, which the primitive counts from, is among them, read or not.
Resizer::Rows Resizer::sourceRows(int y, int count) const {
  const double ratio = ratioOfRows();
  const auto upperNeighbour = [ratio](int row) {
    return static_cast<std::int64_t>(std::floor((row + 0.5) * ratio - 0.5));
  };
  const std::int64_t first = std::min(sourceRow(y), upperNeighbour(y));
  const std::int64_t end = upperNeighbour(y + count - 1) + 2;
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
