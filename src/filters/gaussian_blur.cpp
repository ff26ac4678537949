// The separable Gaussian in one piece, on float samples and on integers.

#include "filters/gaussian_blur.h"

#include "filters/gaussian_bands.h"
#include "image/allocate_like.h"
#include "image/scratch.h"

namespace {

// Throws a status other than 0 as an int; a buffer that has no size is memory that can't be had.
void require(IppStatus status) {
  if (status == ippStsSizeTooBigErr) throw NO_MEMORY_ERROR();
  if (status != ippStsNoErr) throw static_cast<int>(status);
}

// The specification and buffer of one filter.
class Gaussian {
 public:
  Gaussian(IppiSize size, int dataType, float sigma, int reach, bool borderIsReplicate) {
    const std::uint32_t kernelSize = 2 * static_cast<std::uint32_t>(reach) + 1;
    constexpr int oneChannel = 1;
    int specSize = 0;
    int bufferSize = 0;
    require(ippiFilterGaussianGetBufferSize(size, kernelSize, dataType, oneChannel, &specSize, &bufferSize));
    spec_ = makeScratch(specSize);
    buffer_ = makeScratch(bufferSize);
    require(ippiFilterGaussianInit(size, kernelSize, borderIsReplicate ? ippBorderRepl : ippBorderInMem, dataType,
                                   oneChannel, spec_.get(), buffer_.get(), sigma));
  }
  const void* spec() const { return spec_.get(); }
  void* buffer() const { return buffer_.get(); }

 private:
  Scratch spec_;
  Scratch buffer_;
};

// What the filter on integer samples is made of.
struct Words {
  using Sample = unsigned short;
  static constexpr int dataType = ipp16u;
  static constexpr auto allocate = ippiMalloc_16u_C1;
  static constexpr auto toIntegers = ippiConvert_32f16u_C1R;
  static constexpr auto filter = ippiFilterGaussianBorder_16u_C1R;
  static constexpr auto toFloats = ippiConvert_16u32f_C1R;
};
struct Bytes {
  using Sample = unsigned char;
  static constexpr int dataType = ipp8u;
  static constexpr auto allocate = ippiMalloc_8u_C1;
  static constexpr auto toIntegers = ippiConvert_32f8u_C1R;
  static constexpr auto filter = ippiFilterGaussianBorder_8u_C1R;
  static constexpr auto toFloats = ippiConvert_8u32f_C1R;
};

template <typename Integers>
void blurIntegers(const KivImage& src, KivImage& dst, float sigma, int kernelMultiplier, bool borderIsReplicate) {
  const IppiSize size = dst.size;
  const int reach = gaussianReach(sigma, kernelMultiplier);
  const Gaussian gaussian(size, Integers::dataType, sigma, reach, borderIsReplicate);

  // Neighbours in memory must be integers too, so they come along.
  const int margin = borderIsReplicate ? 0 : reach;
  const std::int64_t width = size.width + 2 * std::int64_t{margin};
  const std::int64_t height = size.height + 2 * std::int64_t{margin};
  if (width > INT32_MAX || height > INT32_MAX) throw NO_MEMORY_ERROR();
  const IppiSize workSize = {static_cast<int>(width), static_cast<int>(height)};
  int step = 0;
  const Scratch work(Integers::allocate(workSize.width, workSize.height, &step));
  if (work == nullptr) throw NO_MEMORY_ERROR();
  auto* const samples = static_cast<typename Integers::Sample*>(work.get());
  const std::ptrdiff_t rowLength = step / std::ptrdiff_t{sizeof *samples};
  auto* const inner = samples + margin * rowLength + margin;

  for (int i = 0; i < dst.channels; ++i) {
    Integers::toIntegers(src.At(i, -margin, -margin), src.stride, samples, step, workSize, ippRndZero);
    require(Integers::filter(inner, step, inner, step, size, 0, gaussian.spec(), gaussian.buffer()));
    Integers::toFloats(inner, step, dst.planes[i], dst.stride, size);
  }
}

}  // namespace

void gaussianBlur(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate) {
  allocateLike(target, src);
  const Gaussian gaussian(target.size, ipp32f, sigma, gaussianReach(sigma, kernelMultiplier), borderIsReplicate);
  for (int i = 0; i < target.channels; ++i) {
    require(ippiFilterGaussianBorder_32f_C1R(src.planes[i], src.stride, target.planes[i], target.stride, target.size,
                                             0.0F, gaussian.spec(), gaussian.buffer()));
  }
}

void gaussianBlurOfWords(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier,
                         bool borderIsReplicate) {
  allocateLike(target, src);
  blurIntegers<Words>(src, target, sigma, kernelMultiplier, borderIsReplicate);
}

void gaussianBlurOfBytes(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier,
                         bool borderIsReplicate) {
  allocateLike(target, src);
  blurIntegers<Bytes>(src, target, sigma, kernelMultiplier, borderIsReplicate);
}
