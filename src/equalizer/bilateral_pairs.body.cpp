// The bilateral filter over a run of rows, each weight computed once for the two samples that it joins.
//
// Seen from either of its ends a pair of samples has the same weight, bit for bit: distances enter as squares. So one
// weight serves two outputs. Their sums must still grow in the order of the filter, rows of the square from top to
// bottom and columns from left to right. Row b of the block takes its turn, with the rows above it that it reaches:
//
//     b - window  o o o o o o o o
//     ...
//     a           o o[o o o]o o o     first all pairs (a, b), for each a from b - window to b - 1,
//     ...              \|/
//     b           o o[o o X]o o o     then b with itself: each column with those to its left, and alone
//
// So b meets the rows above it from top to bottom, then its own; and as b moves down, a meets its own row before those
// below it, from top to bottom. With b = a + window, a is done: at any time window + 1 rows are in work. Within a pair
// of rows b's columns X ascend, and for each the columns of a from X - window to X + window: X meets them from left to
// right, and each column of a meets the X as they ascend, from left to right as well.
//
// The rows around the run only lend their samples. Nothing is added up across runs, so a run's bounds don't show.
//
// Vectors lie across a line, lane l holding segment l of it:
//
//     line     0 1 2 3 4 5 6 7 8 9 ...        vector    0   1   2   3   4 ...
//                                             lane 0    0   1   2   3   4
//                                             lane 1    S  S+1 S+2 S+3 S+4
//
// so the neighbour at distance d is the vector d further on, with no shuffle, and each lane goes its columns one after
// the other. At either end a segment goes on for window columns that are its neighbour's: pairs there are computed for
// both, and the sums of such columns are never read.

#include "equalizer/bilateral_pairs.h"

#include "equalizer/bilateral_weight.h"
#include "primitives/primitives.h"

namespace ROW {
namespace {

// Columns of b that go together: their sums stay at hand while a's pass by.
constexpr int tileColumns = 4;

// What grows for one output in each lane.
struct Sums {
  Floats norm;
  Floats sum;
};

// How a line of columns outputs is laid out: lane l holds its segment l, and window columns at either side of it.
struct Layout {
  int columns;
  int window;
  int segment;  // columns of a lane
  int used;     // vectors of a line
  int vectors;  // the same in whole tiles

  Layout(int lineColumns, int halfWidth)
      : columns(lineColumns),
        window(halfWidth),
        segment((lineColumns + LANES - 1) / LANES),
        used(segment + 2 * halfWidth),
        vectors((used + tileColumns - 1) / tileColumns * tileColumns) {}

  int lineFloats() const { return vectors * LANES; }
};

// The samples and sums of the last window + 1 rows, and a line in its own order.
class Rows {
 public:
  Rows(const Layout& layout, float* scratch)
      : layout_(layout),
        lines_(reinterpret_cast<Floats*>(scratch)),
        sums_(reinterpret_cast<Sums*>(lines_ + place(layout.window + 1))),
        straight_(reinterpret_cast<float*>(sums_ + place(layout.window + 1))) {}

  static std::int64_t scratchFloats(const Layout& layout) {
    return (std::int64_t{3} * (layout.window + 1) + 1) * layout.lineFloats();
  }

  Floats* line(int row) const { return lines_ + place(row % (layout_.window + 1)); }
  Sums* sums(int row) const { return sums_ + place(row % (layout_.window + 1)); }

  // Takes a row in, from the block's first sample on, with sums of 0.
  void enter(int row, const float* from) const {
    const int samples = layout_.columns + 2 * layout_.window;
    __builtin_memcpy(straight_, from, static_cast<std::size_t>(samples) * sizeof(float));
    const int whole = layout_.segment * LANES + 2 * layout_.window;
    for (int x = samples; x < whole; ++x) straight_[x] = 0.0F;
    Floats* const to = line(row);
    ippiTranspose_32f_C1R(straight_, layout_.segment * sampleBytes, reinterpret_cast<float*>(to), vectorBytes,
                          {layout_.used, LANES});
    for (int i = layout_.used; i < layout_.vectors; ++i) to[i] = Floats{};
    for (int i = 0; i < layout_.vectors; ++i) sums(row)[i] = Sums{};
  }

