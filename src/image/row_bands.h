// The loop over bands of rows of work that needs scratch.
#pragma once

#include <omp.h>

#include <algorithm>
#include <vector>

#include "image/scratch.h"

// Calls work(first row, number of rows, scratch) for each band of at most bandRows rows, in parallel: each thread of
// the default team takes one run of bands, as far as there are bands for all, and each run has a scratch of its own.
// work touches nothing that another band's call writes, and doesn't throw. Throws NO_MEMORY_ERROR, before any work,
// when scratch can't be had.
template <typename Work>
void eachBand(int height, int bandRows, std::int64_t scratchBytes, Work work) {
  const int bands = (height - 1) / bandRows + 1;
  const int runs = std::min(omp_get_max_threads(), bands);
  std::vector<Scratch> scratch(static_cast<std::size_t>(runs));
  for (Scratch& block : scratch) block = makeScratch(scratchBytes);
  const auto begin = [&](int run) { return static_cast<int>(std::int64_t{bands} * run / runs); };
  // The whole team, however few the runs: a smaller one would leave threads behind (filters/gaussian_bands.cpp).
#pragma omp parallel for schedule(static)
  for (int run = 0; run < runs; ++run) {
    void* const own = scratch[static_cast<std::size_t>(run)].get();
    for (int band = begin(run); band < begin(run + 1); ++band) {
      const int first = band * bandRows;
      work(first, std::min(bandRows, height - first), own);
    }
  }
}
