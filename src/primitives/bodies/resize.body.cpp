// Linear resize. For a target position i of an axis, p = (i + 0.5) r - 0.5, index = floor(p), weight = p - index.
//   h(R) = a + (b - a) t along source row R, a and b at the column's index and the one behind it,
//   target = h0 + (h1 - h0) u, h0 and h1 at the row's index and the one below it.

#include "primitives/alignment.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

constexpr std::int32_t identification = 0x4B617389;

struct AxisTable {
  std::int32_t source;
  std::int32_t target;
  std::int32_t reducedSource;  // the lengths over their greatest common divisor
  std::int32_t reducedTarget;
  std::int32_t* indices;
  float* weights;
  std::int32_t lowCount;   // positions with an index below 0
  std::int32_t highCount;  // positions whose second tap lies beyond the end
};

// Stands on the first 64-byte boundary of the caller's block; the tables follow on the next.
struct Specification {
  std::int32_t identification;
  std::int32_t elementClass;
  std::int32_t interpolation;
  std::int32_t horizontalReach;
  std::int32_t verticalReach;
  std::int32_t antialiasing;
  std::int32_t flags[4];
  AxisTable vertical;
  AxisTable horizontal;
  std::int32_t axisCount;
};

std::int64_t roundUp32(std::int64_t n) { return roundUp(n, std::int64_t{32}); }

const Specification& specificationAt(const void* spec) { return *static_cast<const Specification*>(alignUp(spec, 64)); }

std::int32_t greatestCommonDivisor(std::int32_t a, std::int32_t b) {
  while (b != 0) {
    const std::int32_t rest = a % b;
    a = b;
    b = rest;
  }
  return a;
}

double ratio(const AxisTable& axis) {
  return static_cast<double>(axis.reducedSource) / static_cast<double>(axis.reducedTarget);
}

AxisTable buildAxis(std::int32_t source, std::int32_t target, std::int32_t* indices, float* weights) {
  const std::int32_t divisor = greatestCommonDivisor(source, target);
  AxisTable axis{source, target, source / divisor, target / divisor, indices, weights, 0, 0};
  const double r = ratio(axis);
  for (std::int32_t i = 0; i < target; ++i) {
    const double p = (i + 0.5) * r - 0.5;
    const double index = __builtin_floor(p);
    indices[i] = static_cast<std::int32_t>(index);
    weights[i] = static_cast<float>(p - index);
    axis.lowCount += index < 0.0 ? 1 : 0;
    axis.highCount += indices[i] >= source - 1 ? 1 : 0;
  }
  return axis;
}

bool hasZero(IppiSize size) { return size.width == 0 || size.height == 0; }
bool exceeds(IppiSize size, const Specification& spec) {
  return size.width > spec.horizontal.target || size.height > spec.vertical.target;
}
std::int32_t smallerOf(std::int32_t a, std::int32_t b) { return a < b ? a : b; }

// The part of an axis that one call makes, in positions relative to the one that src addresses.
struct Range {
  std::int32_t count;
  const std::int32_t* indices;
  const float* weights;
  std::int64_t first;  // the lowest and the highest position that may be read
  std::int64_t last;

  std::int64_t lower(std::int32_t i) const { return clamp(indices[i]); }
  std::int64_t upper(std::int32_t i) const { return clamp(indices[i] + std::int64_t{1}); }

 private:
  std::int64_t clamp(std::int64_t n) const { return n < first ? first : n > last ? last : n; }
};

Range prepareRange(const AxisTable& axis, std::int32_t offset, std::int32_t count, bool lowInMemory, bool highInMemory,
                   std::int32_t* relative) {
  const auto start = static_cast<std::int32_t>(__builtin_floor(offset * ratio(axis)));
  for (std::int32_t i = 0; i < count; ++i) relative[i] = axis.indices[offset + i] - start;
  return {count, relative, axis.weights + offset, lowInMemory ? INT64_MIN : -std::int64_t{start},
          highInMemory ? INT64_MAX : std::int64_t{axis.source} - 1 - start};
}

float between(float a, float b, float weight) { return a + (b - a) * weight; }

