// What the benchmarks share: pictures, their sizes, the choice of a row of bodies, and the count of pixels.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "image/kiv_image.h"
#include "support/forced_row.h"

// 1, 6, 24 and 100 megapixels: nearly in the cache, beyond it, a photograph, and a very large one.
inline IppiSize sizeOf(std::int64_t megapixels) {
  if (megapixels == 1) return {1250, 800};
  if (megapixels == 100) return {12500, 8000};
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
  const auto wave = [](int length, float frequency) {
    std::vector<float> samples;
    for (int i = 0; i < length; ++i) samples.push_back(std::sin(frequency * static_cast<float>(i)));
    return samples;
  };
  const auto column = [](int i) { return static_cast<std::size_t>(i); };
  const std::vector<float> slowX = wave(image.size.width, 0.002F);
  const std::vector<float> slowY = wave(image.size.height, 0.003F);
  const std::vector<float> fineX = wave(image.size.width, 0.7F);
  const std::vector<float> fineY = wave(image.size.height, 0.31F);
  std::mt19937 random(1);
  std::normal_distribution<float> distribution(0.0F, 0.01F);
  std::vector<float> grain(65536);
  for (float& sample : grain) sample = distribution(random);

  for (int plane = 0; plane < image.channels; ++plane) {
    for (int y = 0; y < image.size.height; ++y) {
      auto at = static_cast<std::uint32_t>(random());
      for (int x = 0; x < image.size.width; ++x, at += 7919) {
        const float patch = ((x / 170) ^ (y / 110)) % 3 == 0 ? 0.2F : -0.05F;
        *image.At(plane, x, y) = 0.5F + 0.15F * slowX[column(x)] * slowY[column(y)] + patch +
                                 0.04F * fineX[column(x)] * fineY[column(y)] + grain[at % grain.size()];
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

// The given row of bodies is in force during its life. Where the machine lacks it, the benchmark is skipped.
class BenchRow {
 public:
  BenchRow(benchmark::State& state, std::int64_t row) {
    const int index = static_cast<int>(row);
    if (ForcedRow::machineHas(index)) {
      forced_.emplace(index);
    } else {
      state.SkipWithError("this machine lacks the row's instructions");
    }
  }

  bool isThere() const { return forced_.has_value(); }

 private:
  std::optional<ForcedRow> forced_;
};
