// What the tests of the neighbourhood primitives share: planes with samples all around the region, the rule of borders,
// and scratch memory with fences.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "primitives/primitives.h"
#include "support/each_row_test.h"

template <typename Sample>
inline Sample randomSample(std::mt19937& random) {
  return static_cast<Sample>(random());
}
template <>
inline float randomSample<float>(std::mt19937& random) {
  return std::uniform_real_distribution<float>(-0.5F, 1.5F)(random);
}

// A region inside a larger plane of random samples, so that neighbours in memory exist, and so that a write beside the
// region shows.
template <typename Sample>
class Plane {
 public:
  Plane(int width, int height, int margin, unsigned seed)
      : width_(width), height_(height), margin_(margin), stride_(width + 2 * margin + 3) {
    std::mt19937 random(seed);
    samples_.resize(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height + 2 * margin));
    for (Sample& sample : samples_) sample = randomSample<Sample>(random);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  int margin() const { return margin_; }
  int step() const { return stride_ * static_cast<int>(sizeof(Sample)); }
  IppiSize size() const { return {width_, height_}; }
  Sample& at(int x, int y) { return samples_[index(x, y)]; }
  Sample at(int x, int y) const { return samples_[index(x, y)]; }
  Sample* first() { return &at(0, 0); }
  const Sample* first() const { return &samples_[index(0, 0)]; }

  // Every sample, those around the region included.
  friend testing::AssertionResult sameBits(const Plane& a, const Plane& b) {
    for (int y = -a.margin_; y < a.height_ + a.margin_; ++y) {
      for (int x = -a.margin_; x < a.width_ + a.margin_; ++x) {
        const Sample va = a.at(x, y);
        const Sample vb = b.at(x, y);
        if (va != va && vb != vb) continue;  // NaN: payloads may differ
        if (std::memcmp(&va, &vb, sizeof va) == 0) continue;
        return testing::AssertionFailure()
               << a.width_ << " x " << a.height_ << ", row of bodies " << ippJumpIndexForMergedLibs << ": (" << x
               << ", " << y << ") is " << +va << ", expected " << +vb;
      }
    }
    return testing::AssertionSuccess();
  }

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y + margin_) * static_cast<std::size_t>(stride_) +
           static_cast<std::size_t>(x + margin_);
  }

  int width_;
  int height_;
  int margin_;
  int stride_;
  std::vector<Sample> samples_;
};

// A position of the region continued by the border rule, along one axis: the sample in memory that stands for n, or
// none where the constant does. The flag low, and the one twice as large, say that neighbours in memory are real, as
// many as windows reach.
struct Position {
  bool isConstant;
  int n;
};
inline Position continued(int n, int length, unsigned border, unsigned low, int below, int above) {
  const int first = (border & low) != 0 ? -below : 0;
  const int last = length - 1 + ((border & (2 * low)) != 0 ? above : 0);
  while (n < first || n > last) {
    if ((border & 15) == ippBorderConst) return {true, 0};
    const int edge = n < first ? first : last;
    n = (border & 15) == ippBorderRepl || first == last ? edge : 2 * edge - n;
  }
  return {false, n};
}

// Memory of exactly the given size, at the given distance from a 64-byte boundary, not written (so that valgrind sees a
// read of what nobody wrote), between fences that the end of its life checks.
class FencedMemory {
 public:
  explicit FencedMemory(std::int64_t size, std::size_t offset = 0)
      : size_(static_cast<std::size_t>(size)), block_(new unsigned char[size_ + 64 + offset + 2 * fence]) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(block_.get()) + fence;
    start_ = block_.get() + fence + (64 - address % 64) % 64 + offset;
    std::memset(start_ - fence, canary, fence);
    std::memset(start_ + size_, canary, fence);
  }
  FencedMemory(FencedMemory&&) = default;
  ~FencedMemory() {
    if (block_ == nullptr) return;  // moved from
    for (std::size_t i = 0; i < fence; ++i) {
      EXPECT_EQ(*(start_ - 1 - i), canary) << "written before the buffer";
      EXPECT_EQ(start_[size_ + i], canary) << "written behind the buffer";
    }
  }
  unsigned char* get() const { return start_; }

 private:
  static constexpr std::size_t fence = 64;
  static constexpr unsigned char canary = 0xA5;
  std::size_t size_;
  std::unique_ptr<unsigned char[]> block_;
  unsigned char* start_;
};
