// The loop over bands of rows of work that needs scratch.
#pragma once

#include <omp.h>

#include <algorithm>
#include <vector>

#include "image/scratch.h"

// Calls work(first row, number of rows, scratch) for each band of at most bandRows rows, in parallel: each thread of
// the team (the default's size, or the number of bands where that is smaller) takes one run of bands by a static
// schedule, and has a scratch of its own. work touches nothing that another band's call writes, and doesn't throw.
// Throws NO_MEMORY_ERROR, before any work, when scratch can't be had.
template <typename Work>
void eachBand(int height, int bandRows, std::int64_t scratchBytes, Work work) {
  const int bands = (height - 1) / bandRows + 1;
  const int threads = std::min(omp_get_max_threads(), bands);
  std::vector<Scratch> scratch(static_cast<std::size_t>(threads));
  for (Scratch& block : scratch) block = makeScratch(scratchBytes);
#pragma omp parallel for schedule(static) num_threads(threads)
  for (int band = 0; band < bands; ++band) {
    const int first = band * bandRows;
    void* const own = scratch[static_cast<std::size_t>(omp_get_thread_num())].get();
    work(first, std::min(bandRows, height - first), own);
  }
}
