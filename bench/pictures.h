// What the benchmarks share: pictures, their sizes, the choice of a row of bodies, and the count of pixels.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "image/kiv_image.h"

// 1, 6 and 24 megapixels: nearly in the cache, beyond it, and a photograph.
inline IppiSize sizeOf(std::int64_t megapixels) {
  if (megapixels == 1) return {1250, 800};
  return megapixels == 6 ? IppiSize{3000, 2000} : IppiSize{6000, 4000};
}

inline void randomise(KivImage& image, float low = 0.0F, float high = 1.0F) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> samples(low, high);
  for (int plane = 0; plane < image.channels; ++plane) {
    for (int y = 0; y < image.size.height; ++y) {
      for (int x = 0; x < image.size.width; ++x) *image.At(plane, x, y) = samples(random);
    }
  }
}

// What a photograph has: slow gradients, patches with sharp edges, fine texture and grain. Weights of the bilateral
// filter depend on it: in pure noise most of them vanish, or come so close to it that processors compute them slowly.
inline void paint(KivImage& image) {
  std::mt19937 random(1);
  std::normal_distribution<float> grain(0.0F, 0.01F);
  for (int plane = 0; plane < image.channels; ++plane) {
    for (int y = 0; y < image.size.height; ++y) {
      for (int x = 0; x < image.size.width; ++x) {
        const auto fx = static_cast<float>(x);
        const auto fy = static_cast<float>(y);
        const float gradient = 0.5F + 0.15F * std::sin(0.002F * fx + static_cast<float>(plane)) * std::cos(0.003F * fy);
        const float patch = ((x / 170) ^ (y / 110)) % 3 == 0 ? 0.2F : -0.05F;
        const float texture = 0.04F * std::sin(0.7F * fx + 0.3F * fy) * std::sin(0.11F * fy);
        *image.At(plane, x, y) = gradient + patch + texture + grain(random);
      }
    }
  }
}

// Of plane 0.
inline double mean(const KivImage& image) {
  double sum = 0;
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x) sum += double{*image.At(0, x, y)};
  }
  return sum / image.size.width / image.size.height;
}

inline void countPixels(benchmark::State& state, IppiSize size, int planes = 1) {
  state.counters["pixels/s"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * planes * size.width * size.height, benchmark::Counter::kIsRate);
}

// The given row of bodies is in force during its life. Where the machine lacks it, the benchmark is skipped, and found
// to be so.
class RowInForce {
 public:
  RowInForce(benchmark::State& state, std::int64_t row) {
    ippInit();
    isThere_ = row <= ippJumpIndexForMergedLibs;
    if (isThere_) {
      ippJumpIndexForMergedLibs = static_cast<std::int32_t>(row);
    } else {
      state.SkipWithError("this machine lacks the row's instructions");
    }
  }
  ~RowInForce() { ippInit(); }
  RowInForce(const RowInForce&) = delete;
  RowInForce& operator=(const RowInForce&) = delete;

  bool isThere() const { return isThere_; }

 private:
  bool isThere_;
};
