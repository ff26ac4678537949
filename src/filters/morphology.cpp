// Dilation and erosion. A full mask takes the running extremes along rows and then columns; any other mask is
// walked sample by sample.

#include "filters/morphology.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include "filters/morphology_kernels.h"
#include "image/parallel.h"
#include "image/scratch.h"

namespace {

float noneOf(Extreme extreme) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  return extreme == Extreme::largest ? -infinity : infinity;
}

// Samples of a mask before its anchor.
int anchorOf(int side, MaskPlace place) { return place == MaskPlace::anywhere ? (side - 1) / 2 : 0; }

// The part of a mask's side that can reach samples from some output row or column.
struct Window {
  int length = 0;
  int anchor;

  Window(int side, MaskPlace place, int srcLength, int dstLength)
      : anchor(std::min(anchorOf(side, place), dstLength - 1)) {
    length = anchor + std::min(side - 1 - anchorOf(side, place), srcLength - 1) + 1;
  }
  std::int64_t scratchSamples() const { return std::int64_t{length} * stripColumns; }
};

// Rows of one plane.
struct Lines {
  float* first;
  std::ptrdiff_t step;  // in floats
  int count;
};
Lines linesOf(const KivImage& image, int x, int y, int count) { return {image.At(0, x, y), image.stride / 4, count}; }

// The extreme down one strip of columns.
void extremeDownStrip(const Lines& to, const Lines& from, int columns, const Window& window, Extreme extreme,
                      float* suffixes) {
  const MorphologyKernels& kernels = morphologyKernels();
  const auto down = extreme == Extreme::largest ? kernels.largestDown : kernels.smallestDown;
  down({from.first, from.step, from.count, to.first, to.step, to.count, columns, window.length, window.anchor,
        suffixes});
}

// Calls strip(first, length, scratch) for strips of count rows or columns, in parallel, scratch being scratchSamples
// floats of the thread's own.
template <typename Strip>
void eachStrip(int count, std::int64_t scratchSamples, Strip strip) {
  const int strips = count / stripColumns + (count % stripColumns != 0 ? 1 : 0);
  eachShare(std::min(threadsHere(), strips), strips, [&](int, int begin, int end) {
    const Scratch scratch = makeScratch(scratchSamples * std::int64_t{sizeof(float)});
    for (int i = begin; i < end; ++i) {
      const int first = i * stripColumns;
      strip(first, std::min(stripColumns, count - first), static_cast<float*>(scratch.get()));
    }
  });
}

void extremeDownColumns(const KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place) {
  const Window window(side, place, src.size.height, target.size.height);
  eachStrip(target.size.width, window.scratchSamples(), [&](int x, int columns, float* suffixes) {
    extremeDownStrip(linesOf(target, x, 0, target.size.height), linesOf(src, x, 0, src.size.height), columns, window,
                     extreme, suffixes);
  });
}

// As down the columns, on a few rows at a time that are turned for it.
void extremeAlongRows(const KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place) {
  const Window window(side, place, src.size.width, target.size.width);
  constexpr std::ptrdiff_t step = stripColumns;
  constexpr int stepBytes = stripColumns * int{sizeof(float)};
  const std::int64_t turnedSamples = std::int64_t{src.size.width} * step;
  const std::int64_t resultSamples = std::int64_t{target.size.width} * step;
  eachStrip(target.size.height, turnedSamples + resultSamples + window.scratchSamples(),
            [&](int y, int rows, float* turned) {
              float* const result = turned + turnedSamples;
              ippiTranspose_32f_C1R(src.At(0, 0, y), src.stride, turned, stepBytes, {src.size.width, rows});
              extremeDownStrip({result, step, target.size.width}, {turned, step, src.size.width}, rows, window, extreme,
                               result + resultSamples);
              ippiTranspose_32f_C1R(result, stepBytes, target.At(0, 0, y), target.stride, {rows, target.size.width});
            });
}

// Whether none stands among the extremes: where no sample counted, or infinite ones alone.
bool holdsNone(const KivImage& extremes, float none) {
  std::atomic<bool> holds{false};
  eachIndex(extremes.size.height, [&](int y) {
    const float* row = extremes.At(0, 0, y);
    int count = 0;
    for (int x = 0; x < extremes.size.width; ++x) count += row[x] == none ? 1 : 0;
    if (count > 0) holds = true;
  });
  return holds;
}

int middleOf(int side, MaskPlace place) { return place == MaskPlace::anywhere ? 0 : (side - 1) / 2; }

