#include "equalizer/area_mean.h"

#include <algorithm>
#include <cstdint>

#include "equalizer/equalizer_kernels.h"

// All in units of 1 / (from * to) of the line: an old sample is `to` of them long, a new one `from`.
AreaMean::AreaMean(int from, int to) : from_(from), to_(to) {
  firsts_.reserve(static_cast<std::size_t>(to));
  offsets_.reserve(static_cast<std::size_t>(to) + 1);
  weights_.reserve(static_cast<std::size_t>(from) + static_cast<std::size_t>(to));
  for (std::int64_t i = 0; i < to; ++i) {
    const std::int64_t begin = i * from;
    const std::int64_t end = begin + from;
    offsets_.push_back(weights_.size());
    firsts_.push_back(static_cast<int>(begin / to));
    for (std::int64_t j = begin / to; j * to < end; ++j) {
      const std::int64_t covered = std::min(end, (j + 1) * to) - std::max(begin, j * to);
      weights_.push_back(static_cast<float>(static_cast<double>(covered) / from));
    }
  }
  offsets_.push_back(weights_.size());
}

int AreaMean::firstWith(int j) const { return static_cast<int>(std::int64_t{j} * to_ / from_); }

void AreaMean::addLine(int i, int j, const float* line, int width, float* sum) const {
  if (j == first(i)) {
    equalizerKernels().weightLine(sum, line, weight(i, j), width);
  } else {
    equalizerKernels().addWeightedLine(sum, line, weight(i, j), width);
  }
}

void AreaMean::reduce(const float* line, int left, int count, float* to) const {
  for (int i = 0; i < count; ++i) {
    const float* const samples = line + first(left + i);
    const float* const weights = weights_.data() + offset(left + i);
    const std::size_t length = offset(left + i + 1) - offset(left + i);
    float sum = samples[0] * weights[0];  // not from 0: the mean of one sample has its bits
    for (std::size_t k = 1; k < length; ++k) sum += samples[k] * weights[k];
    to[i] = sum;
  }
}