  // Writes the outputs of a row whose sums are complete. Its line is lost.
  void leave(int row, float* to) const {
    Floats* const results = line(row);
    const Sums* const totals = sums(row) + layout_.window;
    for (int i = 0; i < layout_.segment; ++i) results[i] = totals[i].sum / totals[i].norm;
    ippiTranspose_32f_C1R(reinterpret_cast<float*>(results), vectorBytes, straight_, layout_.segment * sampleBytes,
                          {LANES, layout_.segment});
    __builtin_memcpy(to, straight_, static_cast<std::size_t>(layout_.columns) * sizeof(float));
  }

 private:
  static constexpr int sampleBytes = sizeof(float);
  static constexpr int vectorBytes = LANES * sampleBytes;

  std::ptrdiff_t place(int slot) const { return std::ptrdiff_t{slot} * layout_.vectors; }

  const Layout& layout_;
  Floats* lines_;
  Sums* sums_;
  float* straight_;
};

// The columns of row b that go together.
struct Tile {
  Floats value[tileColumns];
  Sums sums[tileColumns];
};

enum class Grow { sumsOfBoth, sumsOfA, sumsOfB };

// Of one column of row a with each column of the tile.
struct Exponents {
  Floats of[tileColumns];
};
struct Weights {
  Floats of[tileColumns];
};

// Each step is done for columns first to last - 1 before the next step: in this order the processor finds enough to do
// while each waits for the one before. spatial[-i] is the exponent's spatial term for column i.
template <int first, int last>
inline __attribute__((always_inline)) Exponents exponents(Floats value, const Tile& tile, const Floats* spatial,
                                                          float kr) {
  Exponents e;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e.of[i] = tile.value[i] - value;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e.of[i] = e.of[i] * e.of[i];
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) e.of[i] = spatial[-i] + e.of[i] * kr;
  return e;
}
template <int first, int last>
inline __attribute__((always_inline)) Weights weigh(const Exponents& e) {
  Weights weights;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) weights.of[i] = e.of[i] * exponentScale;
#pragma GCC unroll 4
  for (int i = first; i < last; ++i) weights.of[i] = fastExponential<Floats>(e.of[i], weights.of[i]);
  return weights;
}

// Adds that column to the tile's sums, and the tile's columns to that column's.
template <int first, int last, Grow grow>
inline __attribute__((always_inline)) void addWeighed(Floats value, Sums* sums, Tile& tile, const Weights& weights) {
  if constexpr (grow != Grow::sumsOfA) {
#pragma GCC unroll 4
    for (int i = first; i < last; ++i) {
      tile.sums[i].norm += weights.of[i];
      tile.sums[i].sum += value * weights.of[i];
    }
  }
  if constexpr (grow != Grow::sumsOfB) {
    Sums total = *sums;
#pragma GCC unroll 4
    for (int i = first; i < last; ++i) {
      total.norm += weights.of[i];
      total.sum += tile.value[i] * weights.of[i];
    }
    *sums = total;
  }
}

template <int first, int last, Grow grow>
inline __attribute__((always_inline)) void addPairs(Floats value, Sums* sums, Tile& tile, const Floats* spatial,
                                                    float kr) {
  addWeighed<first, last, grow>(value, sums, tile,
                                weigh<first, last>(exponents<first, last>(value, tile, spatial, kr)));
}

// The same for count columns of a with the whole tile. Three of them are in work at a time, since the steps of a pair
// wait for each other longer than the processor looks ahead: while one is added, the weights of the next are made, and
// the exponents of the one after it.
template <Grow grow>
inline __attribute__((always_inline)) void addColumns(int count, const Floats* a, Sums* sums, Tile& tile,
                                                      const Floats* spatial, float kr) {
  constexpr int all = tileColumns;
  if (count == 1) addPairs<0, all, grow>(*a, sums, tile, spatial, kr);
  if (count < 2) return;
  Weights weights = weigh<0, all>(exponents<0, all>(a[0], tile, spatial, kr));
  Exponents next = exponents<0, all>(a[1], tile, spatial + 1, kr);
  int i = 0;
  for (; i < count - 2; ++i) {
    addWeighed<0, all, grow>(a[i], sums + i, tile, weights);
    weights = weigh<0, all>(next);
    next = exponents<0, all>(a[i + 2], tile, spatial + i + 2, kr);
  }
  addWeighed<0, all, grow>(a[i], sums + i, tile, weights);
  addWeighed<0, all, grow>(a[i + 1], sums + i + 1, tile, weigh<0, all>(next));
}

