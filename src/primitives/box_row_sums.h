// The box filter's sums along the rows, for body files only. Internal linkage throughout, see lanes.h.
//
// Sums are single precision and run on over a whole row, so their order is part of the result. With
// P(x) = s(x) + s(x + 1) and T(x) = P(x) + P(x + 2), a mask of m columns gives
//   m = 1, 3, 5, 7          h(x) = s(x) + s(x + 1) + ..., from left to right
//   m = 2, 6, 10, ...       the first four columns: h(x) = P(x) + P(x + 2) + P(x + 4) + ..., from left to right
//   m = 4, 8, 12, ...       the first four columns: h(x) = T(x) + T(x + 4) + ..., from left to right
//   m = 9, 11, 13, 15, ...  the same, and last the one column left over, or the three: (s + s) + s
//   all but the first line  column x + 4: h(x + 4) = (h(x) - T(x)) + T(x + m)
// So a row carries four running sums, one for each remainder of x, however many lanes a vector has. Each waits for the
// one before: T is worked out ahead in wide vectors, and several rows are summed side by side.
#pragma once

#include "primitives/regions.h"

namespace ROW {
namespace {

// Rows of samples, each from the first sample of its first window.
template <int count>
struct SampleRows {
  const float* at[count];
};

// The sums of one column, or of neighbouring ones, in some rows.
template <typename Value, int count>
struct RowSums {
  using Type = Value;
  Value of[count];
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

template <typename Vector, int count, typename SumOf>
inline RowSums<Vector, count> sumsOfRows(SumOf sumOf) {
  RowSums<Vector, count> h;
  for (int i = 0; i < count; ++i) h.of[i] = sumOf(i);
  return h;
}

// The sums that the sliding starts from, at column x.
template <typename Vector, int count>
inline RowSums<Vector, count> groupedSums(const SampleRows<count>& s, int x, std::ptrdiff_t mask) {
  const std::ptrdiff_t step = mask % 4 == 2 ? 2 : 4;
  const auto groupAt = [&](int i, std::ptrdiff_t column) {
    const float* const from = s.at[i] + x + column;
    return step == 2 ? sumOfTwo<Vector>(from) : sumOfFour<Vector>(from);
  };
  auto h = sumsOfRows<Vector, count>([&](int i) { return groupAt(i, 0); });
  std::ptrdiff_t column = step;
  for (; column <= mask - step; column += step) {
    for (int i = 0; i < count; ++i) h.of[i] = h.of[i] + groupAt(i, column);
  }
  if (column < mask) {
    for (int i = 0; i < count; ++i) h.of[i] = h.of[i] + directSum<Vector>(s.at[i] + x + column, mask - column);
  }
  return h;
}

template <std::ptrdiff_t mask, int count, typename Take>
inline void sumDirectly(const SampleRows<count>& s, int width, Take take) {
  int x = 0;
  for (; x <= width - LANES; x += LANES)
    take(x, sumsOfRows<Floats, count>([&](int i) { return directSum<Floats>(s.at[i] + x, mask); }));
  for (; x < width; ++x) take(x, sumsOfRows<float, count>([&](int i) { return directSum<float>(s.at[i] + x, mask); }));
}

constexpr int group = 4;  // the columns that slide at once

inline Floats4 groupOf(const Floats& v, int first) { return load<Floats4>(reinterpret_cast<const float*>(&v) + first); }

template <typename Vector>
inline Vector slide(Vector sum, const float* s, std::ptrdiff_t mask) {
  return (sum - sumOfFour<Vector>(s)) + sumOfFour<Vector>(s + mask);
}

template <int count, typename Take>
inline void sumSliding(const SampleRows<count>& s, int width, std::ptrdiff_t mask, Take take) {
  if (width < group) {
    for (int x = 0; x < width; ++x) take(x, groupedSums<float>(s, x, mask));
    return;
  }
  auto h = groupedSums<Floats4>(s, 0, mask);
  take(0, h);
  int x = group;
  for (; x <= width - LANES; x += LANES) {
    const auto leaving = sumsOfRows<Floats, count>([&](int i) { return sumOfFour<Floats>(s.at[i] + x - group); });
    const auto entering =
        sumsOfRows<Floats, count>([&](int i) { return sumOfFour<Floats>(s.at[i] + x - group + mask); });
    for (int column = 0; column < LANES; column += group) {
      for (int i = 0; i < count; ++i) {
        h.of[i] = (h.of[i] - groupOf(leaving.of[i], column)) + groupOf(entering.of[i], column);
      }
      take(x + column, h);
    }
  }
  for (; x <= width - group; x += group) {
    for (int i = 0; i < count; ++i) h.of[i] = slide(h.of[i], s.at[i] + x - group, mask);
    take(x, h);
  }
  // A last group of fewer columns: its source ends with its windows.
  for (int lane = 0; x + lane < width; ++lane)
    take(x + lane,
         sumsOfRows<float, count>([&](int i) { return slide(h.of[i][lane], s.at[i] + x + lane - group, mask); }));
}

// Calls take(x, sums) along some rows, with RowSums of one column or of the columns of a vector.
template <int count, typename Take>
inline void sumAlong(const SampleRows<count>& s, int width, std::ptrdiff_t mask, Take take) {
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

}  // namespace
}  // namespace ROW
