// Strips so narrow that a ring of rows lies in a near cache, and that whoever calls a run off doesn't wait. In bands of
// rows each would filter the rows around it along once more.

#include "filters/gaussian_strips.h"

#include <algorithm>
#include <atomic>

#include "filters/gaussian_bands.h"
#include "filters/gaussian_kernels.h"
#include "image/row_bands.h"

namespace {

// Of whole cache lines, but for the last strip, which takes the columns that are left.
struct StripCut {
  int width;

  int columns() const { return std::clamp(width / 8 / 16 * 16, 64, 128); }  // eight strips, where that pays
  int count() const { return std::max(width / columns(), 1); }
  int widest() const { return width - columns() * (count() - 1); }
  int widthOf(int strip) const { return strip + 1 < count() ? columns() : widest(); }
};

}  // namespace

void blurInStrips(const KivImage& src, KivImage& dst, float sigma, int multiplier, const IsCalledOff& isCalledOff) {
  if (!(sigma > 0.0F)) return;
  const int reach = gaussianReach(sigma, multiplier);
  if (reach < 1) return;
  const IppiSize size = src.size;
  // Before the taps are worked out: of a kernel whose rows no memory holds there may be a billion.
  if ((2 * std::int64_t{reach} + 2) * rowBytesFor(size.width) > INT32_MAX) throw NO_MEMORY_ERROR();
  const GaussianKernels& kernels = gaussianKernels();
  const Scratch tapBlock = makeScratch((std::int64_t{reach} + 1) * std::int64_t{sizeof(float)});
  auto* const taps = static_cast<float*>(tapBlock.get());
  kernels.makeTaps(taps, reach, sigma);

  const StripCut cut{size.width};
  std::atomic<bool> isOff{false};
  eachBand(cut.count(), 1, kernels.scratchBytes(cut.widest(), reach), [&](int strip, int, void* scratch) {
    if (isOff) return;
    const int left = strip * cut.columns();
    const int width = cut.widthOf(strip);
    kernels.filterStrip({src.At(0, left, 0), src.stride, dst.At(0, left, 0), dst.stride, width, size.height, left,
                         size.width - left - width},
                        taps, reach, scratch);
    if (isCalledOff && isCalledOff(1.0 / cut.count())) isOff = true;
  });
}

double blurInStripsBytes(IppiSize size, float sigma, int multiplier, int threads) {
  const int reach = gaussianReach(sigma, multiplier);
  const double strips = std::min(threads, StripCut{size.width}.count());
  return strips * static_cast<double>(gaussianKernels().scratchBytes(StripCut{size.width}.widest(), reach));
}
