// One Gaussian specification for all bands of an image.

#include "filters/gaussian_bands.h"

#include <cmath>
#include <utility>

int gaussianReach(float sigma, int multiplier) {
  const float reach = std::ceil(static_cast<float>(multiplier) * sigma);
  if (!(reach >= 1.0F)) return 0;
  constexpr float largestReach = 1073741823.0F;  // as a float 2^30, whose kernel of 2^31 + 1 taps has no size
  if (reach >= largestReach) throw NO_MEMORY_ERROR();
  return static_cast<int>(reach);
}

GaussianBands::GaussianBands(IppiSize size, float sigma, int multiplier, int mostRows) : size_(size) {
  if (!(sigma > 0.0F)) return;
  const int reach = gaussianReach(sigma, multiplier);
  if (reach < 1) return;
  const int kernelSize = 2 * reach + 1;
  constexpr int oneChannel = 1;

  std::int64_t specSize = 0;
  std::int64_t initBufferSize = 0;
  if (ippiFilterGaussianGetSpecSize_L(kernelSize, ipp32f, oneChannel, &specSize, &initBufferSize) != ippStsNoErr ||
      ippiFilterGaussianGetBufferSize_L(size.width, mostRows, kernelSize, ipp32f, ippBorderRepl, oneChannel,
                                        &scratchBytes_) != ippStsNoErr) {
    return;
  }
  // Before the taps are worked out: of a kernel that no thread can have the rows for there may be a billion.
  if (scratchBytes_ > INT32_MAX) throw NO_MEMORY_ERROR();
  Scratch spec = makeScratch(specSize);
  const Scratch initBuffer = makeScratch(initBufferSize);
  if (ippiFilterGaussianInit_L(size.width, size.height, kernelSize, ippBorderRepl, ipp32f, oneChannel, spec.get(),
                               initBuffer.get(), sigma) == ippStsNoErr) {
    spec_ = std::move(spec);
  }
}

void GaussianBands::rows(const float* src, int srcStep, int y, int count, float* dst, int dstStep,
                         void* scratch) const {
  const bool last = y + count == size_.height;
  const int border = ippBorderRepl | (y > 0 ? ippBorderInMemTop : 0) | (last ? 0 : ippBorderInMemBottom);
  ippiFilterGaussian_32f_C1R_L(src, srcStep, dst, dstStep, size_.width, count, static_cast<std::uint32_t>(border),
                               nullptr, spec_.get(), scratch);
}
