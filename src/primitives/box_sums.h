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

// A source whose windows all lie in memory; src is the top left sample of the first window.
struct BoxTask {
  const float* src;
  std::ptrdiff_t srcStep;
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

template <std::ptrdiff_t mask>
inline void sumDirectly(const float* s, float* sums, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(sums + x, directSum<Floats>(s + x, mask));
  for (; x < width; ++x) store(sums + x, directSum<float>(s + x, mask));
}

template <typename Vector>
inline Vector slide(Vector sum, const float* s, std::ptrdiff_t mask) {
  return (sum - sumOfFour<Vector>(s)) + sumOfFour<Vector>(s + mask);
}

inline void sumSliding(const float* s, float* sums, int width, std::ptrdiff_t mask) {
  constexpr int group = 4;
  int x = 0;
  if (width >= group) {
    Floats4 sum = groupedSum<Floats4>(s, mask);
    store(sums, sum);
    for (x = group; x <= width - group; x += group) {
      sum = slide(sum, s + x - group, mask);
      store(sums + x, sum);
    }
  }
  // A last group of fewer columns: its source ends with its windows.
  for (; x < width; ++x) {
    const float sum =
        x < group ? groupedSum<float>(s + x, mask) : slide(load<float>(sums + x - group), s + x - group, mask);
    store(sums + x, sum);
  }
}

inline void sumAlong(const float* s, float* sums, int width, std::ptrdiff_t mask) {
  switch (mask) {
    case 1:
      return sumDirectly<1>(s, sums, width);
    case 3:
      return sumDirectly<3>(s, sums, width);
    case 5:
      return sumDirectly<5>(s, sums, width);
    case 7:
      return sumDirectly<7>(s, sums, width);
    default:
      return sumSliding(s, sums, width, mask);
  }
}

// One result row; leaving takes the window's first row out of the accumulator.
inline void finishRow(float* accumulator, const float* entering, const float* leaving, float* dst, int width,
                      float inverse) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Floats total = load<Floats>(accumulator + x) + load<Floats>(entering + x);
    const Floats old = load<Floats>(leaving + x);  // before the store: may be the same row
    store(dst + x, total * inverse);
    store(accumulator + x, total - old);
  }
  for (; x < width; ++x) {
    const float total = load<float>(accumulator + x) + load<float>(entering + x);
    const float old = load<float>(leaving + x);
    store(dst + x, total * inverse);
    store(accumulator + x, total - old);
  }
}

inline void filterBox(const BoxTask& task, const BoxRows& rows) {
  const int width = task.size.width;
  const std::ptrdiff_t maskHeight = task.mask.height;
  const std::ptrdiff_t last = task.size.height + maskHeight - 2;
  for (std::ptrdiff_t r = 0; r <= last; ++r) {
    float* const sums = rows.sumsOf(task, r);
    sumAlong(advance(task.src, r * task.srcStep), sums, width, task.mask.width);
    const std::ptrdiff_t y = r - (maskHeight - 1);
    float* const dst = advance(task.dst, y * task.dstStep);
    if (maskHeight == 1) {
      mapLine<float, float, Floats>(sums, dst, width, 1.0F, [&](Floats sum) { return sum * task.inverse; });
    } else if (r == 0) {
      __builtin_memcpy(rows.accumulator, sums, static_cast<std::size_t>(width) * sizeof(float));
    } else if (y < 0) {
      mapLine2(rows.accumulator, sums, rows.accumulator, width, 1.0F, [](Floats a, Floats h) { return a + h; });
    } else if (r < last) {
      finishRow(rows.accumulator, sums, rows.sumsOf(task, y), dst, width, task.inverse);
    } else {
      mapLine2(rows.accumulator, sums, dst, width, 1.0F, [&](Floats a, Floats h) { return (a + h) * task.inverse; });
    }
  }
}

}  // namespace
}  // namespace ROW
