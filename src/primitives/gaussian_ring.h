// The engine of both Gaussian families, for body files only: filter along the rows into a ring of k rows, then down the
// ring. Internal linkage throughout, see lanes.h.
//
// All samples are filtered as floats. Integer taps t come as t / 2^shift: scaling by a power of two commutes with every
// rounding, so the sums have the bits of the unscaled sums times 1 / 2^shift. The products of 8u rows and taps stay
// below 2^24, hence these sums are exact in floats, whatever their order.
//
// The ring in numbers of source rows, while row y is written (r = k / 2):
//
//     y - r ... y ... y + r      each row n has its place at (n + r) mod k
//
// A row beyond an edge without real neighbours shares the place of the row that it repeats, which always is among the k
// (reflection about row H - 1 takes row y + r to 2 (H - 1) - (y + r) >= y - r). Source row y + r is read before row y
// is written, so the filter may run in place.
#pragma once

#include "primitives/exp_ln.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

inline bool isKernel(std::int64_t size) { return size >= 3 && size % 2 == 1; }
inline bool isDataType(int type) { return type == ipp8u || type == ipp16u || type == ipp16s || type == ipp32f; }
inline bool isChannelCount(int count) { return count == 1 || count == 3; }
inline bool isBorderKind(std::uint32_t kind) {
  return kind == ippBorderRepl || kind == ippBorderMirror || kind == ippBorderConst;
}
inline bool isBorder(std::uint32_t border) {
  return border <= 255 && ((border & ippBorderInMem) == ippBorderInMem || isBorderKind(border & 15));
}

// The checks that sizes and specifications share, in their order.
inline IppStatus checkKernel(std::int64_t kernelSize, int dataType, int numChannels) {
  if (!isKernel(kernelSize)) return ippStsBadArgErr;
  if (!isDataType(dataType)) return ippStsDataTypeErr;
  return isChannelCount(numChannels) ? ippStsNoErr : ippStsChannelErr;
}

// The unnormalised weight exp(-x^2 / divisor), where divisor = sigma (sigma + sigma). The centre is 1 even where a tiny
// sigma makes the divisor 0: such a filter copies.
inline float gaussianWeight(float x, float divisor) { return x == 0.0F ? 1.0F : expSingle(-(x * x) / divisor); }

template <typename Pointer>
inline Pointer* alignUp(Pointer* pointer, std::uintptr_t alignment) {
  return reinterpret_cast<Pointer*>((reinterpret_cast<std::uintptr_t>(pointer) + alignment - 1) & ~(alignment - 1));
}

// The rows of one call and what lies around them.
template <typename Sample>
struct Band {
  const Sample* src;
  std::ptrdiff_t srcStep;
  Sample* dst;
  std::ptrdiff_t dstStep;
  std::int64_t width;
  std::int64_t height;
  std::uint32_t border;
  Sample value;
};

struct RingBuffer {
  float* ring;
  std::int64_t stride;  // floats from one row of the ring to the next
  const float** rows;   // k pointers, in the order of the taps
  float* extended;      // a source row with r more samples at each end
};

// One axis of the extended image.
struct Axis {
  std::int64_t length;
  std::uint32_t kind;
  bool lowInMemory;
  bool highInMemory;

  std::int64_t firstReal() const { return lowInMemory ? INT64_MIN : 0; }
  std::int64_t endOfReal() const { return highInMemory ? INT64_MAX : length; }
  bool isReal(std::int64_t n) const { return n >= firstReal() && n < endOfReal(); }

  // The position that stands for n, which isn't real itself, with replication or reflection. A reflected position that
  // lies beyond the other end is real there, or reflects again.
  std::int64_t standIn(std::int64_t n) const {
    if (kind == ippBorderRepl) return n < 0 ? 0 : length - 1;
    if (lowInMemory) return 2 * (length - 1) - n;
    if (highInMemory) return -n;
    if (length == 1) return 0;
    const std::int64_t period = 2 * (length - 1);
    const std::int64_t phase = (n % period + period) % period;
    return phase < length ? phase : period - phase;
  }
};

inline Axis rowsAxis(std::int64_t height, std::uint32_t border) {
  return {height, border & 15, (border & ippBorderInMemTop) != 0, (border & ippBorderInMemBottom) != 0};
}
inline Axis columnsAxis(std::int64_t width, std::uint32_t border) {
  return {width, border & 15, (border & ippBorderInMemLeft) != 0, (border & ippBorderInMemRight) != 0};
}

