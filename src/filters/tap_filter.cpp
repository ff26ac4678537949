// A one-dimensional kernel along rows and columns.

#include "filters/tap_filter.h"

#include "filters/kernel.h"
#include "image/allocate_like.h"
#include "image/parallel.h"

namespace {

enum Passes : int { both = 0, rowsOnly = 1, columnsOnly = 2 };

// The line that is filtered: first(0) is its first sample, first(i) the same line moved on by i taps.
template <typename Line>
void sumTaps(Line line, const Kernel& kernel, float* to, int width) {
  const float* from = line(0);
  for (int x = 0; x < width; ++x) to[x] = from[x] * kernel.taps[0];
  for (int i = 1; i < kernel.size; ++i) {
    const float tap = kernel.taps[i];
    from = line(i);
    for (int x = 0; x < width; ++x) to[x] = to[x] + from[x] * tap;
  }
}

// size is that of dst; src has a margin of kernel.radius samples to the left and right.
void filterRows(const KivImage& src, int plane, int firstRow, const Kernel& kernel, const KivImage& dst, int dstPlane) {
  eachIndex(dst.size.height, [&](int y) {
    const float* const row = src.At(plane, -kernel.radius, firstRow + y);
    sumTaps([row](int tap) { return row + tap; }, kernel, dst.At(dstPlane, 0, y), dst.size.width);
  });
}

// Row firstRow of src is under the first tap of dst's row 0.
void filterColumns(const KivImage& src, int plane, int firstRow, const Kernel& kernel, const KivImage& dst,
                   int dstPlane) {
  eachIndex(dst.size.height, [&](int y) {
    const auto line = [&](int tap) { return src.At(plane, 0, firstRow + y + tap); };
    sumTaps(line, kernel, dst.At(dstPlane, 0, y), dst.size.width);
  });
}

int withMargins(int length, int margin, int more) {
  const std::int64_t sum = length + 2 * std::int64_t{margin} + more;
  if (sum > INT32_MAX) throw NO_MEMORY_ERROR();
  return static_cast<int>(sum);
}

}  // namespace

void separableFilter(KivImage& target, const KivImage& src, const Kernel& kernel, int passes) {
  allocateLike(target, src);
  const int r = kernel.radius;
  if (passes == rowsOnly) {
    for (int i = 0; i < target.channels; ++i) filterRows(src, i, 0, kernel, target, i);
  } else if (passes == columnsOnly) {
    for (int i = 0; i < target.channels; ++i) filterColumns(src, i, -r, kernel, target, i);
  } else if (passes == both) {
    KivImage alongRows(target.size.width, withMargins(target.size.height, r, 0), 1);
    for (int i = 0; i < target.channels; ++i) {
      filterRows(src, i, -r, kernel, alongRows, 0);
      filterColumns(alongRows, 0, 0, kernel, target, i);
    }
  }
}

void separableFilterWithPadding(KivImage& target, const KivImage& src, const Kernel& kernel) {
  allocateLike(target, src);
  const int r = kernel.radius;
  KivImage padded(withMargins(target.size.width, r, 0), withMargins(target.size.height, r, 1), 1);
  for (int i = 0; i < target.channels; ++i) {
    const IppStatus status = ippiCopyReplicateBorder_32f_C1R(src.planes[i], src.stride, src.size, padded.planes[0],
                                                             padded.stride, padded.size, r, r);
    // Refused, the copy holds no samples.
    if (status != ippStsNoErr) continue;
    KivImage plane = target.Plane(i);
    separableFilter(plane, padded.Sub_Section(r, r), kernel, both);
  }
}
