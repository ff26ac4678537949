// Border padding: a target made of a source and its continuation on all sides. First the rows that hold source rows are
// continued to the left and right; the rows above and below then repeat whole rows.

#include <string.h>

#include "primitives/reflection.h"
#include "primitives/regions.h"

namespace ROW {
namespace {

// The source index that stands for index i of the unbounded line.
constexpr auto nearest = [](int i, int length) { return i < 0 ? 0 : i < length ? i : length - 1; };
constexpr auto mirrored = [](int i, int length) { return static_cast<int>(reflected(i, length)); };

// Where the source lies in its target.
struct Placement {
  IppiSize source;
  IppiSize target;
  int top;
  int left;
};

bool fits(const Placement& p) {
  return !isEmpty(p.source) && !isEmpty(p.target) && p.top >= 0 && p.left >= 0 &&
         std::int64_t{p.target.width} >= std::int64_t{p.source.width} + p.left &&
         std::int64_t{p.target.height} >= std::int64_t{p.source.height} + p.top;
}

IppStatus checkPadding(const float* src, int srcStep, const float* dst, int dstStep, const Placement& p) {
  if (isNull(src) || isNull(dst)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  return fits(p) ? ippStsNoErr : ippStsSizeErr;
}

std::size_t bytesOf(int samples) { return static_cast<std::size_t>(samples) * sizeof(float); }

float* rowOf(float* dst, int dstStep, int y) { return advance(dst, std::ptrdiff_t{y} * dstStep); }

void copySource(const float* src, int srcStep, float* dst, int dstStep, const Placement& p) {
  eachRow(src, srcStep, rowOf(dst, dstStep, p.top) + p.left, dstStep, p.source,
          [&](const float* s, float* d) { memcpy(d, s, bytesOf(p.source.width)); });
}

// dst is the target's first sample, its source stands in place.
template <typename SourceIndex>
void continueSource(float* dst, int dstStep, const Placement& p, SourceIndex sourceIndex) {
  const auto continueSample = [&](float* row, int x) {
    store(row + x, load<float>(row + p.left + sourceIndex(x - p.left, p.source.width)));
  };
  for (int y = p.top; y < p.top + p.source.height; ++y) {
    float* row = rowOf(dst, dstStep, y);
    for (int x = 0; x < p.left; ++x) continueSample(row, x);
    for (int x = p.left + p.source.width; x < p.target.width; ++x) continueSample(row, x);
  }
  const auto continueRow = [&](int y) {
    const int from = p.top + sourceIndex(y - p.top, p.source.height);
    memcpy(rowOf(dst, dstStep, y), rowOf(dst, dstStep, from), bytesOf(p.target.width));
  };
  for (int y = 0; y < p.top; ++y) continueRow(y);
  for (int y = p.top + p.source.height; y < p.target.height; ++y) continueRow(y);
}

template <typename SourceIndex>
IppStatus padInPlace(float* srcDst, int step, const Placement& p, SourceIndex sourceIndex) {
  RETURN_UNLESS_OK(checkPadding(srcDst, step, srcDst, step, p));
  float* first = advance(srcDst, -(std::ptrdiff_t{p.top} * step)) - p.left;
  continueSource(first, step, p, sourceIndex);
  return ippStsNoErr;
}

template <typename SourceIndex>
IppStatus pad(const float* src, int srcStep, float* dst, int dstStep, const Placement& p, SourceIndex sourceIndex) {
  RETURN_UNLESS_OK(checkPadding(src, srcStep, dst, dstStep, p));
  if (src == dst) return padInPlace(dst, dstStep, p, sourceIndex);
  copySource(src, srcStep, dst, dstStep, p);
  continueSource(dst, dstStep, p, sourceIndex);
  return ippStsNoErr;
}

void fill(float* line, int from, int to, float value) {
  for (int x = from; x < to; ++x) store(line + x, value);
}

}  // namespace

IppStatus ippiCopyReplicateBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                          IppiSize dstRoi, int top, int left) {
  return pad(src, srcStep, dst, dstStep, {srcRoi, dstRoi, top, left}, nearest);
}
IppStatus ippiCopyReplicateBorder_32f_C1IR(float* srcDst, int srcDstStep, IppiSize srcRoi, IppiSize dstRoi, int top,
                                           int left) {
  return padInPlace(srcDst, srcDstStep, {srcRoi, dstRoi, top, left}, nearest);
}
IppStatus ippiCopyMirrorBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                       IppiSize dstRoi, int top, int left) {
  return pad(src, srcStep, dst, dstStep, {srcRoi, dstRoi, top, left}, mirrored);
}
IppStatus ippiCopyConstBorder_32f_C1R(const float* src, int srcStep, IppiSize srcRoi, float* dst, int dstStep,
                                      IppiSize dstRoi, int top, int left, float value) {
  const Placement p = {srcRoi, dstRoi, top, left};
  RETURN_UNLESS_OK(checkPadding(src, srcStep, dst, dstStep, p));
  for (int y = 0; y < dstRoi.height; ++y) {
    float* row = rowOf(dst, dstStep, y);
    const bool holdsSource = y >= top && y - top < srcRoi.height;
    fill(row, 0, holdsSource ? left : dstRoi.width, value);
    if (holdsSource) fill(row, left + srcRoi.width, dstRoi.width, value);
  }
  copySource(src, srcStep, dst, dstStep, p);
  return ippStsNoErr;
}

}  // namespace ROW
