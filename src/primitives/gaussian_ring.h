// The engine of both Gaussian families, for body files only: filter along the rows into a ring of rows, then down the
// ring. Internal linkage throughout, see lanes.h.
//
// All samples are filtered as floats. Integer taps t come as t / 2^shift: scaling by a power of two commutes with every
// rounding, so the sums have the bits of the unscaled sums times 1 / 2^shift. The products of 8u rows and taps stay
// below 2^24, hence these sums are exact in floats, whatever their order.
//
// The ring in numbers of source rows, while rows y to y + c - 1 are written (r = k / 2):
//
//     y - r ... y ... y + c - 1 + r      each row n has its place at (n + r) mod (k + c - 1)
//
// c is 1, or 4 where the buffer has room: neighbouring sums share their rows. A row beyond an edge without real
// neighbours shares the place of the row that it repeats, which always is in the ring (reflection about row H - 1 takes
// row n = y + c - 1 + r to 2 (H - 1) - n >= y - r). Source row y + r is read before row y is written, so the filter may
// run in place.
#pragma once

#include "primitives/alignment.h"
#include "primitives/exp_ln.h"
#include "primitives/reflection.h"
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

// The taps of a kernel that is symmetric, up to its centre.
inline void halfKernel(float* taps, std::int64_t r, float sigma) {
  const float divisor = sigma * (sigma + sigma);
  float sum = 0.0F;
  for (std::int64_t i = 0; i < r; ++i) {
    taps[i] = gaussianWeight(static_cast<float>(r - i), divisor);
    sum = sum + (taps[i] + taps[i]);
  }
  taps[r] = 1.0F;
  const float reciprocal = 1.0F / (1.0F + sum);
  for (std::int64_t i = 0; i <= r; ++i) taps[i] = taps[i] * reciprocal;
}

// The rows of one call and what lies around them. A strip is a band of some of its region's columns; the border is that
// of the region.
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
  std::int64_t before = 0;  // the region's columns to the left of a strip
  std::int64_t behind = 0;  // and to its right
};

struct RingBuffer {
  float* ring;
  std::int64_t stride;  // floats from one row of the ring to the next
  const float** rows;   // as many pointers, in the order of the taps
  float* extended;      // a source row with r more samples at each end
};

constexpr std::uintptr_t ringAlignment = 64;

inline std::int64_t ringStride(std::int64_t width) {
  return roundUp(width * std::int64_t{sizeof(float)}, std::int64_t{ringAlignment});
}

// A ring of so many rows, as many pointers, and the extended row.
inline RingBuffer divide(void* buffer, std::int64_t width, std::int64_t rowCount) {
  const std::int64_t stride = ringStride(width);
  char* const ring = alignUp(static_cast<char*>(buffer), ringAlignment);
  char* const rows = ring + rowCount * stride;
  char* const extended = rows + rowCount * std::int64_t{sizeof(float*)};
  return {reinterpret_cast<float*>(ring), stride / std::int64_t{sizeof(float)}, reinterpret_cast<const float**>(rows),
          reinterpret_cast<float*>(extended)};
}

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
    return reflected(n, length);
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

template <typename Vector>
inline void storeSamples(float* to, Vector v) {
  store(to, v);
}
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

template <typename Vector, int vectors, typename Order, typename Line, typename Target, typename Rounding>
inline void filterLine(Line line, const float* taps, std::int64_t k, Target* to, std::int64_t width, Rounding finish) {
  constexpr int lanes = sizeof(Vector) / sizeof(float);
  if (width >= lanes * vectors) {
    filterBlocks<Vector, vectors, Order>(line, taps, k, to, width, finish);
  } else if (width >= lanes) {
    filterBlocks<Vector, 1, Order>(line, taps, k, to, width, finish);
  } else {
    filterBlocks<float, 1, Order>(line, taps, k, to, width, finish);
  }
}

// Four neighbouring lines at once, partners first: the sums of a tap read lines that slide by one from sum to sum, so
// that each line is loaded once for all of them. rows has k + 3 lines of at least LANES samples.
constexpr int linesAtOnce = 4;

