#include "equalizer/reference_look.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "equalizer/area_mean.h"
#include "equalizer/equalizer_kernels.h"
#include "image/row_bands.h"

namespace {

constexpr int rowsAtOnce = 16;

// Samples of a line that lie between those of a shorter one, whose ends go on.
class Between {
 public:
  Between(int from, int to) {
    firsts_.reserve(static_cast<std::size_t>(to));
    shares_.reserve(static_cast<std::size_t>(to));
    for (int i = 0; i < to; ++i) {
      const double place = std::clamp((i + 0.5) * from / to - 0.5, 0.0, from - 1.0);
      // The last one is reached from the one before it.
      const int first = std::min(static_cast<int>(place), std::max(from - 2, 0));
      firsts_.push_back(first);
      shares_.push_back(static_cast<float>(place - first));
    }
    step_ = from > 1 ? 1 : 0;
  }

  int first(int i) const { return firsts_[static_cast<std::size_t>(i)]; }
  int second(int i) const { return first(i) + step_; }
  float share(int i) const { return shares_[static_cast<std::size_t>(i)]; }

 private:
  std::vector<int> firsts_;
  std::vector<float> shares_;
  int step_;
};

// The picture is larger. Scratch has the lines of the change that a part lies between, as wide as the part.
class EnlargedLook : public Look {
 public:
  EnlargedLook(KivImage&& change, float gain, IppiSize picture)
      : change_(std::move(change)),
        gain_(gain),
        across_(change_.size.width, picture.width),
        down_(change_.size.height, picture.height) {}

  int bandRows() const override { return rowsAtOnce; }
  std::int64_t scratchBytes(int width) const override {
    return std::int64_t{change_.channels} * mostLines * rowBytesFor(width);
  }

  void prepare(const KivRect& part, void* scratch) const override {
    const int first = down_.first(part.y);
    const int end = down_.second(part.y + part.height - 1) + 1;
    for (int plane = 0; plane < change_.channels; ++plane) {
      for (int y = first; y < end; ++y) {
        const float* const from = change_.At(plane, 0, y);
        float* const to = floatsAt(scratch, offsetOf(plane, y - first, part));
        for (int x = 0; x < part.width; ++x) {
          const float left = from[across_.first(part.x + x)];
          to[x] = left + (from[across_.second(part.x + x)] - left) * across_.share(part.x + x);
        }
      }
    }
  }

  void line(int plane, int i, const KivRect& part, const float* before, float* to, const void* scratch) const override {
    const int y = part.y + i;
    const int first = down_.first(part.y);
    const auto lineAt = [&](int row) {
      const auto* const bytes = static_cast<const unsigned char*>(scratch) + offsetOf(plane, row - first, part);
      return reinterpret_cast<const float*>(bytes);
    };
    equalizerKernels().addBetweenLine(to, before, gain_, lineAt(down_.first(y)), lineAt(down_.second(y)),
                                      down_.share(y), part.width);
  }

 private:
  static constexpr int mostLines = rowsAtOnce + 1;

  static std::int64_t offsetOf(int plane, int line, const KivRect& part) {
    return (std::int64_t{plane} * mostLines + line) * rowBytesFor(part.width);
  }

  KivImage change_;
  float gain_;
  Between across_;
  Between down_;
};

// The picture is smaller. Scratch has the change of each line, and a line of sums.
class ReducedLook : public Look {
 public:
  ReducedLook(KivImage&& change, float gain, IppiSize picture)
      : change_(std::move(change)),
        gain_(gain),
        across_(change_.size.width, picture.width),
        down_(change_.size.height, picture.height) {}

  int bandRows() const override { return rowsAtOnce; }
  std::int64_t scratchBytes(int width) const override {
    return std::int64_t{change_.channels} * rowsAtOnce * rowBytesFor(width) + rowBytesFor(change_.size.width);
  }

  void prepare(const KivRect& part, void* scratch) const override {
    const EqualizerKernels& kernels = equalizerKernels();
    float* const sum = floatsAt(scratch, offsetOf(change_.channels, 0, part));
    for (int plane = 0; plane < change_.channels; ++plane) {
      for (int i = 0; i < part.height; ++i) {
        const int y = part.y + i;
        const int first = down_.first(y);
        kernels.weightLine(sum, change_.At(plane, 0, first), down_.weight(y, first), change_.size.width);
        for (int j = first + 1; j < down_.end(y); ++j) {
          kernels.addWeightedLine(sum, change_.At(plane, 0, j), down_.weight(y, j), change_.size.width);
        }
        across_.reduce(sum, part.x, part.width, floatsAt(scratch, offsetOf(plane, i, part)));
      }
    }
  }

  void line(int plane, int i, const KivRect& part, const float* before, float* to, const void* scratch) const override {
    const auto* const bytes = static_cast<const unsigned char*>(scratch) + offsetOf(plane, i, part);
    const auto* const change = reinterpret_cast<const float*>(bytes);
    equalizerKernels().addBetweenLine(to, before, gain_, change, change, 0.0F, part.width);
  }

 private:
  static std::int64_t offsetOf(int plane, int line, const KivRect& part) {
    return (std::int64_t{plane} * rowsAtOnce + line) * rowBytesFor(part.width);
  }

  KivImage change_;
  float gain_;
  AreaMean across_;
  AreaMean down_;
};

bool isSmaller(IppiSize a, IppiSize b) { return a.width < b.width || a.height < b.height; }

}  // namespace

std::unique_ptr<Look> referenceLook(KivImage&& change, float gain, IppiSize picture) {
  if (isSmaller(picture, change.size)) return std::make_unique<ReducedLook>(std::move(change), gain, picture);
  return std::make_unique<EnlargedLook>(std::move(change), gain, picture);
}

double referenceLookBytes(IppiSize working, IppiSize picture, int planes, int threads) {
  const double lines = planes * (rowsAtOnce + 1.0) * rowBytesFor(picture.width);
  const double tables = 8.0 * (static_cast<double>(picture.width) + picture.height + working.width + working.height);
  return threads * (lines + rowBytesFor(working.width)) + tables;
}
