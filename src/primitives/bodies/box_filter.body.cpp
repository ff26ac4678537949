// Box filter with border: the mean over a mask, from running sums (box_row_sums.h and box_sums.h give their
// order). Sums start anew in each of the parts that the region is cut into:
//
//     +---------------------+   top and bottom: whole rows whose windows reach beyond the region
//     |         top         |   left and right: such columns of the rows between
//     +----+-----------+----+   interior: all windows lie in the source
//     |left| interior  |right   A side whose neighbours lie in memory has no part.
//     +----+-----------+----+
//     |       bottom        |   The windows of the outer parts are put together with their border: line by line, or
//     +---------------------+   all before anything else where the interior overwrites the region in place.
//
// A region no larger than the mask in a direction is one part, with a copied source, unless the border is
// ippBorderInMem.

#include "primitives/alignment.h"
#include "primitives/box_sums.h"
#include "primitives/reflection.h"

namespace ROW {
namespace {

// A part of the region, or of the plane around it.
struct Part {
  std::int64_t x, y, width, height;
};

// The positions along one axis that are real samples, and what stands for the others.
struct Extent {
  std::int64_t first;
  std::int64_t last;
  std::uint32_t kind;

  bool holds(std::int64_t n) const { return n >= first && n <= last; }
  std::int64_t standIn(std::int64_t n) const {
    if (kind == ippBorderRepl) return n < first ? first : last;
    return first + reflected(n - first, last - first + 1);
  }
};

// How far windows reach beyond their pixel.
struct Reach {
  int left, top, right, bottom;
};
Reach reachOf(IppiSize mask) {
  const int left = (mask.width - 1) / 2;
  const int top = (mask.height - 1) / 2;
  return {left, top, mask.width - 1 - left, mask.height - 1 - top};
}

struct Call {
  const float* src;
  std::ptrdiff_t srcStep;
  float* dst;
  std::ptrdiff_t dstStep;
  IppiSize size;
  IppiSize mask;
  std::uint32_t border;
  float value;

  bool inMemory(std::uint32_t side) const { return (border & side) != 0; }
  Extent columns() const {
    const Reach reach = reachOf(mask);
    return {inMemory(ippBorderInMemLeft) ? -reach.left : 0,
            size.width - 1 + (inMemory(ippBorderInMemRight) ? std::int64_t{reach.right} : 0), border & 15};
  }
  Extent rows() const {
    const Reach reach = reachOf(mask);
    return {inMemory(ippBorderInMemTop) ? -reach.top : 0,
            size.height - 1 + (inMemory(ippBorderInMemBottom) ? std::int64_t{reach.bottom} : 0), border & 15};
  }
  bool isInPlace() const { return src == dst; }
  bool isSmall() const { return size.width <= mask.width || size.height <= mask.height; }
};

// Floats from row to row of the buffer's parts.
std::int64_t strideOf(std::int64_t width) { return roundUp(width, std::int64_t{16}); }

// The union of the windows of a part.
Part windowsOf(const Part& part, const Call& call) {
  const Reach reach = reachOf(call.mask);
  return {part.x - reach.left, part.y - reach.top, part.width + call.mask.width - 1,
          part.height + call.mask.height - 1};
}

void fill(float* row, std::int64_t count, float value) {
  for (std::int64_t x = 0; x < count; ++x) row[x] = value;
}

void copyExtendedRow(const float* row, const Extent& columns, const Part& windows, float value, float* to) {
  const std::int64_t end = windows.x + windows.width;
  const std::int64_t first = columns.first > windows.x ? columns.first : windows.x;
  const std::int64_t endOfReal = columns.last + 1 < end ? columns.last + 1 : end;
  const auto synthesise = [&](std::int64_t x) {
    to[x - windows.x] = columns.kind == ippBorderConst ? value : load<float>(row + columns.standIn(x));
  };
  for (std::int64_t x = windows.x; x < first; ++x) synthesise(x);
  __builtin_memcpy(to + (first - windows.x), row + first, static_cast<std::size_t>(endOfReal - first) * sizeof(float));
  for (std::int64_t x = endOfReal; x < end; ++x) synthesise(x);
}

// Row r of the windows of a part, with its border.
void copyExtendedRow(const Call& call, const Part& windows, std::int64_t r, float* to) {
  const Extent rows = call.rows();
  const std::int64_t y = windows.y + r;
  if (rows.kind == ippBorderConst && !rows.holds(y)) return fill(to, windows.width, call.value);
  const std::int64_t from = rows.holds(y) ? y : rows.standIn(y);
  copyExtendedRow(advance(call.src, from * call.srcStep), call.columns(), windows, call.value, to);
}

// The rows of a part's windows: where they are, or one by one with their border.
class WindowRows {
 public:
  WindowRows(const float* first, std::ptrdiff_t step) : first_(first), step_(step) {}
  WindowRows(const Call& call, const Part& windows, float* lines) : call_(&call), windows_(windows), lines_(lines) {}

