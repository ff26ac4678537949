// The engine of the box filter, for body files only: sums along the rows, running sums down them. Internal linkage
// throughout, see lanes.h.
//
// Sums are single precision and run on over a whole row or column, so their order is part of the result:
//
// Along a row, with P(x) = s(x) + s(x + 1) and T(x) = P(x) + P(x + 2), a mask of m columns:
//   m = 1, 3, 5, 7          h(x) = s(x) + s(x + 1) + ..., from left to right
//   m = 2, 6, 10, ...       the first four columns: h(x) = P(x) + P(x + 2) + P(x + 4) + ..., from left to right
//   m = 4, 8, 12, ...       the first four columns: h(x) = T(x) + T(x + 4) + ..., from left to right
//   m = 9, 11, 13, 15, ...  the same, and last the one column left over, or the three: (s + s) + s
//   all but the first line  column x + 4: h(x + 4) = (h(x) - T(x)) + T(x + m)
// So a row carries four running sums, one for each remainder of x, however many lanes a vector has.
//
// Down the columns, a mask of m rows, first A = h(0), then A = A + h(r) for r = 1 ... m - 2:
//   row y: t = A + h(y + m - 1); result t * inverse; A = t - h(y)
// With m = 1 the result is h * inverse.
#pragma once

#include "primitives/regions.h"

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

template <typename Vector>
inline Vector sumOfTwo(const float* s) {
  return load<Vector>(s) + load<Vector>(s + 1);
}
template <typename Vector>
inline Vector sumOfFour(const float* s) {
  return sumOfTwo<Vector>(s) + sumOfTwo<Vector>(s + 2);
}
template <typename Vector>
inline Vector directSum(const float* s, std::ptrdiff_t count) {
  Vector sum = load<Vector>(s);
  for (std::ptrdiff_t i = 1; i < count; ++i) sum = sum + load<Vector>(s + i);
  return sum;
}

// The sums that the sliding starts from.
template <typename Vector>
inline Vector groupedSum(const float* s, std::ptrdiff_t mask) {
  if (mask % 4 == 2) {
    Vector sum = sumOfTwo<Vector>(s);
    for (std::ptrdiff_t i = 2; i < mask; i += 2) sum = sum + sumOfTwo<Vector>(s + i);
    return sum;
  }
  Vector sum = sumOfFour<Vector>(s);
  std::ptrdiff_t i = 4;
  for (; i <= mask - 4; i += 4) sum = sum + sumOfFour<Vector>(s + i);
  return i < mask ? sum + directSum<Vector>(s + i, mask - i) : sum;
}

template <std::ptrdiff_t mask, typename Take>
inline void sumDirectly(const float* s, int width, Take take) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) take(x, directSum<Floats>(s + x, mask));
  for (; x < width; ++x) take(x, directSum<float>(s + x, mask));
}

template <typename Vector>
inline Vector slide(Vector sum, const float* s, std::ptrdiff_t mask) {
  return (sum - sumOfFour<Vector>(s)) + sumOfFour<Vector>(s + mask);
}

template <typename Take>
inline void sumSliding(const float* s, int width, std::ptrdiff_t mask, Take take) {
  constexpr int group = 4;
  if (width < group) {
    for (int x = 0; x < width; ++x) take(x, groupedSum<float>(s + x, mask));
    return;
  }
  Floats4 sum = groupedSum<Floats4>(s, mask);
  take(0, sum);
  int x = group;
  for (; x <= width - group; x += group) {
    sum = slide(sum, s + x - group, mask);
    take(x, sum);
  }
  // A last group of fewer columns: its source ends with its windows.
  for (int lane = 0; x + lane < width; ++lane) take(x + lane, slide(sum[lane], s + x + lane - group, mask));
}

// Calls take(x, sums) along a row, with the sums of one column or of the columns of a vector. The sums of a row depend
// on each other, one group of four after the other: what take does with them costs hardly any time of its own.
template <typename Take>
inline void sumAlong(const float* s, int width, std::ptrdiff_t mask, Take take) {
  switch (mask) {
    case 1:
      return sumDirectly<1>(s, width, take);
    case 3:
      return sumDirectly<3>(s, width, take);
    case 5:
      return sumDirectly<5>(s, width, take);
    case 7:
      return sumDirectly<7>(s, width, take);
    default:
      return sumSliding(s, width, mask, take);
  }
}

// rowAt(r) is the source's row r, which starts with the first sample of the first window. All windows lie in memory.
template <typename RowAt>
inline void filterBox(const BoxTask& task, const BoxRows& rows, RowAt rowAt) {
  const int width = task.size.width;
  const std::ptrdiff_t maskHeight = task.mask.height;
  const std::ptrdiff_t last = task.size.height + maskHeight - 2;
  const float inverse = task.inverse;
  float* const accumulator = rows.accumulator;
  for (std::ptrdiff_t r = 0; r <= last; ++r) {
    float* const sums = rows.sumsOf(task, r);
    const std::ptrdiff_t y = r - (maskHeight - 1);
    float* const dst = advance(task.dst, y * task.dstStep);
    const auto along = [&, s = rowAt(r)](auto take) { sumAlong(s, width, task.mask.width, take); };
    if (maskHeight == 1) {
      // First all sums: in place, results would overwrite what the next sums need.
      along([=](int x, auto h) { store(sums + x, h); });
      mapLine<float, float, Floats>(sums, dst, width, 1.0F, [=](Floats h) { return h * inverse; });
    } else if (r == 0) {
      along([=](int x, auto h) {
        store(sums + x, h);
        store(accumulator + x, h);
      });
    } else if (y < 0) {
      along([=](int x, auto h) {
        store(sums + x, h);
        store(accumulator + x, load<decltype(h)>(accumulator + x) + h);
      });
    } else if (r < last) {
      along([=, leaving = rows.sumsOf(task, y)](int x, auto h) {
        store(sums + x, h);
        const auto total = load<decltype(h)>(accumulator + x) + h;
        const auto old = load<decltype(h)>(leaving + x);  // before the store: may be the same row
        store(dst + x, total * inverse);
        store(accumulator + x, total - old);
      });
    } else {
      along([=](int x, auto h) { store(dst + x, (load<decltype(h)>(accumulator + x) + h) * inverse); });
    }
  }
}

}  // namespace
}  // namespace ROW