// Samples of a row by the number of the tap: neighbours in the row, or the same column of the ring's rows.
struct AlongRow {
  const float* first;
  const float* operator()(std::int64_t tap) const { return first + tap; }
};
struct DownRing {
  const float* const* rows;
  const float* operator()(std::int64_t tap) const { return rows[tap]; }
};

// The orders of summation. Each leaves, for count vectors from column x on, the sums in acc; nothing is added to a
// first 0, which would lose the sign of a zero.
struct Ascending {
  template <typename Vector, int count, typename Line>
  static inline void sum(Vector (&acc)[count], Line line, std::int64_t x, const float* taps, std::int64_t k) {
    constexpr int lanes = sizeof(Vector) / sizeof(float);
    for (int b = 0; b < count; ++b) acc[b] = load<Vector>(line(0) + x + b * lanes) * taps[0];
    for (std::int64_t i = 1; i < k; ++i) {
      const float* from = line(i) + x;
      const float tap = taps[i];
      for (int b = 0; b < count; ++b) acc[b] = acc[b] + load<Vector>(from + b * lanes) * tap;
    }
  }
};
// Symmetric partners first, outermost pair first, centre last. Reads the taps up to the centre.
struct PartnersFirst {
  template <typename Vector, int count, typename Line>
  static inline void sum(Vector (&acc)[count], Line line, std::int64_t x, const float* taps, std::int64_t k) {
    constexpr int lanes = sizeof(Vector) / sizeof(float);
    const std::int64_t r = k / 2;
    for (int b = 0; b < count; ++b) {
      const std::int64_t column = x + b * lanes;
      acc[b] = (load<Vector>(line(0) + column) + load<Vector>(line(k - 1) + column)) * taps[0];
    }
    for (std::int64_t j = 1; j < r; ++j) {
      const float* low = line(j) + x;
      const float* high = line(k - 1 - j) + x;
      const float tap = taps[j];
      for (int b = 0; b < count; ++b) {
        acc[b] = acc[b] + (load<Vector>(low + b * lanes) + load<Vector>(high + b * lanes)) * tap;
      }
    }
    const float* centre = line(r) + x;
    for (int b = 0; b < count; ++b) acc[b] = acc[b] + load<Vector>(centre + b * lanes) * taps[r];
  }
};

// To the nearest integer, ties to even, within the limits; these lie far inside the range of this addition's rounding.
template <typename Vector>
inline Vector roundWithin(Vector v, float lowest, float highest) {
  const Vector low = lowest - Vector{};
  const Vector high = highest - Vector{};
  v = v < low ? low : v;
  v = v > high ? high : v;
  constexpr float ulpIsOne = 12582912.0F;  // 1.5 * 2^23
  return (v + ulpIsOne) - ulpIsOne;
}

// What a sum becomes in the ring, and in the target.
template <typename Sample>
struct Finish;
template <>
struct Finish<float> {
  template <typename Vector>
  static inline Vector inRing(Vector v) {
    return v;
  }
  template <typename Vector>
  static inline Vector inTarget(Vector v) {
    return v;
  }
};
template <>
struct Finish<std::uint16_t> {
  template <typename Vector>
  static inline Vector inRing(Vector v) {
    return roundWithin(v, 0.0F, 65535.0F);
  }
  template <typename Vector>
  static inline Vector inTarget(Vector v) {
    return roundWithin(v, 0.0F, 65535.0F);
  }
};
template <>
struct Finish<std::uint8_t> {
  template <typename Vector>
  static inline Vector inRing(Vector v) {
    return roundWithin(v, -32768.0F, 32767.0F);
  }
  // Limits before rounding give what limits behind it would, since they are integers.
  template <typename Vector>
  static inline Vector inTarget(Vector v) {
    return roundWithin(v, 0.0F, 255.0F);
  }
};

inline void storeSamples(float* to, Floats v) { store(to, v); }
inline void storeSamples(float* to, float v) { *to = v; }
inline void storeSamples(std::uint16_t* to, Floats v) {
  store(to, __builtin_convertvector(__builtin_convertvector(v, Ints), Words));
}
inline void storeSamples(std::uint16_t* to, float v) { store(to, static_cast<std::uint16_t>(v)); }
inline void storeSamples(std::uint8_t* to, Floats v) {
  store(to, __builtin_convertvector(__builtin_convertvector(v, Ints), Bytes));
}
inline void storeSamples(std::uint8_t* to, float v) { *to = static_cast<std::uint8_t>(v); }

