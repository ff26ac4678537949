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

// What both ways have in common: scratch has so many lines of the change for each plane, as wide as a part.
class ChangeLook : public Look {
 public:
  int bandRows() const override { return rowsAtOnce; }

 protected:
  ChangeLook(KivImage&& change, float gain, int linesOfPlane)
      : change_(std::move(change)), gain_(gain), linesOfPlane_(linesOfPlane) {}

  std::int64_t offsetOf(int plane, int line, int width) const {
    return (std::int64_t{plane} * linesOfPlane_ + line) * rowBytesFor(width);
  }
  std::int64_t linesBytes(int width) const { return offsetOf(change_.channels, 0, width); }
  const float* lineAt(const void* scratch, int plane, int line, int width) const {
    return reinterpret_cast<const float*>(static_cast<const unsigned char*>(scratch) + offsetOf(plane, line, width));
  }

  const KivImage change_;
  const float gain_;

 private:
  const int linesOfPlane_;
};

// The picture is larger: scratch has the lines that a part lies between.
class EnlargedLook : public ChangeLook {
 public:
  EnlargedLook(KivImage&& change, int planes, float gain, IppiSize picture)
      : ChangeLook(std::move(change), gain, rowsAtOnce + 1),
        planes_(planes),
        across_(change_.size.width, picture.width),
        down_(change_.size.height, picture.height) {}

  std::int64_t scratchBytes(int width) const override { return linesBytes(width); }

  void prepare(const KivRect& part, void* scratch) const override {
    const int first = down_.first(part.y);
    const int end = down_.second(part.y + part.height - 1) + 1;
    for (int plane = 0; plane < change_.channels; ++plane) {
      for (int y = first; y < end; ++y) {
        const float* const from = change_.At(plane, 0, y);
        float* const to = floatsAt(scratch, offsetOf(plane, y - first, part.width));
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
    const auto upper = [&](int p) { return lineAt(scratch, p, down_.first(y) - first, part.width); };
    const auto lower = [&](int p) { return lineAt(scratch, p, down_.second(y) - first, part.width); };
    const EqualizerKernels& kernels = equalizerKernels();
    if (change_.channels == planes_) {
      kernels.addBetweenLine(to, before, gain_, upper(plane), lower(plane), down_.share(y), part.width);
    } else {
      const int factor = planes_ + plane;
      kernels.addGuidedLine(to, before, gain_, upper(plane), lower(plane), upper(factor), lower(factor), down_.share(y),
                            part.width);
    }
  }

 private:
  int planes_;
  Between across_;
  Between down_;
};

// The picture is smaller: scratch has the change of each line, and a line of sums.
class ReducedLook : public ChangeLook {
 public:
  ReducedLook(KivImage&& change, float gain, IppiSize picture)
      : ChangeLook(std::move(change), gain, rowsAtOnce),
        across_(change_.size.width, picture.width),
        down_(change_.size.height, picture.height) {}

  std::int64_t scratchBytes(int width) const override { return linesBytes(width) + rowBytesFor(change_.size.width); }

  void prepare(const KivRect& part, void* scratch) const override {
    float* const sum = floatsAt(scratch, linesBytes(part.width));
    for (int plane = 0; plane < change_.channels; ++plane) {
      for (int i = 0; i < part.height; ++i) {
        const int y = part.y + i;
        for (int j = down_.first(y); j < down_.end(y); ++j) {
          down_.addLine(y, j, change_.At(plane, 0, j), change_.size.width, sum);
        }
        across_.reduce(sum, part.x, part.width, floatsAt(scratch, offsetOf(plane, i, part.width)));
      }
    }
  }

  void line(int plane, int i, const KivRect& part, const float* before, float* to, const void* scratch) const override {
    const float* const change = lineAt(scratch, plane, i, part.width);
    equalizerKernels().addBetweenLine(to, before, gain_, change, change, 0.0F, part.width);
  }

 private:
  AreaMean across_;
  AreaMean down_;
};

bool isSmaller(IppiSize a, IppiSize b) { return a.width < b.width || a.height < b.height; }

}  // namespace

std::unique_ptr<Look> referenceLook(KivImage&& change, int planes, float gain, IppiSize picture) {
  if (isSmaller(picture, change.size)) return std::make_unique<ReducedLook>(std::move(change), gain, picture);
  return std::make_unique<EnlargedLook>(std::move(change), planes, gain, picture);
}

double referenceLookBytes(IppiSize working, IppiSize picture, int planes, int threads) {
  const double lines = planes * (rowsAtOnce + 1.0) * rowBytesFor(picture.width);
  const double tables = 8.0 * (static_cast<double>(picture.width) + picture.height + working.width + working.height);
  return threads * (lines + rowBytesFor(working.width)) + tables;
}
