// The bilateral filter over a padded copy, rows in parallel.

#include "equalizer/bilateral_filter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "equalizer/bilateral_kernels.h"
#include "equalizer/progress.h"
#include "image/kiv_image.h"
#include "image/parallel.h"
#include "image/scratch.h"
#include "primitives/large_pages.h"

namespace {

enum Padding : unsigned char { replicate = 1, mirror = 2 };

constexpr std::align_val_t blockAlignment{128};

struct BlockRelease {
  void operator()(float* block) const { ::operator delete[](block, blockAlignment); }
};

// Where the index of a padded row or column lies in the source of the given length.
int clamped(int i, int length) { return i < 0 ? 0 : (i < length ? i : length - 1); }

// About the border between samples: the edge sample occurs twice. To and fro where the window is wider.
int reflected(int i, int length) {
  while (i < 0 || i >= length) i = i < 0 ? -1 - i : 2 * length - 1 - i;
  return i;
}

// At the top about the first row itself, at the bottom as above.
int reflectedRow(int i, int length) {
  while (i < 0 || i >= length) i = i < 0 ? -i : 2 * length - 1 - i;
  return i;
}

// The padded copy: row step paddedWidth, no padding of its own. Image sample (x, y) stands at column x + window of row
// y + window.
struct PaddedBlock {
  int width = 0;  // of the image
  int height = 0;
  int window;
  std::unique_ptr<float[], BlockRelease> samples;

  PaddedBlock(unsigned int imageHeight, unsigned int imageWidth, unsigned short windowSize) : window(windowSize) {
    constexpr std::uint64_t largestSide = 65535;
    const std::uint64_t sideWidth = imageWidth + std::uint64_t{2} * windowSize;
    const std::uint64_t sideHeight = imageHeight + std::uint64_t{2} * windowSize;
    if (sideWidth > largestSide || sideHeight > largestSide) throw NO_MEMORY_ERROR();
    const std::uint64_t bytes = sideWidth * sideHeight * sizeof(float);
    if (bytes > PTRDIFF_MAX) throw NO_MEMORY_ERROR();  // where addresses have 32 bits
    width = static_cast<int>(imageWidth);
    height = static_cast<int>(imageHeight);
    void* block = ::operator new[](static_cast<std::size_t>(bytes), blockAlignment, std::nothrow);
    if (block == nullptr) throw NO_MEMORY_ERROR();
    samples.reset(static_cast<float*>(block));
    preferLargePages(block, static_cast<std::int64_t>(bytes));
  }

  int step() const { return width + 2 * window; }
  float* row(int r) const { return samples.get() + std::ptrdiff_t{r} * step(); }