// Columns begin to end - 1, which need no clamping, as far as they go by vectors; returns the first that doesn't. The
// columns of a vector lie within 2 * LANES samples where at most every second sample is left out.
std::int32_t interpolateVectors(const float* row, const Range& columns, std::int32_t begin, std::int32_t end,
                                float* to) {
  // Behind it a row may end.
  const std::int64_t lastRead = columns.upper(columns.count - 1);
  std::int32_t i = begin;
  for (; i <= end - LANES; i += LANES) {
    const std::int32_t first = columns.indices[i];
    const std::int32_t span = columns.indices[i + LANES - 1] + 1 - first;
    const Ints low = load<Ints>(columns.indices + i) - first;
    const Floats weights = load<Floats>(columns.weights + i);
    Floats a;
    Floats b;
    if (span < LANES && first + LANES - 1 <= lastRead) {
      a = pickFromOne(row + first, low);
      b = pickFromOne(row + first, low + 1);
    } else if (span < 2 * LANES && first + 2 * LANES - 1 <= lastRead) {
      a = pickFromTwo(row + first, low);
      b = pickFromTwo(row + first, low + 1);
    } else {
      break;
    }
    store(to + i, a + (b - a) * weights);
  }
  return i;
}

void interpolateRow(const float* row, const Range& columns, float* to) {
  // The columns between begin and end need no clamping; indices ascend.
  std::int32_t begin = 0;
  std::int32_t end = columns.count;
  while (begin < end && columns.indices[begin] < columns.first) ++begin;
  while (begin < end && columns.indices[end - 1] >= columns.last) --end;

  const auto clamped = [&](std::int32_t i) {
    to[i] = between(row[columns.lower(i)], row[columns.upper(i)], columns.weights[i]);
  };
  for (std::int32_t i = 0; i < begin; ++i) clamped(i);
  for (std::int32_t i = permutesLanes ? interpolateVectors(row, columns, begin, end, to) : begin; i < end; ++i) {
    const float* const a = row + columns.indices[i];
    to[i] = between(a[0], a[1], columns.weights[i]);
  }
  for (std::int32_t i = end; i < columns.count; ++i) clamped(i);
}

// Two rows of the source at a time, interpolated along x, each once: the indices of the rows ascend.
void resize(const float* src, std::int64_t srcStep, float* dst, std::int64_t dstStep, const Range& columns,
            const Range& rows, float* current, float* next) {
  constexpr std::int64_t none = INT64_MIN;
  std::int64_t inCurrent = none;
  std::int64_t inNext = none;
  for (std::int32_t y = 0; y < rows.count; ++y) {
    const std::int64_t upper = rows.lower(y);
    const std::int64_t lower = rows.upper(y);
    if (inCurrent != upper) {
      float* const other = current;
      current = next;
      next = other;
      const std::int64_t inOther = inCurrent;
      inCurrent = inNext;
      inNext = inOther;
    }
    if (inCurrent != upper) interpolateRow(advance(src, upper * srcStep), columns, current);
    inCurrent = upper;
    const float* below = current;
    if (lower != upper) {
      if (inNext != lower) interpolateRow(advance(src, lower * srcStep), columns, next);
      inNext = lower;
      below = next;
    }
    const float weight = rows.weights[y];
    mapLine2(current, below, dst, columns.count, 0.0F,
             [weight](Floats h0, Floats h1) { return h0 + (h1 - h0) * weight; });
    dst = advance(dst, dstStep);
  }
}

}  // namespace

IppStatus ippiResizeGetSize_32f(IppiSize srcSize, IppiSize dstSize, int interpolation, int, int* specSize,
                                int* initBufSize) {
  if (isNull(specSize) || isNull(initBufSize)) return ippStsNullPtrErr;
  if (hasZero(srcSize) || hasZero(dstSize)) return ippStsNoOperation;
  if (isEmpty(srcSize) || isEmpty(dstSize)) return ippStsSizeErr;
  if (interpolation == 0) return ippStsNotSupportedModeErr;
  if (interpolation != 1 && interpolation != ippLinear && interpolation != 6 && interpolation != 8 &&
      interpolation != 16) {
    return ippStsInterpolationErr;
  }
  if (interpolation == ippLinear && (srcSize.width < 2 || srcSize.height < 2)) return ippStsSizeErr;

  // Room for the four tables, the fields before them and the way to a boundary.
  const std::int64_t size = 8 * (roundUp32(dstSize.width) + roundUp32(dstSize.height)) + 304;
  if (size >= INT32_MAX) return ippStsSizeTooBigErr;
  *specSize = static_cast<int>(size);
  *initBufSize = 64;
  return ippStsNoErr;
}

