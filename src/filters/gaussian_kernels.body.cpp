// The primitives' own filter, on strips.

#include "filters/gaussian_kernels.h"

#include "primitives/gaussian_ring.h"

namespace ROW {
namespace {

// The rows of the ring: as many as four sums take at once.
std::int64_t ringRows(std::int64_t reach) { return 2 * reach + linesAtOnce; }

void filterStrip(const GaussianStrip& strip, const float* taps, std::int64_t reach, void* scratch) {
  const Band<float> band{strip.src,    strip.srcStep, strip.dst, strip.dstStep, strip.width,
                         strip.height, ippBorderRepl, 0.0F,      strip.before,  strip.behind};
  const RingBuffer buffer = divide(scratch, strip.width, ringRows(reach));
  if (strip.width >= LANES) return filterBandByFours(band, taps, 2 * reach + 1, buffer);
  filterBand<PartnersFirst, PartnersFirst>(band, taps, 2 * reach + 1, buffer);
}

std::int64_t scratchBytes(int width, std::int64_t reach) {
  const std::int64_t rowBytes = ringStride(width) + std::int64_t{sizeof(float*)};
  return ringRows(reach) * rowBytes + (width + 2 * reach) * std::int64_t{sizeof(float)};
}

}  // namespace

extern const GaussianKernels gaussianKernels = {halfKernel, filterStrip, scratchBytes};

}  // namespace ROW