// The same where only some columns of the tile are in reach.
template <Grow grow, int column = 0>
inline __attribute__((always_inline)) void addSomePairs(int first, int last, Floats value, Sums* sums, Tile& tile,
                                                        const Floats* spatial, float kr) {
  if (first <= column && column < last) addPairs<column, column + 1, grow>(value, sums, tile, spatial, kr);
  if constexpr (column + 1 < tileColumns) {
    addSomePairs<grow, column + 1>(first, last, value, sums, tile, spatial, kr);
  }
}

// Column at of a and those behind it against the first column of the tile, the first two, ... all but one.
template <Grow grow, int count = 1>
inline __attribute__((always_inline)) void addWhileEntering(const Floats* a, Sums* sums, Tile& tile,
                                                            const Floats* spatial, float kr) {
  if constexpr (count < tileColumns) {
    addPairs<0, count, grow>(*a, sums, tile, spatial, kr);
    addWhileEntering<grow, count + 1>(a + 1, sums + 1, tile, spatial + 1, kr);
  }
}
// The same for all but one, all but two ... the last one.
template <Grow grow, int first = 1>
inline __attribute__((always_inline)) void addWhileLeaving(const Floats* a, Sums* sums, Tile& tile,
                                                           const Floats* spatial, float kr) {
  if constexpr (first < tileColumns) {
    addPairs<first, tileColumns, grow>(*a, sums, tile, spatial, kr);
    addWhileLeaving<grow, first + 1>(a + 1, sums + 1, tile, spatial + 1, kr);
  }
}

// The exponent's spatial term of the pairs dy rows apart, by dx.
class Distances {
 public:
  Distances(int window, int dy, float ks) {
    const auto y = static_cast<float>(dy);
    for (int dx = -window; dx <= window; ++dx) {
      const auto x = static_cast<float>(dx);
      terms_[middle + dx] = toFloats((x * x + y * y) * ks);
    }
  }
  const Floats* at(int dx) const { return terms_ + middle + dx; }

 private:
  static constexpr int middle = largestPairWindow + tileColumns;
  Floats terms_[2 * middle];
};

// All pairs of rows a and b.
template <Grow grow>
void addRow(const Layout& layout, const Rows& work, int rowA, int rowB, GaussianFactors factors) {
  const Floats* const a = work.line(rowA);
  const Floats* const b = work.line(rowB);
  Sums* const sumsOfA = work.sums(rowA);
  Sums* const sumsOfB = work.sums(rowB);
  const int window = layout.window;
  const Distances distances(window, rowB - rowA, factors.ks);

  const int outputs = window;  // where they begin
  const int overlap = window + layout.segment;
  for (int x = 0; x < layout.vectors; x += tileColumns) {
    const bool wanted = x + tileColumns > outputs && x < overlap;
    if (grow == Grow::sumsOfB && !wanted) continue;
    // Where b's columns are not this segment's, only a's outputs count.
    const int lowest = wanted ? 0 : outputs;
    const int end = wanted ? layout.used : overlap;

    Tile tile;
#pragma GCC unroll 4
    for (int i = 0; i < tileColumns; ++i) {
      tile.value[i] = b[x + i];
      tile.sums[i] = sumsOfB[x + i];
    }
    // Columns of a: some of the tile in reach, all of it, some of it again.
    constexpr int partly = tileColumns - 1;
    const int begin = x - window;
    const int behind = x + window + tileColumns;
    const int enteredAt = begin + partly;
    const int leavingAt = behind - partly;
    int at = begin > lowest ? begin : lowest;
    if (at == begin) {
      addWhileEntering<grow>(a + at, sumsOfA + at, tile, distances.at(-window), factors.kr);
      at = enteredAt;
    }
    for (; at < enteredAt; ++at) {
      addSomePairs<grow>(0, at - begin + 1, a[at], sumsOfA + at, tile, distances.at(at - x), factors.kr);
    }
    if (const int until = leavingAt < end ? leavingAt : end; at < until) {
      addColumns<grow>(until - at, a + at, sumsOfA + at, tile, distances.at(at - x), factors.kr);
      at = until;
    }
    if (behind <= end) {
      addWhileLeaving<grow>(a + at, sumsOfA + at, tile, distances.at(at - x), factors.kr);
    } else {
      for (; at < end; ++at) {
        addSomePairs<grow>(at - leavingAt + 1, tileColumns, a[at], sumsOfA + at, tile, distances.at(at - x),
                           factors.kr);
      }
    }
#pragma GCC unroll 4
    for (int i = 0; i < tileColumns; ++i) sumsOfB[x + i] = tile.sums[i];
  }
}

