#include "equalizer/band_stack.h"

#include <algorithm>
#include <cstring>

#include "equalizer/level_lines.h"
#include "equalizer/progress.h"
#include "image/row_bands.h"

namespace {

// Planes of which all but the finest level is put together, which is made line by line.
class FinestLook : public Look {
 public:
  FinestLook(const std::vector<Pyramid>& pyramids, const float* gains, float baseGain) {
    weighed_.reserve(pyramids.size());
    for (const Pyramid& pyramid : pyramids) weighed_.emplace_back(pyramid, gains, baseGain);
  }

  int bandRows() const override { return LevelRebuild::bandRows; }
  std::int64_t scratchBytes(int) const override {
    return static_cast<std::int64_t>(weighed_.size()) * weighed_.front().finest().scratchBytes();
  }
  void prepare(const KivRect& part, void* scratch) const override {
    for (std::size_t i = 0; i < weighed_.size(); ++i) {
      weighed_[i].finest().prepare(part.y, part.height, floatsAt(scratch, offsetOf(i)));
    }
  }
  void line(int plane, int i, const KivRect& part, const float* before, float* to, const void* scratch) const override {
    const auto at = static_cast<std::size_t>(plane);
    const auto* const own = static_cast<const unsigned char*>(scratch) + offsetOf(at);
    weighed_[at].finest().line(i, part.x, part.width, before, to, own);
  }

 private:
  std::int64_t offsetOf(std::size_t plane) const {
    return static_cast<std::int64_t>(plane) * weighed_.front().finest().scratchBytes();
  }

  std::vector<WeighedPyramid> weighed_;
};

}  // namespace

FullStack::FullStack(const Plan& plan, const PlaneLines& lines, Progress* progress) {
  const IppiSize size = plan.levels[0].size;
  const int count = lines.planes().count();
  const int rowBytes = rowBytesFor(size.width);
  KivImage small;
  if (!Pyramid::serves(size)) small.Init(size, count);
  for (int plane = 0; plane < count; ++plane) {
    const auto readPlane = [&, plane](int y, float* to, float* scratch) {
      float* colours[mostColours];
      for (int c = 0; c < mostColours; ++c) colours[c] = floatsAt(scratch, std::int64_t{c} * rowBytes);
      lines.read(y, colours, to);
      if (!lines.planes().luminance) {
        std::memcpy(to, colours[plane], static_cast<std::size_t>(size.width) * sizeof(float));
      }
    };
    const LineSource source{readPlane, mostColours};
    const LevelLines planeLines(size, source);
    if (Pyramid::serves(size)) {
      pyramids_.emplace_back(planeLines, plan.levels, progress);
    } else {
      KivImage view = small.Plane(plane);
      planeLines.readInto(view);
    }
  }
  if (pyramids_.empty()) small_ = takePlanesApart(std::move(small), plan, progress);
}

std::unique_ptr<Look> FullStack::weigh(const float* gains, float baseGain, IppiSize, Progress* progress) const {
  if (small_) return std::make_unique<WholeLook>(small_->weigh(gains, baseGain, progress));
  return std::make_unique<FinestLook>(pyramids_, gains, baseGain);
}

StackBytes FullStack::bytesOf(const Plan& plan, const Planes& planes, int threads) {
  const int count = planes.count();
  if (!Pyramid::serves(plan.levels[0].size)) return planeStackBytes(plan, count, threads);
  const Pyramid::Bytes pyramid = Pyramid::bytesOf(plan.levels, RowsOfLines{true, mostColours}, threads);
  return {(count - 1) * pyramid.kept + pyramid.making, count * pyramid.kept,
          count * (pyramid.weighing + threads * pyramid.scratch)};
}
