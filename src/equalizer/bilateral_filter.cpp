// The bilateral filter over a padded copy, rows in parallel.

#include "equalizer/bilateral_filter.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "equalizer/equalizer_kernels.h"
#include "image/kiv_image.h"

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
    width = static_cast<int>(imageWidth);
    height = static_cast<int>(imageHeight);
    void* block = ::operator new[](sideWidth* sideHeight * sizeof(float), blockAlignment, std::nothrow);
    if (block == nullptr) throw NO_MEMORY_ERROR();
    samples.reset(static_cast<float*>(block));
  }

  int step() const { return width + 2 * window; }
  float* row(int r) const { return samples.get() + std::ptrdiff_t{r} * step(); }

  void fill(const float* src, std::ptrdiff_t srcStep, Padding padding) const {
    const auto columnOf = padding == mirror ? reflected : clamped;
    const auto rowOf = padding == mirror ? reflectedRow : clamped;
    const int rows = height + 2 * window;
#pragma omp parallel for schedule(static)
    for (int r = 0; r < rows; ++r) {
      const float* from = src + rowOf(r - window, height) * srcStep;
      float* to = row(r);
      for (int k = 0; k < window; ++k) to[k] = from[columnOf(k - window, width)];
      std::memcpy(to + window, from, static_cast<std::size_t>(width) * sizeof(float));
      for (int k = 0; k < window; ++k) to[window + width + k] = from[columnOf(width + k, width)];
    }
  }
};

template <typename Line>
void filter(float* dst, const float* src, std::ptrdiff_t step, unsigned int height, unsigned int width,
            unsigned short window, unsigned char padding, Line line) {
  if (padding != replicate && padding != mirror) std::abort();
  if (height == 0 || width == 0) return;
  const PaddedBlock block(height, width, window);
  block.fill(src, step, static_cast<Padding>(padding));
#pragma omp parallel for schedule(static)
  for (int y = 0; y < block.height; ++y) line(block.row(y), block.step(), dst + y * step, block.width);
}

}  // namespace

void Bilateral_std(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                   unsigned short window, float sigma, float threshold, unsigned char padding) {
  const EqualizerKernels& kernels = equalizerKernels();
  const float ks = bilateralCoefficient(sigma);
  const float kr = bilateralCoefficient(threshold);
  filter(dst, src, step, height, width, window, padding, [&](const float* top, int blockStep, float* to, int columns) {
    kernels.bilateralStdLine(top, blockStep, window, ks, kr, to, columns);
  });
}

void Bilateral_trp(float* dst, float* src, unsigned int height, unsigned int width, unsigned short window, float,
                   float threshold, unsigned char padding) {
  const EqualizerKernels& kernels = equalizerKernels();
  const float reach = threshold + threshold;
  const float flat = reach - 0.5F * threshold;
  filter(dst, src, width, height, width, window, padding, [&](const float* top, int blockStep, float* to, int columns) {
    kernels.bilateralTrpLine(top, blockStep, window, reach, flat, to, columns);
  });
}

void BilateralFilterKiv(float* dst, float* src, unsigned int height, unsigned int width, unsigned int step,
                        unsigned short window, float sigma, float threshold, unsigned char variant,
                        unsigned char padding) {
  if (variant == 0) Bilateral_std(dst, src, height, width, step, window, sigma, threshold, padding);
  if (variant == 2) Bilateral_trp(dst, src, height, width, window, sigma, threshold, padding);
}