  const float* operator()(std::ptrdiff_t r, int i) const {
    if (call_ == nullptr) return advance(first_, r * step_);
    float* const line = lines_ + i * strideOf(windows_.width);
    copyExtendedRow(*call_, windows_, r, line);
    return line;
  }

 private:
  const float* first_ = nullptr;
  std::ptrdiff_t step_ = 0;
  const Call* call_ = nullptr;
  Part windows_ = {};
  float* lines_ = nullptr;
};

BoxPart<WindowRows> boxPart(const Call& call, const Part& part, const BoxRows& rows, const WindowRows& windows) {
  const float area = static_cast<float>(call.mask.width) * static_cast<float>(call.mask.height);
  const IppiSize size = {static_cast<int>(part.width), static_cast<int>(part.height)};
  const BoxTask task = {advance(call.dst, part.y * call.dstStep) + part.x, call.dstStep, size, call.mask, 1.0F / area};
  return {task, rows, windows};
}

// A part whose windows lie in memory.
BoxPart<WindowRows> innerPart(const Call& call, const Part& part, const BoxRows& rows) {
  const Part windows = windowsOf(part, call);
  return boxPart(call, part, rows, {advance(call.src, windows.y * call.srcStep) + windows.x, call.srcStep});
}

// A part with the border, line by line; for images apart.
BoxPart<WindowRows> outerPart(const Call& call, const Part& part, const BoxRows& rows, float* lines) {
  return boxPart(call, part, rows, {call, windowsOf(part, call), lines});
}

void filterPart(const BoxPart<WindowRows>& part) { filterBox(&part, 1); }

// What the windows of a part cover, with the border: for a source that is overwritten before the part's turn. Returns
// the end of the copy.
float* copyWindows(const Call& call, const Part& part, float* to) {
  const Part windows = windowsOf(part, call);
  for (std::int64_t r = 0; r < windows.height; ++r, to += strideOf(windows.width))
    copyExtendedRow(call, windows, r, to);
  return to;
}

const float* filterCopy(const Call& call, const Part& part, const float* copy, BoxRows rows) {
  const Part windows = windowsOf(part, call);
  const std::int64_t stride = strideOf(windows.width);
  rows.ring = nullptr;
  filterPart(boxPart(call, part, rows, {copy, static_cast<std::ptrdiff_t>(stride * std::int64_t{sizeof(float)})}));
  return copy + windows.height * stride;
}

// The parts of a region larger than the mask.
struct Parts {
  Part top, bottom, left, right, interior;
};
Parts partsOf(const Call& call) {
  const Reach reach = reachOf(call.mask);
  const std::int64_t w = call.size.width;
  const std::int64_t h = call.size.height;
  const std::int64_t left = call.inMemory(ippBorderInMemLeft) ? 0 : reach.left;
  const std::int64_t right = call.inMemory(ippBorderInMemRight) ? 0 : reach.right;
  const std::int64_t top = call.inMemory(ippBorderInMemTop) ? 0 : reach.top;
  const std::int64_t bottom = call.inMemory(ippBorderInMemBottom) ? 0 : reach.bottom;
  const std::int64_t between = h - top - bottom;
  return {{0, 0, w, top},
          {0, h - bottom, w, bottom},
          {0, top, left, between},
          {w - right, top, right, between},
          {left, top, w - left - right, between}};
}

BoxRows fromColumn(BoxRows rows, std::int64_t x) {
  rows.accumulator += x;
  rows.spare += x;
  return rows;
}

// From top to bottom: a part finds the rows in the cache that it shares with the one above. Left, interior and right
// share all of theirs.
void filterApart(const Call& call, const BoxRows& rows, float* lines) {
  const Parts parts = partsOf(call);
  const auto filterWholeRows = [&](const Part& part) {
    if (part.height > 0) filterPart(outerPart(call, part, rows, lines));
  };
  const std::int64_t afterLeft = rowsAtOnce * strideOf(windowsOf(parts.left, call).width);
  const BoxPart<WindowRows> sideBySide[] = {
      outerPart(call, parts.left, rows, lines), innerPart(call, parts.interior, fromColumn(rows, parts.interior.x)),
      outerPart(call, parts.right, fromColumn(rows, parts.right.x), lines + afterLeft)};
  const int hasLeft = parts.left.width > 0 ? 1 : 0;
  const int hasRight = parts.right.width > 0 ? 1 : 0;
  filterWholeRows(parts.top);
  filterBox(sideBySide + 1 - hasLeft, hasLeft + 1 + hasRight);
  filterWholeRows(parts.bottom);
}

void filterInPlace(const Call& call, const BoxRows& rows, float* buffer) {
  const Parts parts = partsOf(call);
  const Part outer[] = {parts.top, parts.bottom, parts.left, parts.right};
  const auto isThere = [](const Part& part) { return part.width > 0 && part.height > 0; };
  float* end = buffer;
  for (const Part& part : outer) {
    if (isThere(part)) end = copyWindows(call, part, end);
  }
  filterPart(innerPart(call, parts.interior, rows));
  const float* copy = buffer;
  for (const Part& part : outer) {
    if (isThere(part)) copy = filterCopy(call, part, copy, rows);
  }
}

bool isBoxBorder(std::uint32_t border) {
  const std::uint32_t kind = border & 15;
  return border == ippBorderInMem ||
         (border <= 255 && (kind == ippBorderRepl || kind == ippBorderMirror || kind == ippBorderConst));
}

IppStatus checkSizes(IppiSize size, IppiSize mask) {
  if (isEmpty(size)) return ippStsSizeErr;
  return isEmpty(mask) ? ippStsMaskSizeErr : ippStsNoErr;
}

// Counts floats up to what a buffer may hold.
class Total {
 public:
  explicit Total(std::int64_t limit) : limit_(limit) {}
  void add(std::int64_t rows, std::int64_t stride) {
    fits_ = fits_ && (rows == 0 || stride <= (limit_ - sum_) / rows);
    if (fits_) sum_ += rows * stride;
  }
  bool fits() const { return fits_; }
  std::int64_t sum() const { return sum_; }

