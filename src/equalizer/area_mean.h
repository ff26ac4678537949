// A line of samples made shorter by means: each new sample is the mean of the old ones that it covers, those at its
// ends by the part of them that it covers.
#pragma once

#include <cstddef>
#include <vector>

class AreaMean {
 public:
  // to is at most from.
  AreaMean(int from, int to);

  // The old samples that new sample i covers: first to end - 1.
  int first(int i) const { return firsts_[static_cast<std::size_t>(i)]; }
  int end(int i) const { return first(i) + static_cast<int>(offset(i + 1) - offset(i)); }

  // The weight of old sample j among them; all of one mean come to 1.
  float weight(int i, int j) const { return weights_[offset(i) + static_cast<std::size_t>(j - first(i))]; }

  // The new sample that begins in old sample j or before, and covers it.
  int firstWith(int j) const;

  // Old line j as a part of new line i, of lines that lie below each other: the first one begins the sum, the others
  // come in turn.
  void addLine(int i, int j, const float* line, int width, float* sum) const;

  // New samples left to left + count - 1 of a line.
  void reduce(const float* line, int left, int count, float* to) const;

 private:
  std::size_t offset(int i) const { return offsets_[static_cast<std::size_t>(i)]; }

  std::vector<int> firsts_;
  std::vector<std::size_t> offsets_;  // into the weights
  std::vector<float> weights_;
  int from_;
  int to_;
};