inline void filterFourLines(const float* const* rows, const float* taps, std::int64_t k,
                            float* const (&to)[linesAtOnce], std::int64_t width) {
  const std::int64_t r = k / 2;
  const std::int64_t last = width - LANES;
  for (std::int64_t next = 0; next < width; next += LANES) {
    const std::int64_t x = next < last ? next : last;
    Floats acc[linesAtOnce];
    Floats low[linesAtOnce];
    Floats high[linesAtOnce];
    for (int i = 0; i < linesAtOnce; ++i) {
      low[i] = load<Floats>(rows[i] + x);
      high[i] = load<Floats>(rows[k - 1 + i] + x);
      acc[i] = (low[i] + high[i]) * taps[0];
    }
    for (std::int64_t j = 1; j < r; ++j) {
      const float tap = taps[j];
      for (int i = 0; i < linesAtOnce - 1; ++i) low[i] = low[i + 1];
      for (int i = linesAtOnce - 1; i > 0; --i) high[i] = high[i - 1];
      low[linesAtOnce - 1] = load<Floats>(rows[linesAtOnce - 1 + j] + x);
      high[0] = load<Floats>(rows[k - 1 - j] + x);
      for (int i = 0; i < linesAtOnce; ++i) acc[i] = acc[i] + (low[i] + high[i]) * tap;
    }
    for (int i = 0; i < linesAtOnce; ++i) store(to[i] + x, acc[i] + load<Floats>(rows[r + i] + x) * taps[r]);
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
// in the buffer. A kernel may reach across a neighbouring strip and beyond the region, so columns count from its first.
template <typename Sample>
inline const float* extendRow(const Sample* row, const Band<Sample>& band, std::int64_t r, float* extended) {
  const Axis columns = columnsAxis(band.before + band.width + band.behind, band.border);
  const Sample* const region = row - band.before;
  const std::int64_t begin = band.before - r;
  const std::int64_t end = band.before + band.width + r;
  const std::int64_t beginReal = begin > columns.firstReal() ? begin : columns.firstReal();
  const std::int64_t endReal = end < columns.endOfReal() ? end : columns.endOfReal();
  if (begin == beginReal && end == endReal && inPlace(row) != nullptr) return inPlace(row) - r;

  const auto synthesise = [&](std::int64_t x) {
    const Sample sample = columns.kind == ippBorderConst ? band.value : load<Sample>(region + columns.standIn(x));
    extended[x - begin] = static_cast<float>(sample);
  };
  for (std::int64_t x = begin; x < beginReal; ++x) synthesise(x);
  convertSamples(region + beginReal, endReal - beginReal, extended + (beginReal - begin));
  for (std::int64_t x = endReal; x < end; ++x) synthesise(x);
  return extended;
}

// The ring of a band: its rows filtered along x, up to a row that is asked for.
template <typename RowOrder, typename Sample>
class Ring {
 public:
  Ring(const Band<Sample>& band, const float* taps, std::int64_t k, const RingBuffer& buffer, std::int64_t places)
      : band_(band), lines_(rowsAxis(band.height, band.border)), taps_(taps), k_(k), buffer_(buffer), places_(places) {
    for (std::int64_t n = -reach(); n < reach(); ++n) buffer_.rows[n + reach()] = row(n);
  }

  // The k + count - 1 rows that count sums from row y on need, in the order of the taps. y goes up by the count of the
  // call before.
  const float* const* rowsFor(std::int64_t y, int count) {
    for (std::int64_t i = 0; i < count; ++i) buffer_.rows[k_ - 1 + i] = row(y + reach() + i);
    return buffer_.rows;
  }
  void drop(int count) {
    __builtin_memmove(buffer_.rows, buffer_.rows + count, static_cast<std::size_t>(k_ - 1) * sizeof *buffer_.rows);
  }

 private:
  std::int64_t reach() const { return k_ / 2; }
  float* place(std::int64_t n) const { return buffer_.ring + (n + reach()) % places_ * buffer_.stride; }

  float* row(std::int64_t n) {
    if (!lines_.isReal(n) && lines_.kind != ippBorderConst) return place(lines_.standIn(n));
    float* const own = place(n);
    if (lines_.isReal(n)) {
      const Sample* const samples = advance(band_.src, n * band_.srcStep);
      const AlongRow line{extendRow(samples, band_, reach(), buffer_.extended)};
      const auto inRing = [](auto v) { return Finish<Sample>::inRing(v); };
      filterLine<Unaligned, unalignedBlock, RowOrder>(line, taps_, k_, own, band_.width, inRing);
    } else {
      for (std::int64_t x = 0; x < band_.width; ++x) own[x] = static_cast<float>(band_.value);
    }
    return own;
  }

  // Neighbours along a row never lie on a boundary: half a cache line at a time crosses the fewest.
#if LANES == 16
  using Unaligned = Floats8;
#else
  using Unaligned = Floats;
#endif
  static constexpr int unalignedBlock = LANES == 16 ? 8 : 4;

  const Band<Sample>& band_;
  Axis lines_;
  const float* taps_;
  std::int64_t k_;
  const RingBuffer& buffer_;
  std::int64_t places_;
};

// Row by row, with a ring of k rows.
template <typename RowOrder, typename ColumnOrder, typename Sample>
inline void filterBand(const Band<Sample>& band, const float* taps, std::int64_t k, const RingBuffer& buffer) {
  const auto inTarget = [](auto v) { return Finish<Sample>::inTarget(v); };
  Ring<RowOrder, Sample> ring(band, taps, k, buffer, k);
  for (std::int64_t y = 0; y < band.height; ++y) {
    const DownRing rows{ring.rowsFor(y, 1)};
    filterLine<Floats, blockVectors, ColumnOrder>(rows, taps, k, advance(band.dst, y * band.dstStep), band.width,
                                                  inTarget);
    ring.drop(1);
  }
}

// The same for floats and partners first, four rows at a time, with a ring of k + 3 rows. At least LANES columns, and
// source and target apart.
inline void filterBandByFours(const Band<float>& band, const float* taps, std::int64_t k, const RingBuffer& buffer) {
  Ring<PartnersFirst, float> ring(band, taps, k, buffer, k + linesAtOnce - 1);
  const auto row = [&](std::int64_t y) { return advance(band.dst, y * band.dstStep); };
  std::int64_t y = 0;
  for (; y <= band.height - linesAtOnce; y += linesAtOnce) {
    filterFourLines(ring.rowsFor(y, linesAtOnce), taps, k, {row(y), row(y + 1), row(y + 2), row(y + 3)}, band.width);
    ring.drop(linesAtOnce);
  }
  for (; y < band.height; ++y) {
    const DownRing rows{ring.rowsFor(y, 1)};
    filterLine<Floats, blockVectors, PartnersFirst>(rows, taps, k, row(y), band.width, [](auto v) { return v; });
    ring.drop(1);
  }
}

}  // namespace
}  // namespace ROW
