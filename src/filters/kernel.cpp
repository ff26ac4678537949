// Kernel: its taps and who releases them.

#include "filters/kernel.h"

#include <cmath>
#include <new>
#include <utility>

#include "image/kiv_image.h"

namespace {

int sizeFor(int radius) {
  const std::int64_t size = 2 * std::int64_t{radius} + 1;
  if (size < 1 || size > INT32_MAX) throw NO_MEMORY_ERROR();
  return static_cast<int>(size);
}

float* newTaps(int size) {
  float* const taps = new (std::nothrow) float[static_cast<std::size_t>(size)]();
  if (taps == nullptr) throw NO_MEMORY_ERROR();
  return taps;
}

void fillGaussian(float* taps, int size, int radius, int spread) {
  const auto variance = static_cast<float>(std::int64_t{spread} * spread);
  float sum = 0.0F;
  for (int i = 0; i < size; ++i) {
    const std::int64_t d = std::int64_t{i} - radius;
    const float exponent = static_cast<float>(-(d * d)) / (variance + variance);
    // In double precision, rounded once: libraries differ in the last bit of a single-precision exponential.
    taps[i] = static_cast<float>(std::exp(double{exponent}));
    sum += taps[i];
  }
  for (int i = 0; i < size; ++i) taps[i] /= sum;
}

}  // namespace

Kernel::Kernel(KERNEL_TYPE type, int kernelRadius, int kernelSpread)
    : radius(kernelRadius), size(sizeFor(kernelRadius)), spread(kernelSpread), taps(newTaps(size)), ownsTaps(true) {
  if (type == KERNEL_TYPE_TENT) {
    taps[0] = 0.25F;
    taps[(size - 1) / 2] = 0.5F;
    taps[size - 1] = 0.25F;
  } else {
    fillGaussian(taps, size, radius, spread);
  }
}

Kernel::Kernel(float* callersTaps, int kernelRadius)
    : radius(kernelRadius), size(sizeFor(kernelRadius)), spread(0), taps(callersTaps), ownsTaps(false) {}

Kernel::Kernel(Kernel&& other) noexcept
    : radius(other.radius),
      size(other.size),
      spread(other.spread),
      taps(std::exchange(other.taps, nullptr)),
      ownsTaps(std::exchange(other.ownsTaps, false)) {}

Kernel& Kernel::operator=(Kernel&& other) noexcept {
  Kernel moved(std::move(other));
  std::swap(radius, moved.radius);
  std::swap(size, moved.size);
  std::swap(spread, moved.spread);
  std::swap(taps, moved.taps);
  std::swap(ownsTaps, moved.ownsTaps);
  return *this;
}

Kernel::~Kernel() {
  if (ownsTaps) delete[] taps;
}
