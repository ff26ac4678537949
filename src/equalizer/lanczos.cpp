#include "equalizer/lanczos.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "equalizer/equalizer_kernels.h"
#include "image/parallel.h"

namespace {

constexpr int lobes = 3;
constexpr std::size_t tapCount = 2 * lobes;

struct Taps {
  std::array<int, tapCount> at;
  std::array<float, tapCount> weights;
};

double sinc(double x) {
  constexpr double pi = 3.14159265358979323846;
  return x == 0 ? 1 : std::sin(pi * x) / (pi * x);
}

std::vector<Taps> tapsFor(int from, int to) {
  std::vector<Taps> all;
  all.reserve(static_cast<std::size_t>(to));
  for (int i = 0; i < to; ++i) {
    const double centre = (i + 0.5) * from / to - 0.5;
    const double below = std::floor(centre);
    std::array<double, tapCount> weights{};
    double sum = 0;
    for (std::size_t k = 0; k < tapCount; ++k) {
      const double x = below + static_cast<double>(k) - (lobes - 1) - centre;
      weights[k] = std::abs(x) < lobes ? sinc(x) * sinc(x / lobes) : 0;
      sum += weights[k];
    }
    Taps taps{};
    for (std::size_t k = 0; k < tapCount; ++k) {
      taps.at[k] = std::clamp(static_cast<int>(below) + static_cast<int>(k) - (lobes - 1), 0, from - 1);
      taps.weights[k] = static_cast<float>(weights[k] / sum);
    }
    all.push_back(taps);
  }
  return all;
}

}  // namespace

void enlargeByLanczos(const KivImage& from, KivImage& to) {
  const std::vector<Taps> across = tapsFor(from.size.width, to.size.width);
  const std::vector<Taps> down = tapsFor(from.size.height, to.size.height);
  const EqualizerKernels& kernels = equalizerKernels();
  KivImage wide(to.size.width, from.size.height, from.channels);
  for (int plane = 0; plane < from.channels; ++plane) {
    eachIndex(from.size.height, [&](int y) {
      const float* const line = from.At(plane, 0, y);
      float* const target = wide.At(plane, 0, y);
      for (std::size_t x = 0; x < across.size(); ++x) {
        float sum = 0;
        for (std::size_t k = 0; k < tapCount; ++k) {
          sum += line[static_cast<std::size_t>(across[x].at[k])] * across[x].weights[k];
        }
        target[x] = sum;
      }
    });
    eachIndex(to.size.height, [&](int y) {
      const Taps& taps = down[static_cast<std::size_t>(y)];
      float* const target = to.At(plane, 0, y);
      kernels.weightLine(target, wide.At(plane, 0, taps.at[0]), taps.weights[0], to.size.width);
      for (std::size_t k = 1; k < tapCount; ++k) {
        kernels.addWeightedLine(target, wide.At(plane, 0, taps.at[k]), taps.weights[k], to.size.width);
      }
    });
  }
}