// to = finish(sum) over one line, block by block. The last block is moved back to end with the line: the samples that
// it computes a second time come out the same.
template <typename Vector, int count, typename Order, typename Line, typename Target, typename Rounding>
inline void filterBlocks(Line line, const float* taps, std::int64_t k, Target* to, std::int64_t width,
                         Rounding finish) {
  constexpr int lanes = sizeof(Vector) / sizeof(float);
  const std::int64_t last = width - lanes * count;
  for (std::int64_t next = 0; next < width; next += lanes * count) {
    const std::int64_t x = next < last ? next : last;
    Vector acc[count];
    Order::sum(acc, line, x, taps, k);
    for (int b = 0; b < count; ++b) storeSamples(to + x + b * lanes, finish(acc[b]));
  }
}

// Enough sums at once to hide the latency of an addition, and few enough for the registers.
constexpr int blockVectors = 4;
constexpr int blockWidth = LANES * blockVectors;

template <typename Order, typename Line, typename Target, typename Rounding>
inline void filterLine(Line line, const float* taps, std::int64_t k, Target* to, std::int64_t width, Rounding finish) {
  if (width >= blockWidth) {
    filterBlocks<Floats, blockVectors, Order>(line, taps, k, to, width, finish);
  } else if (width >= LANES) {
    filterBlocks<Floats, 1, Order>(line, taps, k, to, width, finish);
  } else {
    filterBlocks<float, 1, Order>(line, taps, k, to, width, finish);
  }
}

template <typename Sample>
inline void convertSamples(const Sample* from, std::int64_t count, float* to) {
  for (std::int64_t i = 0; i < count; ++i) to[i] = static_cast<float>(load<Sample>(from + i));
}
inline const float* inPlace(const float* row) { return row; }
template <typename Sample>
inline const float* inPlace(const Sample*) {
  return nullptr;
}

// Columns -r up to width + r of a row of the extended image: in the source itself where it has them all as floats, else
// in the buffer.
template <typename Sample>
inline const float* extendRow(const Sample* row, const Band<Sample>& band, std::int64_t r, float* extended) {
  const Axis columns = columnsAxis(band.width, band.border);
  const std::int64_t begin = -r;
  const std::int64_t end = band.width + r;
  const std::int64_t beginReal = begin > columns.firstReal() ? begin : columns.firstReal();
  const std::int64_t endReal = end < columns.endOfReal() ? end : columns.endOfReal();
  if (begin == beginReal && end == endReal && inPlace(row) != nullptr) return inPlace(row) + begin;

  const auto synthesise = [&](std::int64_t x) {
    const Sample sample = columns.kind == ippBorderConst ? band.value : load<Sample>(row + columns.standIn(x));
    extended[x - begin] = static_cast<float>(sample);
  };
  for (std::int64_t x = begin; x < beginReal; ++x) synthesise(x);
  convertSamples(row + beginReal, endReal - beginReal, extended + (beginReal - begin));
  for (std::int64_t x = endReal; x < end; ++x) synthesise(x);
  return extended;
}

template <typename RowOrder, typename ColumnOrder, typename Sample>
inline void filterBand(const Band<Sample>& band, const float* taps, std::int64_t k, const RingBuffer& buffer) {
  const std::int64_t r = k / 2;
  const Axis lines = rowsAxis(band.height, band.border);
  const auto inRing = [](auto v) { return Finish<Sample>::inRing(v); };
  const auto inTarget = [](auto v) { return Finish<Sample>::inTarget(v); };

  const auto place = [&](std::int64_t n) { return buffer.ring + (n + r) % k * buffer.stride; };
  const auto ringRow = [&](std::int64_t n) {
    float* const own = place(n);
    if (lines.isReal(n)) {
      const Sample* const row = advance(band.src, n * band.srcStep);
      const AlongRow samples{extendRow(row, band, r, buffer.extended)};
      filterLine<RowOrder>(samples, taps, k, own, band.width, inRing);
    } else if (lines.kind == ippBorderConst) {
      for (std::int64_t x = 0; x < band.width; ++x) own[x] = static_cast<float>(band.value);
    } else {
      return place(lines.standIn(n));
    }
    return own;
  };

  for (std::int64_t n = -r; n < r; ++n) buffer.rows[n + r + 1] = ringRow(n);
  for (std::int64_t y = 0; y < band.height; ++y) {
    __builtin_memmove(buffer.rows, buffer.rows + 1, static_cast<std::size_t>(k - 1) * sizeof *buffer.rows);
    buffer.rows[k - 1] = ringRow(y + r);
    filterLine<ColumnOrder>(DownRing{buffer.rows}, taps, k, advance(band.dst, y * band.dstStep), band.width, inTarget);
  }
}

}  // namespace
}  // namespace ROW
