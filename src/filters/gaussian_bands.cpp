// One Gaussian specification for all bands of an image.

#include "filters/gaussian_bands.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "image/parallel.h"

namespace {

constexpr int threadCount = 4;
constexpr int bandsPerImage = 8;

// The cut of an image into bands. Each reads its real neighbour rows across its edges, so the cut leaves no trace.
struct BandCut {
  int imageHeight;
  int reach;  // rows that the kernel needs beyond a band

  int bandHeight() const { return std::max((imageHeight + bandsPerImage - 1) / bandsPerImage, reach); }

  // True when too few rows are left under the band for the kernel: it then runs to the last row.
  bool isLast(int band) const { return imageHeight - std::int64_t{bandHeight()} * (band + std::int64_t{1}) < reach; }

  int count() const {
    int band = 0;
    while (!isLast(band)) ++band;
    return band + 1;
  }
};

}  // namespace

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

void blurInBands(const KivImage& src, KivImage& dst, float sigma, int multiplier) {
  if (!(sigma > 0.0F)) return;
  const BandCut cut{src.size.height, gaussianReach(sigma, multiplier)};
  if (cut.reach < 1) return;
  const GaussianBands gaussian(src.size, sigma, multiplier, cut.bandHeight());
  if (!gaussian.isServed()) return;

  const int bandCount = cut.count();
  const Team team(threadCount);
  eachShare(std::min(threadCount, bandCount), bandCount, [&](int, int begin, int end) {
    const Scratch scratch = makeScratch(gaussian.scratchBytes());
    for (int band = begin; band < end; ++band) {
      const int y = band * cut.bandHeight();
      const int height = cut.isLast(band) ? cut.imageHeight - y : cut.bandHeight();
      gaussian.rows(src.At(0, 0, y), src.stride, y, height, dst.At(0, 0, y), dst.stride, scratch.get());
    }
  });
}

double blurInBandsBytes(IppiSize size, float sigma, int multiplier) {
  const BandCut cut{size.height, gaussianReach(sigma, multiplier)};
  if (cut.reach < 1) return 0;
  return threadCount * static_cast<double>(GaussianBands(size, sigma, multiplier, cut.bandHeight()).scratchBytes());
}
