// KivImage: dilation and erosion. A full mask takes the running extremes along rows and then columns; any other mask is
// walked sample by sample.

#include "filters/morphology.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>

#include "filters/morphology_kernels.h"
#include "image/scratch.h"

namespace {

float noneOf(Extreme extreme) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  return extreme == Extreme::largest ? -infinity : infinity;
}

// Samples of a mask before its anchor.
int anchorOf(int side, MaskPlace place) { return place == MaskPlace::anywhere ? (side - 1) / 2 : 0; }

// The extreme down the columns of one plane, strips of columns in parallel.
void extremeDownColumns(const KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place) {
  const MorphologyKernels& kernels = morphologyKernels();
  const auto down = extreme == Extreme::largest ? kernels.largestDown : kernels.smallestDown;
  // What reaches past the image from every output row needn't be walked.
  const int anchor = std::min(anchorOf(side, place), target.size.height - 1);
  const int below = std::min(side - 1 - anchorOf(side, place), src.size.height - 1);
  const int window = anchor + below + 1;
  const int columns = target.size.width;
  const int strips = (columns + stripColumns - 1) / stripColumns;
  std::atomic<bool> outOfMemory{false};
#pragma omp parallel
  {
    const Scratch suffixes = tryScratch(std::int64_t{window} * stripColumns * std::int64_t{sizeof(float)});
    if (suffixes == nullptr) outOfMemory = true;
#pragma omp for schedule(static)
    for (int strip = 0; strip < strips; ++strip) {
      if (suffixes == nullptr) continue;
      const int x = strip * stripColumns;
      down({src.At(0, x, 0), src.stride / 4, src.size.height, target.At(0, x, 0), target.stride / 4, target.size.height,
            std::min(stripColumns, columns - x), window, anchor, static_cast<float*>(suffixes.get())});
    }
  }
  if (outOfMemory) throw NO_MEMORY_ERROR();
}

// Where no sample counted, the source's own.
void fillGaps(const KivImage& target, const KivImage& src, int offset, Extreme extreme) {
  const float none = noneOf(extreme);
#pragma omp parallel for schedule(static)
  for (int y = 0; y < target.size.height; ++y) {
    float* row = target.At(0, 0, y);
    const float* own = src.At(0, offset, y + offset);
    for (int x = 0; x < target.size.width; ++x) row[x] = row[x] == none ? own[x] : row[x];
  }
}

int middleOf(int side, MaskPlace place) { return place == MaskPlace::anywhere ? 0 : (side - 1) / 2; }

// One plane under any mask; target isn't src.
void extremeUnderMask(const KivImage& target, const KivImage& src, const unsigned char* mask, int side, Extreme extreme,
                      MaskPlace place) {
  const MorphologyKernels& kernels = morphologyKernels();
  const auto choose = extreme == Extreme::largest ? kernels.largerLine : kernels.smallerLine;
  const int anchor = anchorOf(side, place);
#pragma omp parallel for schedule(static)
  for (int y = 0; y < target.size.height; ++y) {
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
  }
  fillGaps(target, src, middleOf(side, place), extreme);
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
  for (int i = 0; i < corner.channels; ++i) {
    KivImage copy;
    if (corner.planes[i] == src.planes[i]) copy = src.Plane(i);
    extremeUnderMask(corner.Plane(i), copy.channels == 0 ? src.Plane(i) : copy.Plane(0), mask, side, extreme, place);
  }
}

}  // namespace

void extremeUnderSquare(KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place) {
  for (int i = 0; i < target.channels; ++i) {
    const KivImage from = src.Plane(i);
    const KivImage to = target.Plane(i);
    // Along the rows as down the columns of the transposed plane.
    KivImage turned;
    turned.Transpose(from);
    KivImage wide(turned.size.width, to.size.width, 1);
    extremeDownColumns(wide, turned, side, extreme, place);
    KivImage rows;
    rows.Transpose(wide);
    const bool inPlace = to.planes[0] == from.planes[0];
    KivImage own;
    if (inPlace) own = from;
    extremeDownColumns(to, rows, side, extreme, place);
    fillGaps(to, inPlace ? own.Plane(0) : from.Plane(0), middleOf(side, place), extreme);
  }
}

void KivImage::Dilate(const KivImage& src, unsigned char* mask, int side, bool insideOnly) {
  applyMask(*this, src, mask, side, insideOnly, Extreme::largest);
}

void KivImage::Erode(const KivImage& src, unsigned char* mask, int side, bool insideOnly) {
  applyMask(*this, src, mask, side, insideOnly, Extreme::smallest);
}

ImageDilateParameters KivImage::Dilate_R(unsigned char* mask, int side) const { return {this, mask, side}; }
ImageErodeParameters KivImage::Erode_R(unsigned char* mask, int side) const { return {this, mask, side}; }

KivImage& KivImage::operator=(const ImageDilateParameters& p) {
  Dilate(*p.image, p.mask, p.size, false);
  return *this;
}

KivImage& KivImage::operator=(const ImageErodeParameters& p) {
  Erode(*p.image, p.mask, p.size, false);
  return *this;
}