  void fill(const float* src, std::ptrdiff_t srcStep, Padding padding) const {
    const auto columnOf = padding == mirror ? reflected : clamped;
    const auto rowOf = padding == mirror ? reflectedRow : clamped;
    const int rows = height + 2 * window;
    eachIndex(rows, [&](int r) {
      const float* from = src + rowOf(r - window, height) * srcStep;
      float* to = row(r);
      for (int k = 0; k < window; ++k) to[k] = from[columnOf(k - window, width)];
      std::memcpy(to + window, from, static_cast<std::size_t>(width) * sizeof(float));
      for (int k = 0; k < window; ++k) to[window + width + k] = from[columnOf(width + k, width)];
    });
  }
};

// Fills a block and hands each thread one run of its rows: filterRun(block, first row, number of rows).
template <typename FilterRun>
void filter(const float* src, std::ptrdiff_t step, unsigned int height, unsigned int width, unsigned short window,
            unsigned char padding, FilterRun filterRun) {
  if (padding != replicate && padding != mirror) std::abort();
  if (height == 0 || width == 0) return;
  const PaddedBlock block(height, width, window);
  block.fill(src, step, static_cast<Padding>(padding));
  eachShare(std::min(threadsHere(), block.height), block.height,
            [&](int, int first, int end) { filterRun(block, first, end - first); });
}

void filterStd(PlaneRows<float> dst, PlaneRows<const float> src, unsigned int height, unsigned int width,
               unsigned short window, float sigma, float threshold, unsigned char padding, Progress* progress) {
  const BilateralKernels& kernels = bilateralKernels();
  const GaussianFactors factors = {bilateralCoefficient(sigma), bilateralCoefficient(threshold)};
  const auto filterRows = [&](const PaddedBlock& block, int first, int rows) {
    // The last columns, which don't go by fours, have a weight that isn't the same from both ends.
    const int columns = block.width - block.width % 4;
    Scratch scratch;
    if (kernels.stdRowsPays(columns, rows, window)) {
      scratch = tryScratch(kernels.stdRowsScratch(columns, window) * static_cast<std::int64_t>(sizeof(float)));
    }
    const double side = 2.0 * window + 1.0;
    const double taps = side * side * block.width * rows;
    const auto isCalledOff = [&](double done) {
      if (progress != nullptr) progress->add(done);
      return progress != nullptr && progress->isCancelled();
    };
    int done = 0;
    if (scratch != nullptr) {  // else line by line, only slower
      const int blockRows = rows + 2 * window;
      for (int row = 0; row < blockRows; ++row) {
        kernels.stdRows(block.row(first), block.step(), window, factors, dst.row(first), dst.step, columns, rows, row,
                        static_cast<float*>(scratch.get()));
        if (isCalledOff(taps / blockRows)) return;
      }
      done = columns;
    }
    for (int y = first; y < first + rows; ++y) {
      kernels.stdLine(block.row(y) + done, block.step(), window, factors, dst.row(y) + done, block.width - done);
      if (done == 0 && isCalledOff(taps / rows)) return;
    }
  };
  filter(src.first, src.step, height, width, window, padding, filterRows);
}

}  // namespace

void bilateralStd(PlaneRows<float> dst, PlaneRows<const float> src, IppiSize size, int window, float sigma,
                  float threshold, Progress* progress) {
  filterStd(dst, src, static_cast<unsigned int>(size.height), static_cast<unsigned int>(size.width),
            static_cast<unsigned short>(window), sigma, threshold, replicate, progress);
}

double bilateralStdBytes(IppiSize size, int window, int threads) {
  const BilateralKernels& kernels = bilateralKernels();
  const int columns = size.width - size.width % 4;
  const bool inRows = kernels.stdRowsPays(columns, size.height / threads, window);
  const double rows = inRows ? static_cast<double>(kernels.stdRowsScratch(columns, window)) : 0.0;
  const double block = (size.width + 2.0 * window) * (size.height + 2.0 * window);
  return (block + threads * rows) * static_cast<double>(sizeof(float));
}

void Bilateral_std(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                   unsigned short window, float sigma, float threshold, unsigned char padding) {
  const std::ptrdiff_t rowStep = step;
  filterStd({dst, rowStep}, {src, rowStep}, height, width, window, sigma, threshold, padding, nullptr);
}

void Bilateral_trp(float* dst, float* src, unsigned int height, unsigned int width, unsigned short window, float,
                   float threshold, unsigned char padding) {
  const BilateralKernels& kernels = bilateralKernels();
  const float reach = threshold + threshold;
  const float flat = reach - 0.5F * threshold;
  filter(src, width, height, width, window, padding, [&](const PaddedBlock& block, int first, int rows) {
    for (int y = first; y < first + rows; ++y) {
      float* const line = dst + y * static_cast<std::ptrdiff_t>(width);
      kernels.trpLine(block.row(y), block.step(), window, reach, flat, line, block.width);
    }
  });
}

void BilateralFilterKiv(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                        unsigned short window, float sigma, float threshold, unsigned char variant,
                        unsigned char padding) {
  if (variant == 0) Bilateral_std(dst, src, height, width, step, window, sigma, threshold, padding);
  if (variant == 2) Bilateral_trp(dst, src, height, width, window, sigma, threshold, padding);
}