// One plane, target may be src: takeExtremes(target, src), and where no sample counted, the source's own.
template <typename TakeExtremes>
void extremeOfPlane(const KivImage& target, const KivImage& original, int side, Extreme extreme, MaskPlace place,
                    TakeExtremes takeExtremes) {
  KivImage copy;
  if (target.planes[0] == original.planes[0]) copy = original;
  const KivImage& src = copy.channels == 0 ? original : copy;
  takeExtremes(target, src);
  const float none = noneOf(extreme);
  if (!holdsNone(target, none)) return;
  // With one finite value for all that count, infinite samples can be told from none.
  KivImage counting(src.size, 1);
  for (int y = 0; y < src.size.height; ++y) {
    const float* row = src.At(0, 0, y);
    const auto zeroUnlessNan = [](float sample) { return std::isnan(sample) ? sample : 0.0F; };
    std::transform(row, row + src.size.width, counting.At(0, 0, y), zeroUnlessNan);
  }
  const KivImage found(target.size, 1);
  takeExtremes(found, counting);
  const int offset = middleOf(side, place);
  for (int y = 0; y < target.size.height; ++y) {
    float* row = target.At(0, 0, y);
    const float* own = src.At(0, offset, y + offset);
    const float* count = found.At(0, 0, y);
    for (int x = 0; x < target.size.width; ++x) row[x] = count[x] == none ? own[x] : row[x];
  }
}

// One plane under any mask, without the gaps; target isn't src.
void extremeUnderMask(const KivImage& target, const KivImage& src, const unsigned char* mask, int side, Extreme extreme,
                      MaskPlace place) {
  const MorphologyKernels& kernels = morphologyKernels();
  const auto choose = extreme == Extreme::largest ? kernels.largerLine : kernels.smallerLine;
  const int anchor = anchorOf(side, place);
  eachIndex(target.size.height, [&](int y) {
    float* row = target.At(0, 0, y);
    std::fill(row, row + target.size.width, noneOf(extreme));
    for (int j = 0; j < side; ++j) {
      const int sourceY = y - anchor + j;
      if (sourceY < 0 || sourceY >= src.size.height) continue;
      for (int i = 0; i < side; ++i) {
        if (mask[static_cast<std::size_t>(j) * static_cast<std::size_t>(side) + static_cast<std::size_t>(i)] == 0) {
          continue;
        }
        const int shift = i - anchor;  // from a target's column to the source's
        const int first = std::max(0, -shift);
        const int end = std::min(target.size.width, src.size.width - shift);
        if (first < end) choose(row + first, src.At(0, first + shift, sourceY), end - first);
      }
    }
  });
}

// The part of a target that a mask of this side can fill; empty when there is none.
IppiSize filledSize(const KivImage& target, const KivImage& src, int side, MaskPlace place) {
  const int lost = place == MaskPlace::insideOnly ? side - 1 : 0;
  return {std::min(target.size.width, src.size.width - lost), std::min(target.size.height, src.size.height - lost)};
}

void applyMask(KivImage& target, const KivImage& src, const unsigned char* mask, int side, bool insideOnly,
               Extreme extreme) {
  if (side < 1) return;
  const MaskPlace place = insideOnly ? MaskPlace::insideOnly : MaskPlace::anywhere;
  if (target.channels == 0) {
    const int lost = insideOnly ? side - 1 : 0;
    target.Init(src.size.width - lost, src.size.height - lost, src.channels);
  }
  const std::size_t bytes = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
  const bool isFull = std::memchr(mask, 0, bytes) == nullptr;
  const IppiSize filled = filledSize(target, src, side, place);
  if (filled.width < 1 || filled.height < 1) return;
  KivImage corner = target.ROI(0, 0, filled.width, filled.height);
  if (isFull) {
    extremeUnderSquare(corner, src, side, extreme, place);
    return;
  }
  const auto underMask = [&](const KivImage& to, const KivImage& from) {
    extremeUnderMask(to, from, mask, side, extreme, place);
  };
  for (int i = 0; i < corner.channels; ++i)
    extremeOfPlane(corner.Plane(i), src.Plane(i), side, extreme, place, underMask);
}

}  // namespace

void extremeUnderSquare(KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place) {
  const auto underSquare = [&](const KivImage& to, const KivImage& from) {
    const KivImage rows(to.size.width, from.size.height, 1);
    extremeAlongRows(rows, from, side, extreme, place);
    extremeDownColumns(to, rows, side, extreme, place);
  };
  for (int i = 0; i < target.channels; ++i)
    extremeOfPlane(target.Plane(i), src.Plane(i), side, extreme, place, underSquare);
}

void dilate(KivImage& target, const KivImage& src, const unsigned char* mask, int side, bool insideOnly) {
  applyMask(target, src, mask, side, insideOnly, Extreme::largest);
}

void erode(KivImage& target, const KivImage& src, const unsigned char* mask, int side, bool insideOnly) {
  applyMask(target, src, mask, side, insideOnly, Extreme::smallest);
}
