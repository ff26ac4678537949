// The loop over bands of rows of work that needs scratch.
#pragma once

#include <algorithm>
#include <vector>

#include "image/parallel.h"
#include "image/scratch.h"

// Bytes of a row in scratch, so that each begins on a 64-byte boundary.
inline int rowBytesFor(int width) { return (width * static_cast<int>(sizeof(float)) + 63) / 64 * 64; }

// The floats so many bytes behind, which are a multiple of 64, in scratch.
inline float* floatsAt(void* scratch, std::int64_t bytes) {
  return static_cast<float*>(scratch) + bytes / static_cast<int>(sizeof(float));
}

// Calls work(first row, number of rows, scratch) for each band of at most bandRows rows, in parallel: each thread takes
// one run of bands, as far as there are bands for all, and each run has a scratch of its own. work touches nothing that
// another band's call writes. Throws NO_MEMORY_ERROR, before any work, when scratch can't be had.
template <typename Work>
void eachBand(int height, int bandRows, std::int64_t scratchBytes, Work work) {
  const int bands = (height - 1) / bandRows + 1;
  const int runs = std::min(threadsHere(), bands);
  std::vector<Scratch> scratch(static_cast<std::size_t>(runs));
  for (Scratch& block : scratch) block = makeScratch(scratchBytes);
  eachShare(runs, bands, [&](int run, int begin, int end) {
    void* const own = scratch[static_cast<std::size_t>(run)].get();
    for (int band = begin; band < end; ++band) {
      const int first = band * bandRows;
      work(first, std::min(bandRows, height - first), own);
    }
  });
}
