#include "equalizer/plane_stack.h"

#include "equalizer/stepwise.h"
#include "equalizer/wavelets.h"
#include "image/row_bands.h"

namespace {

double planeBytes(IppiSize size) { return static_cast<double>(rowBytesFor(size.width)) * size.height; }

// Planes that a pyramid doesn't serve are taken apart again each time.
class PyramidPlanes : public PlaneStack {
 public:
  PyramidPlanes(KivImage&& all, const Levels& levels, Progress* progress)
      : PlaneStack(std::move(all)), levels_(levels) {
    if (!Pyramid::serves(planes().size)) return;
    for (int i = 0; i < planes().channels; ++i) {
      const KivImage plane = planes().Plane(i);
      pyramids_.emplace_back(LevelLines(plane), levels, progress);
    }
  }

  KivImage weigh(const float* gains, float baseGain, Progress* progress) const override {
    KivImage weighed;
    weighed = planes();
    for (int i = 0; i < weighed.channels; ++i) {
      KivImage plane = weighed.Plane(i);
      if (pyramids_.empty()) {
        equalizeStepwise(plane, levels_, gains, baseGain, progress);
      } else {
        WeighedPyramid(pyramids_[static_cast<std::size_t>(i)], gains, baseGain).rebuildInto(plane);
      }
    }
    return weighed;
  }

  double weighingWork() const override {
    double taps = 0;
    for (const Level& level : levels_) taps += pyramids_.empty() ? planes().channels * level.taps() : 0;
    return taps;
  }

 private:
  Levels levels_;
  std::vector<Pyramid> pyramids_;  // one a plane, or none
};

StackBytes pyramidBytes(const Levels& levels, int planes, int threads) {
  const IppiSize size = levels[0].size;
  const double plane = planeBytes(size);
  if (!Pyramid::serves(size)) {
    // Beside the planes, their copy, and what the steps keep of one: three images and the bands.
    constexpr double imagesOfSteps = 3 + 1.34;
    return {planes * plane, planes * plane, (planes + imagesOfSteps) * plane};
  }
  const Pyramid::Bytes pyramid = Pyramid::bytesOf(levels, RowsOfLines{false, 0}, threads);
  const double kept = planes * (plane + pyramid.kept);
  return {planes * plane + (planes - 1) * pyramid.kept + pyramid.making, kept,
          planes * plane + pyramid.weighing + threads * pyramid.scratch};
}

}  // namespace

std::unique_ptr<PlaneStack> takePlanesApart(KivImage&& planes, const Plan& plan, Progress* progress) {
  if (plan.form == Form::wavelets) return std::make_unique<WaveletPlanes>(std::move(planes), plan.levels, progress);
  return std::make_unique<PyramidPlanes>(std::move(planes), plan.levels, progress);
}

StackBytes planeStackBytes(const Plan& plan, int planes, int threads) {
  return plan.form == Form::wavelets ? WaveletPlanes::bytesOf(plan.levels, planes)
                                     : pyramidBytes(plan.levels, planes, threads);
}
