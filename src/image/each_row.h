// The loop of the row-parallel kernels over raw planes.
#pragma once

#include <cstddef>

// Calls line with the offset of each row's first sample: y * step floats. Rows are shared among the threads of the
// runtime's team by a static schedule, so line may touch nothing that another row's call writes, and doesn't throw.
template <typename Line>
void eachRow(int height, int step, Line line) {
#pragma omp parallel for schedule(static)
  for (int y = 0; y < height; ++y) line(std::ptrdiff_t{y} * step);
}
