// A square box over planes, one primitive call a plane.

#include "filters/box_filter.h"

#include <algorithm>

#include "image/parallel.h"
#include "image/scratch.h"

BoxFilter::BoxFilter(IppiSize size, std::int64_t side, std::uint32_t border, float value)
    : size_(size), mask_{0, 0}, border_(border), value_(value) {
  if (side > INT32_MAX) throw NO_MEMORY_ERROR();
  mask_.width = mask_.height = static_cast<int>(std::max(side, std::int64_t{0}));
  constexpr int oneChannel = 1;
  const IppStatus status = ippiFilterBoxBorderGetBufferSize(size_, mask_, ipp32f, oneChannel, &bufferSize_);
  if (status == ippStsSizeTooBigErr) throw NO_MEMORY_ERROR();
}

void BoxFilter::run(const KivImage& src, KivImage& dst, int count) const {
  if (!isServed()) return;
  const Scratch buffer = makeScratch(bufferSize_);
  for (int i = 0; i < count; ++i) runPlane(src, dst, i, buffer.get());
}

void BoxFilter::runOnThreads(const KivImage& src, KivImage& dst, int count) const {
  if (count < 2) return run(src, dst, count);
  if (!isServed()) return;
  eachIndex(count, [&](int i) {
    const Scratch buffer = makeScratch(bufferSize_);
    runPlane(src, dst, i, buffer.get());
  });
}

void BoxFilter::runPlane(const KivImage& src, KivImage& dst, int i, void* buffer) const {
  ippiFilterBoxBorder_32f_C1R(src.planes[i], src.stride, dst.planes[i], dst.stride, size_, mask_, border_, &value_,
                              buffer);
}
