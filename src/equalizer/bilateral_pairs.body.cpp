// The bilateral filter over a run of rows, each weight computed once for the two samples that it joins.
//
// Seen from either of its ends a pair of samples has the same weight, bit for bit: distances enter as squares. So one
// weight serves two outputs. Their sums must still grow in the order of the filter, rows of the square from top to
// bottom and columns from left to right. Rows of the block, all at work on the lower row b:
//
//     b - window  o o o o o o o o     For each row a from b - window to b - 1, all pairs (a, b): b meets the rows above
//     ...                             it from top to bottom. Then b alone: its own row. As b moves down, row a meets
//     a           o o[o o o]o o o     the rows below it from top to bottom, too; with b = a + window it is done. At
//     ...              \|/            any time only window + 1 rows have sums that still grow: a ring of rows.
//     b           o o o X o o o o
//
// Within a row pair, b's columns ascend, and for each of them a's columns from x - window to x + window: X meets them
// from left to right; and each column of a meets b's columns as they ascend, from left to right as well.
//
// Rows above and below the run take part like others; their sums come out incomplete and are never read. Nothing is
// added up across runs, so a run's bounds don't show in the result.
//
// Vectors lie across a line, lane l holding segment l of it:
//
//     line     0 1 2 3 4 5 6 7 8 9 ...        vector    0   1   2   3   4 ...
//                                             lane 0    0   1   2   3   4
//                                             lane 1    S  S+1 S+2 S+3 S+4
//
// so the neighbour at distance d is the vector d further on, with no shuffle, and each lane goes its columns one after
// the other. Segments overlap by window columns at both ends (and the last one more, where the line's length isn't a
// multiple of S): pairs there are computed for both segments, again with sums that are never read.

#include "equalizer/bilateral_pairs.h"

#include "equalizer/bilateral_weight.h"

namespace ROW {
namespace {

// Columns of b that go together: their sums stay in registers while a's pass by.
constexpr int tileColumns = LANES == 16 ? 4 : 2;

// What grows for one output in each lane.
struct Sums {
  Floats norm;
  Floats sum;
};

// How a line of columns outputs is laid out. Vector i of a line holds column i - window of each segment.
struct Layout {
  int window;
  int segment;  // columns
  int lastStart;
  int vectors;  // of a line, overlaps included, in whole tiles

  Layout(int columns, int halfWidth) : window(halfWidth), segment((columns + LANES - 1) / LANES) {
    lastStart = columns - segment;
    vectors = (used() + tileColumns - 1) / tileColumns * tileColumns;
  }

  int used() const { return segment + 2 * window; }
  int start(int lane) const { return lane * segment < lastStart ? lane * segment : lastStart; }
};

// The lines and sums of the last window + 1 rows.
class Ring {
 public:
  Ring(const Layout& layout, float* scratch)
      : slots_(layout.window + 1),
        vectors_(layout.vectors),
        lines_(reinterpret_cast<Floats*>(scratch)),
        sums_(reinterpret_cast<Sums*>(lines_ + std::ptrdiff_t{slots_} * vectors_)) {}

  Floats* line(int row) const { return lines_ + std::ptrdiff_t{row % slots_} * vectors_; }
  Sums* sums(int row) const { return sums_ + std::ptrdiff_t{row % slots_} * vectors_; }

 private:
  int slots_;
  int vectors_;
  Floats* lines_;
  Sums* sums_;
};

// from addresses the block row's first sample.
void loadLine(const Layout& layout, const float* from, Floats* line) {
  auto* const to = reinterpret_cast<float*>(line);
  for (int lane = 0; lane < LANES; ++lane) {
    const float* const segment = from + layout.start(lane);
    for (int i = 0; i < layout.used(); ++i) to[i * LANES + lane] = segment[i];
  }
  for (int i = layout.used(); i < layout.vectors; ++i) line[i] = Floats{};
}

void clear(const Layout& layout, Sums* sums) {
  for (int i = 0; i < layout.vectors; ++i) sums[i] = Sums{};
}

void storeLine(const Layout& layout, const Sums* sums, float* to) {
  for (int i = 0; i < layout.segment; ++i) {
    const Sums& total = sums[layout.window + i];
    const Floats result = total.sum / total.norm;
    for (int lane = 0; lane < LANES; ++lane) to[layout.start(lane) + i] = result[lane];
  }
}

// The columns of row b that go together.
struct Tile {
  Floats value[tileColumns];
  Sums sums[tileColumns];
};

enum class Order { above, ownRow };

// One column of row a against columns first to last - 1 of the tile. Each step is done for all of them before the next:
// in this order the processor finds enough to do while each waits for the one before. spatial[-i] is the exponent's
// spatial term for column i.
template <int first, int last, Order order>
inline __attribute__((always_inline)) void addPairs(Floats value, Sums* sums, Tile& tile, const float* spatial,
                                                    float kr) {
  Floats e[tileColumns];
  Floats weight[tileColumns];
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e[i] = tile.value[i] - value;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e[i] = e[i] * e[i];
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e[i] = spatial[-i] + e[i] * kr;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) weight[i] = e[i] * exponentScale;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) weight[i] = fastExponential<Floats>(e[i], weight[i]);
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) {
    tile.sums[i].norm += weight[i];
    tile.sums[i].sum += value * weight[i];
  }
  if constexpr (order == Order::above) {
    Sums total = *sums;
#pragma GCC unroll 4
    for (int i = first; i < last; ++i) {
      total.norm += weight[i];
      total.sum += tile.value[i] * weight[i];
    }
    *sums = total;
  }
}

