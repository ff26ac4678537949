#include "equalizer/reference_stack.h"

#include "equalizer/equalizer_kernels.h"
#include "equalizer/guided_change.h"
#include "equalizer/lanczos.h"
#include "equalizer/reference_look.h"
#include "image/row_bands.h"

namespace {

bool isSame(IppiSize a, IppiSize b) { return a.width == b.width && a.height == b.height; }

IppiSize reducedSize(IppiSize picture, IppiSize working) {
  return picture.width < working.width || picture.height < working.height ? picture : working;
}

double planeBytes(IppiSize size) { return static_cast<double>(rowBytesFor(size.width)) * size.height; }

}  // namespace

ReferenceStack::ReferenceStack(IppiSize picture, const Plan& plan, const Planes& planes)
    : picture_(picture), plan_(plan) {
  reduction_.emplace(picture, reducedSize(picture, plan.levels[0].size), planes);
}

void ReferenceStack::add(const PlaneLines& lines, int count, Progress* progress) {
  isBroken_ = true;
  reduction_->add(lines, count, progress);
  linesAdded_ += count;
  if (reduction_->isDone()) takeApart(progress);
  isBroken_ = false;
}

void ReferenceStack::takeApart(Progress* progress) {
  KivImage reduced = reduction_->take();
  reduction_.reset();
  const IppiSize working = plan_.levels[0].size;
  if (isSame(reduced.size, working)) {
    stack_ = takePlanesApart(std::move(reduced), plan_, progress);
  } else {
    KivImage enlarged(working, reduced.channels);
    enlargeByLanczos(reduced, enlarged);
    stack_ = takePlanesApart(std::move(enlarged), plan_, progress);
  }
}

std::unique_ptr<Look> ReferenceStack::weigh(const float* gains, float baseGain, IppiSize size,
                                            Progress* progress) const {
  KivImage weighed = stack_->weigh(gains, baseGain, progress);
  if (isSame(size, weighed.size) && isSame(size, picture_)) return std::make_unique<WholeLook>(std::move(weighed));
  const KivImage& before = stack_->planes();
  for (int plane = 0; plane < weighed.channels; ++plane) {
    eachIndex(weighed.size.height, [&](int y) {
      equalizerKernels().addWeightedLine(weighed.At(plane, 0, y), before.At(plane, 0, y), -gains[0],
                                         weighed.size.width);
    });
  }
  const bool enlarges = isSame(reducedSize(size, weighed.size), weighed.size);
  if (plan_.form == Form::wavelets && enlarges) {
    return referenceLook(guidedChange(weighed, before, size), before.channels, gains[0], size);
  }
  return referenceLook(std::move(weighed), before.channels, gains[0], size);
}

StackBytes ReferenceStack::bytesOf(IppiSize picture, const Plan& plan, const Planes& planes, int threads) {
  const IppiSize working = plan.levels[0].size;
  const double count = planes.count();
  StackBytes bytes = planeStackBytes(plan, planes.count(), threads);
  const double reducing =
      count * planeBytes(reducedSize(picture, working)) + PlaneReduction::bytesOf(picture, planes, threads);
  // The plane as it is, as wide as it will be, and as it will be.
  const double enlarging =
      isSame(reducedSize(picture, working), working)
          ? 0
          : count * (planeBytes(picture) + 2 * planeBytes({working.width, picture.height}) + planeBytes(working));
  bytes.making = std::max({bytes.making, reducing, enlarging});
  const int changePlanes = plan.form == Form::wavelets ? 2 * planes.count() : planes.count();
  if (plan.form == Form::wavelets) bytes.weighing += guidedChangeBytes(working, planes.count(), threads);
  bytes.weighing += referenceLookBytes(working, picture, changePlanes, threads);
  return bytes;
}