IppStatus ippiResizeLinearInit_32f(IppiSize srcSize, IppiSize dstSize, void* spec) {
  if (isNull(spec)) return ippStsNullPtrErr;
  if (hasZero(srcSize) || hasZero(dstSize)) return ippStsNoOperation;
  if (isEmpty(dstSize) || srcSize.width < 2 || srcSize.height < 2) return ippStsSizeErr;

  char* const start = alignUp(static_cast<char*>(spec), 64);
  const std::int64_t rows = roundUp32(dstSize.height);
  const std::int64_t columns = roundUp32(dstSize.width);
  auto* const indices = reinterpret_cast<std::int32_t*>(alignUp(start + sizeof(Specification), 64));
  auto* const weights = reinterpret_cast<float*>(indices + rows + columns);
  const Specification built{identification,
                            ipp32f,
                            ippLinear,
                            1,
                            1,
                            0,
                            {1, 1, 1, 1},
                            buildAxis(srcSize.height, dstSize.height, indices, weights),
                            buildAxis(srcSize.width, dstSize.width, indices + rows, weights + rows),
                            2};
  store(start, built);
  return ippStsNoErr;
}

IppStatus ippiResizeGetBufferSize_8u(const void* spec, IppiSize dstSize, int numChannels, int* bufferSize) {
  if (isNull(spec) || isNull(bufferSize)) return ippStsNullPtrErr;
  if (hasZero(dstSize)) return ippStsNoOperation;
  const Specification& specification = specificationAt(spec);
  if (specification.identification != identification) return ippStsContextMatchErr;
  if (numChannels != 1 && numChannels != 3 && numChannels != 4) return ippStsNumChannelsErr;
  if (isEmpty(dstSize)) return ippStsSizeErr;

  const std::int64_t width = smallerOf(dstSize.width, specification.horizontal.target);
  const std::int64_t height = smallerOf(dstSize.height, specification.vertical.target);
  const std::int64_t size = roundUp32(4 * width) + roundUp32(4 * height) + 2 * roundUp32(4 * numChannels * width) + 64;
  if (size >= INT32_MAX) return ippStsSizeTooBigErr;
  *bufferSize = static_cast<int>(size);
  return exceeds(dstSize, specification) ? ippStsSizeWrn : ippStsNoErr;
}

IppStatus ippiResizeLinear_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiPoint dstOffset,
                                   IppiSize dstSize, int border, const void*, const void* spec, void* buffer) {
  if (border < 0 || border > 255) return ippStsBorderErr;
  if (border != ippBorderInMem && (border & 15) != ippBorderRepl) return ippStsBorderErr;
  if (isNull(src) || isNull(dst) || isNull(spec) || isNull(buffer)) return ippStsNullPtrErr;
  if (hasZero(dstSize)) return ippStsNoOperation;
  const Specification& specification = specificationAt(spec);
  if (specification.identification != identification) return ippStsContextMatchErr;
  if (isEmpty(dstSize)) return ippStsSizeErr;
  if (srcStep % 4 != 0 || dstStep % 4 != 0) return ippStsStepErr;
  const AxisTable& vertical = specification.vertical;
  const AxisTable& horizontal = specification.horizontal;
  if (dstOffset.x < 0 || dstOffset.y < 0 || dstOffset.x >= horizontal.target || dstOffset.y >= vertical.target) {
    return ippStsOutOfRangeErr;
  }
  if (specification.antialiasing != 0) return ippStsNotSupportedModeErr;
  if (specification.interpolation != ippLinear) return ippStsContextMatchErr;

  const IppStatus status = exceeds(dstSize, specification) ? ippStsSizeWrn : ippStsNoErr;
  const std::int32_t width = smallerOf(dstSize.width, horizontal.target - dstOffset.x);
  const std::int32_t height = smallerOf(dstSize.height, vertical.target - dstOffset.y);

  // With every weight 0 the formula is the identity but for -0, infinities and NaN, which a copy keeps too.
  if (horizontal.source == horizontal.target && vertical.source == vertical.target) {
    eachRow(src, srcStep, dst, dstStep, {width, height}, [width](const float* from, float* to) {
      __builtin_memcpy(to, from, static_cast<std::size_t>(width) * sizeof(float));
    });
    return status;
  }

  auto* const columnIndices = static_cast<std::int32_t*>(alignUp(buffer, 64));
  std::int32_t* const rowIndices = columnIndices + width;
  auto* const first = reinterpret_cast<float*>(alignUp(rowIndices + height, 32));
  auto* const second = alignUp(first + width, 32);
  const Range columns = prepareRange(horizontal, dstOffset.x, width, (border & ippBorderInMemLeft) != 0,
                                     (border & ippBorderInMemRight) != 0, columnIndices);
  const Range rows = prepareRange(vertical, dstOffset.y, height, (border & ippBorderInMemTop) != 0,
                                  (border & ippBorderInMemBottom) != 0, rowIndices);
  resize(src, srcStep, dst, dstStep, columns, rows, first, second);
  return status;
}

}  // namespace ROW