 private:
  std::int64_t limit_;
  std::int64_t sum_ = 0;
  bool fits_ = true;
};

constexpr int alignment = 64;

}  // namespace

// The buffer: accumulator and spare line; then the copy of a small region with its border, or the ring and the copies
// for the outer parts (of which images apart need no more than a few lines). These are largest where all sides (the
// rows of top and bottom) or the other two (the rows of left and right) are in memory.
IppStatus ippiFilterBoxBorderGetBufferSize(IppiSize roiSize, IppiSize maskSize, int dataType, int numChannels,
                                           int* bufferSize) {
  if (isNull(bufferSize)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkSizes(roiSize, maskSize));
  if (dataType != ipp8u && dataType != ipp16u && dataType != ipp16s && dataType != ipp32f) return ippStsDataTypeErr;
  if (numChannels != 1 && numChannels != 3 && numChannels != 4) return ippStsNumChannelsErr;

  const std::int64_t w = roiSize.width;
  const std::int64_t h = roiSize.height;
  const std::int64_t beyondColumns = maskSize.width - 1;
  const std::int64_t beyondRows = maskSize.height - 1;
  const std::int64_t bytes = numChannels * std::int64_t{sizeof(float)};
  Total floats((INT32_MAX - alignment) / bytes);
  floats.add(2, strideOf(w));
  if (w <= maskSize.width || h <= maskSize.height) {
    floats.add(h + beyondRows, strideOf(w + beyondColumns));
  } else {
    const Reach reach = reachOf(maskSize);
    floats.add(maskSize.height, strideOf(w));
    floats.add(3 * beyondRows, strideOf(w + beyondColumns));
    floats.add(h + beyondRows, strideOf(reach.left + beyondColumns) + strideOf(reach.right + beyondColumns));
  }
  if (!floats.fits()) return ippStsSizeTooBigErr;
  *bufferSize = static_cast<int>(floats.sum() * bytes + alignment);
  return ippStsNoErr;
}

IppStatus ippiFilterBoxBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                      IppiSize maskSize, std::uint32_t border, const float* borderValue, void* buffer) {
  if (isNull(src) || isNull(dst) || isNull(buffer)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkSteps(srcStep, dstStep));
  RETURN_UNLESS_OK(checkSizes(roiSize, maskSize));
  if (!isBoxBorder(border)) return ippStsBorderErr;
  const bool isConstant = (border & 15) == ippBorderConst;
  if (isConstant && isNull(borderValue)) return ippStsNullPtrErr;

  if (maskSize.width == 1 && maskSize.height == 1) {
    map(src, srcStep, dst, dstStep, roiSize, [](Floats v) { return v; });
    return ippStsNoErr;
  }
  const Call call = {src, srcStep, dst, dstStep, roiSize, maskSize, border, isConstant ? *borderValue : 0.0F};
  const std::int64_t stride = strideOf(roiSize.width);
  float* const accumulator = static_cast<float*>(alignUp(buffer, alignment));
  float* const spare = accumulator + stride;
  float* const rest = spare + stride;
  const BoxRows rows = {accumulator, spare, call.isInPlace() ? rest : nullptr, static_cast<std::ptrdiff_t>(stride)};
  if (border == ippBorderInMem) {
    filterPart(innerPart(call, {0, 0, roiSize.width, roiSize.height}, rows));
  } else if (call.isSmall()) {
    const Part whole = {0, 0, roiSize.width, roiSize.height};
    copyWindows(call, whole, rest);
    filterCopy(call, whole, rest, rows);
  } else if (call.isInPlace()) {
    filterInPlace(call, rows, rest + maskSize.height * stride);
  } else {
    filterApart(call, rows, rest);
  }
  return ippStsNoErr;
}

}  // namespace ROW
