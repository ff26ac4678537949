#include "equalizer/plane_reduction.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "equalizer/progress.h"
#include "image/row_bands.h"

namespace {

constexpr int bandRows = 8;  // of the reduced planes

// A line's colours and luminance, and the sums of each plane.
constexpr int rowsOfScratch = mostColours + 1 + mostColours;

}  // namespace

PlaneReduction::PlaneReduction(IppiSize picture, IppiSize to, const Planes& planes)
    : picture_(picture),
      planes_(planes),
      across_(picture.width, to.width),
      down_(picture.height, to.height),
      reduced_(to, planes.count()),
      begun_(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(planes.count())),
      next_(begun_.size()) {}

void PlaneReduction::add(const PlaneLines& lines, int count, Progress* progress) {
  const int rowBytes = rowBytesFor(picture_.width);
  const auto lineOfPlane = [&](int plane) {
    return static_cast<std::size_t>(plane) * static_cast<std::size_t>(picture_.width);
  };
  const auto lineBytes = static_cast<std::size_t>(picture_.width) * sizeof(float);
  const int end = added_ + count;
  const int firstReduced = down_.firstWith(added_);
  const int endReduced = down_.firstWith(end - 1) + 1;
  // The last line may lie in two reduced lines.
  const int lastReduced =
      endReduced < reduced_.size.height && down_.first(endReduced) < end ? endReduced + 1 : endReduced;
  eachBand(lastReduced - firstReduced, bandRows, std::int64_t{rowsOfScratch} * rowBytes,
           [&](int firstOfBand, int countOfBand, void* scratch) {
             std::array<float*, rowsOfScratch> rows{};
             for (int i = 0; i < rowsOfScratch; ++i) {
               rows[static_cast<std::size_t>(i)] = floatsAt(scratch, std::int64_t{i} * rowBytes);
             }
             float* const* const colours = rows.data();
             float* const luminance = rows[mostColours];
             float* const* const sums = &rows[mostColours + 1];
             if (progress != nullptr && progress->isCancelled()) return;
             int read = -1;
             for (int i = firstReduced + firstOfBand; i < firstReduced + firstOfBand + countOfBand; ++i) {
               const int from = std::max(down_.first(i), added_);
               const int to = std::min(down_.end(i), end);
               for (int y = from; y < to; ++y) {
                 if (y != read) lines.read(y - added_, colours, luminance);
                 read = y;
                 for (int plane = 0; plane < planes_.count(); ++plane) {
                   float* const sum = sums[plane];
                   if (y == from && y != down_.first(i)) std::memcpy(sum, &begun_[lineOfPlane(plane)], lineBytes);
                   down_.addLine(i, y, lines.plane(plane, colours, luminance), picture_.width, sum);
                 }
               }
               for (int plane = 0; plane < planes_.count(); ++plane) {
                 if (to < down_.end(i)) {
                   std::memcpy(&next_[lineOfPlane(plane)], sums[plane], lineBytes);
                 } else {
                   across_.reduce(sums[plane], 0, reduced_.size.width, reduced_.At(plane, 0, i));
                 }
               }
             }
             if (progress != nullptr) {
               progress->add(linesWork({picture_.width, count}) * countOfBand / (lastReduced - firstReduced));
             }
           });
  std::swap(begun_, next_);
  added_ = end;
  if (progress != nullptr) progress->check();
}

double PlaneReduction::bytesOf(IppiSize picture, const Planes& planes, int threads) {
  const double row = rowBytesFor(picture.width);
  const double tables = 2.0 * sizeof(float) * (static_cast<double>(picture.width) + picture.height);
  return (threads * rowsOfScratch + 2 * planes.count()) * row + tables;
}
