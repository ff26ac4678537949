// The engine of the box filter, for body files only: running sums down the columns of what box_row_sums.h adds up along
// the rows. Internal linkage throughout, see lanes.h.
//
// Sums are single precision and run on over a whole column, so their order is part of the result. A mask of m rows,
// first A = h(0), then A = A + h(r) for r = 1 ... m - 2:
//   row y: t = A + h(y + m - 1); result t * inverse; A = t - h(y)
// With m = 1 the result is h * inverse.
#pragma once

#include "primitives/box_row_sums.h"

namespace ROW {
namespace {

// Where results go, and over which windows.
struct BoxTask {
  float* dst;
  std::ptrdiff_t dstStep;
  IppiSize size;  // of dst
  IppiSize mask;
  float inverse;  // of the mask's area
};

// Where the sums of the rows are kept until their last use. Without a ring, sums of row r stand in row r of the target,
// which is then another image than the source; those of rows beyond it are used at once, so that one line serves all.
struct BoxRows {
  float* accumulator;
  float* spare;
  float* ring;  // mask.height lines, or null
  std::ptrdiff_t ringStride;

  float* sumsOf(const BoxTask& task, std::ptrdiff_t r) const {
    if (ring != nullptr) return ring + r % task.mask.height * ringStride;
    return r < task.size.height ? advance(task.dst, r * task.dstStep) : spare;
  }
};

constexpr int rowsAtOnce = 3;

// A part of the region whose sums start anew. rowAt(r, i) is row r of the source, the i-th of those in work, from the
// first sample of the first window on. All windows lie in memory.
template <typename RowAt>
class BoxPart {
 public:
  BoxPart(const BoxTask& task, const BoxRows& rows, RowAt rowAt) : task_(task), rows_(rows), rowAt_(rowAt) {}

  int height() const { return task_.size.height; }
  int maskHeight() const { return task_.mask.height; }

  // In place, the results of several rows must not overwrite one that is still in work.
  bool takesSeveralRows() const { return rows_.ring == nullptr || task_.mask.height > 2 * rowsAtOnce; }

  // A mask of one row. First all sums: in place, results would overwrite what the next sums need.
  void filterRow(std::ptrdiff_t y) const {
    float* const sums = rows_.sumsOf(task_, y);
    along<1>(y, [=](int x, auto h) { store(sums + x, h.of[0]); });
    mapLine<float, float, Floats>(sums, resultsOf(y), task_.size.width, 1.0F,
                                  [inverse = task_.inverse](Floats h) { return h * inverse; });
  }

  void start() const {
    float* const accumulator = rows_.accumulator;
    float* const sums = rows_.sumsOf(task_, 0);
    along<1>(0, [=](int x, auto h) {
      store(sums + x, h.of[0]);
      store(accumulator + x, h.of[0]);
    });
  }

  // Rows of the first windows only.
  template <int count>
  void addRows(std::ptrdiff_t r) const {
    float* const accumulator = rows_.accumulator;
    float* sums[count];
    for (int i = 0; i < count; ++i) sums[i] = rows_.sumsOf(task_, r + i);
    along<count>(r, [&](int x, auto h) {
      auto total = load<typename decltype(h)::Type>(accumulator + x);
      for (int i = 0; i < count; ++i) {
        store(sums[i] + x, h.of[i]);
        total = total + h.of[i];
      }
      store(accumulator + x, total);
    });
  }

  // Rows that complete a result each.
  template <int count>
  void completeRows(std::ptrdiff_t r) const {
    float* const accumulator = rows_.accumulator;
    const std::ptrdiff_t y = r - (task_.mask.height - 1);
    float* sums[count];
    const float* leaving[count];
    float* results[count];
    for (int i = 0; i < count; ++i) {
      sums[i] = rows_.sumsOf(task_, r + i);
      leaving[i] = rows_.sumsOf(task_, y + i);
      results[i] = resultsOf(y + i);
    }
    along<count>(r, [&, inverse = task_.inverse](int x, auto h) {
      using Value = typename decltype(h)::Type;
      auto total = load<Value>(accumulator + x);
      for (int i = 0; i < count; ++i) {
        store(sums[i] + x, h.of[i]);
        total = total + h.of[i];
        const auto old = load<Value>(leaving[i] + x);  // before the store: may be the same row
        store(results[i] + x, total * inverse);
        total = total - old;
      }
      store(accumulator + x, total);
    });
  }

 private:
  float* resultsOf(std::ptrdiff_t y) const { return advance(task_.dst, y * task_.dstStep); }

  template <int count, typename Take>
  void along(std::ptrdiff_t r, Take take) const {
    SampleRows<count> s;
    for (int i = 0; i < count; ++i) s.at[i] = rowAt_(r + i, i);
    sumAlong(s, task_.size.width, task_.mask.width, take);
  }

  BoxTask task_;
  BoxRows rows_;
  RowAt rowAt_;
};

// Filters parts with the same rows in turns: what one of them has read, the next finds in the cache.
template <typename RowAt>
inline void filterBox(const BoxPart<RowAt>* parts, int count) {
  const auto each = [&](auto filter) {
    for (int i = 0; i < count; ++i) filter(parts[i]);
  };
  using P = const BoxPart<RowAt>&;
  const int height = parts[0].height();
  const int maskHeight = parts[0].maskHeight();
  if (maskHeight == 1) {
    for (std::ptrdiff_t y = 0; y < height; ++y) each([=](P part) { part.filterRow(y); });
    return;
  }
  const std::ptrdiff_t firstComplete = maskHeight - 1;
  const std::ptrdiff_t end = height + firstComplete;
  const bool several = parts[0].takesSeveralRows();
  each([](P part) { part.start(); });
  std::ptrdiff_t r = 1;
  for (; several && r <= firstComplete - rowsAtOnce; r += rowsAtOnce)
    each([=](P part) { part.template addRows<rowsAtOnce>(r); });
  for (; r < firstComplete; ++r) each([=](P part) { part.template addRows<1>(r); });
  for (; several && r <= end - rowsAtOnce; r += rowsAtOnce)
    each([=](P part) { part.template completeRows<rowsAtOnce>(r); });
  for (; r < end; ++r) each([=](P part) { part.template completeRows<1>(r); });
}

}  // namespace
}  // namespace ROW