// The same where only some columns of the tile are in reach.
template <Order order, int column = 0>
inline __attribute__((always_inline)) void addSomePairs(int first, int last, Floats value, Sums* sums, Tile& tile,
                                                        const float* spatial, float kr) {
  if (first <= column && column < last) addPairs<column, column + 1, order>(value, sums, tile, spatial, kr);
  if constexpr (column + 1 < tileColumns) {
    addSomePairs<order, column + 1>(first, last, value, sums, tile, spatial, kr);
  }
}

// All pairs of rows a and b, dy rows apart; for the own row, where a is b, only b's sums grow.
template <Order order>
void addRow(const Layout& layout, const Floats* a, Sums* sumsOfA, const Floats* b, Sums* sumsOfB, int dy,
            GaussianFactors factors) {
  const int window = layout.window;
  float distances[2 * (largestPairWindow + tileColumns)];
  float* const spatial = distances + largestPairWindow + tileColumns;
  for (int dx = -window; dx <= window; ++dx) {
    const auto x = static_cast<float>(dx);
    const auto y = static_cast<float>(dy);
    spatial[dx] = (x * x + y * y) * factors.ks;
  }

  const int outputs = window;  // where they begin
  const int overlap = window + layout.segment;
  for (int x = 0; x < layout.vectors; x += tileColumns) {
    const bool wanted = x + tileColumns > outputs && x < overlap;
    if (order == Order::ownRow && !wanted) continue;
    // Where b's columns are not this segment's, only a's outputs count.
    const int lowest = wanted ? 0 : outputs;
    const int end = wanted ? layout.used() : overlap;

    Tile tile;
#pragma GCC unroll 4
    for (int i = 0; i < tileColumns; ++i) {
      tile.value[i] = b[x + i];
      tile.sums[i] = sumsOfB[x + i];
    }
    int at = x - window < lowest ? lowest : x - window;
    const int allInReach = x - window + tileColumns - 1 < end ? x - window + tileColumns - 1 : end;
    const int someInReach = x + window + 1 < end ? x + window + 1 : end;
    const int noneInReach = x + window + tileColumns < end ? x + window + tileColumns : end;
    for (; at < allInReach; ++at) {
      addSomePairs<order>(0, at - (x - window) + 1, a[at], sumsOfA + at, tile, spatial + (at - x), factors.kr);
    }
    for (; at < someInReach; ++at) {
      addPairs<0, tileColumns, order>(a[at], sumsOfA + at, tile, spatial + (at - x), factors.kr);
    }
    for (; at < noneInReach; ++at) {
      addSomePairs<order>(at - (x + window), tileColumns, a[at], sumsOfA + at, tile, spatial + (at - x), factors.kr);
    }
#pragma GCC unroll 4
    for (int i = 0; i < tileColumns; ++i) sumsOfB[x + i] = tile.sums[i];
  }
}

}  // namespace

void bilateralStdRows(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                      std::ptrdiff_t dstStep, int columns, int rows, float* scratch) {
  const Layout layout(columns, window);
  const Ring ring(layout, scratch);
  // Rows of the block, from top: those of the run are first to end - 1.
  const int first = window;
  const int end = window + rows;
  for (int b = 0; b < end + window; ++b) {
    loadLine(layout, top + b * blockStep, ring.line(b));
    clear(layout, ring.sums(b));
    // Above the run nothing waits for b, and below it only the run's own rows do.
    const int start = b < end || b - window > first ? b - window : first;
    for (int a = b < first ? b : start; a < b && a < end; ++a) {
      addRow<Order::above>(layout, ring.line(a), ring.sums(a), ring.line(b), ring.sums(b), b - a, factors);
    }
    if (b >= first && b < end) {
      addRow<Order::ownRow>(layout, ring.line(b), ring.sums(b), ring.line(b), ring.sums(b), 0, factors);
    }
    const int done = b - window;
    if (done >= first && done < end) storeLine(layout, ring.sums(done), dst + (done - first) * dstStep);
  }
}

std::int64_t bilateralStdRowsScratch(int columns, int window) {
  return std::int64_t{window + 1} * Layout(columns, window).vectors * 3 * LANES;
}

bool bilateralStdRowsPays(int columns, int rows, int window) {
  if (window < 2 || window > largestPairWindow) return false;
  const Layout layout(columns, window);
  // In taps done singly. The overlaps of the segments and the rows around the run are done for nothing.
  constexpr double costOfPair = 1.4;
  const double side = 2.0 * window + 1;
  const double taps = layout.segment * side * side * rows;
  const double ownRows = layout.segment * side * rows;
  const double pairs = (layout.segment * side + window * (window + 1.0)) * window * (rows + window + 1.0);
  return costOfPair * pairs + ownRows < taps;
}

}  // namespace ROW