// The pairs within row b: each column with those to its left, then with itself.
void addOwnRow(const Layout& layout, const Rows& work, int rowB, GaussianFactors factors) {
  const Floats* const b = work.line(rowB);
  Sums* const sums = work.sums(rowB);
  const int outputs = layout.window;
  const int overlap = outputs + layout.segment;
  const Distances distances(layout.window, 0, factors.ks);
  for (int x = outputs; x < layout.used; ++x) {
    Tile tile;
    tile.value[0] = b[x];
    tile.sums[0] = sums[x];
    for (int at = x - layout.window; at < x && at < overlap; ++at) {
      addPairs<0, 1, Grow::sumsOfBoth>(b[at], sums + at, tile, distances.at(at - x), factors.kr);
    }
    addPairs<0, 1, Grow::sumsOfB>(b[x], sums + x, tile, distances.at(0), factors.kr);
    sums[x] = tile.sums[0];
  }
}

}  // namespace

void bilateralStdRows(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                      std::ptrdiff_t dstStep, int columns, int rows, int blockRow, float* scratch) {
  const Layout layout(columns, window);
  const Rows work(layout, scratch);
  // Rows of the block, from top: those of the run are first to end - 1.
  const int first = window;
  const int end = window + rows;
  const int b = blockRow;
  work.enter(b, top + b * blockStep);
  if (b < first) return;
  int a = b - window;
  if (b < end) {
    for (; a < first; ++a) addRow<Grow::sumsOfB>(layout, work, a, b, factors);
    for (; a < b; ++a) addRow<Grow::sumsOfBoth>(layout, work, a, b, factors);
    addOwnRow(layout, work, b, factors);
  } else {
    for (a = a > first ? a : first; a < end; ++a) addRow<Grow::sumsOfA>(layout, work, a, b, factors);
  }
  const int done = b - window;
  if (done >= first) work.leave(done, dst + (done - first) * dstStep);
}

std::int64_t bilateralStdRowsScratch(int columns, int window) { return Rows::scratchFloats(Layout(columns, window)); }

bool bilateralStdRowsPays(int columns, int rows, int window) {
  if (window < 2 || window > largestPairWindow) return false;
  const Layout layout(columns, window);
  // In taps done singly, as measured on AMD's Zen 5: a pair takes 0.9 to 1.1 of one, a column of a line about 1.5 more.
  // The overlaps of the segments and the rows around the run are done for nothing.
  constexpr double costOfPair = 1.1;
  constexpr double costOfColumn = 1.5;
  const double side = 2.0 * window + 1;
  const double taps = layout.segment * side * side * rows;
  const double ownRows = layout.segment * side * rows;
  const double linePairs = layout.segment * side + window * (window + 1.0);
  const double linesInPairs = window * (rows + 0.5 * (window - 1.0));
  return linesInPairs * (costOfPair * linePairs + costOfColumn * layout.used) + ownRows < taps;
}

}  // namespace ROW
