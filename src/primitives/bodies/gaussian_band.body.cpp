// Gaussian filter with the border per call, for bands of one image. With taps t[0] ... t[r], t[r] the centre:
//   acc = (a(-r) + a(r)) t[0]; acc = acc + (a(j - r) + a(r - j)) t[j] for j = 1 ... r - 1; acc = acc + a(0) t[r]
// along the rows, then down the columns.

#include "primitives/gaussian_ring.h"

namespace ROW {
namespace {

// Behind it, on the next 64-byte boundary, the r + 1 taps.
struct Head {
  std::int32_t kernelSize;
  std::int32_t tapAlignment;
  std::int32_t dataType;
  std::int32_t border;
  std::int32_t shift;
};
float* tapsOf(void* spec) {
  return reinterpret_cast<float*>(alignUp(static_cast<char*>(spec) + sizeof(Head), ringAlignment));
}
const float* tapsOf(const void* spec) {
  return reinterpret_cast<const float*>(alignUp(static_cast<const char*>(spec) + sizeof(Head), ringAlignment));
}

IppStatus checkSize(std::int64_t width, std::int64_t height) {
  return width < 1 || height < 1 ? ippStsSizeErr : ippStsNoErr;
}

// A buffer holds k + 1 rows of the band and 12 k + 64 bytes: a ring of k rows, their pointers, and an extended row,
// which takes up to 2 r floats more than one of the ring. In strips of about half the width it has room for the three
// more rows of filterBandByFours as well; narrower ones keep their ring in a nearer cache.
constexpr std::int64_t stripWidth = 512;
constexpr std::int64_t narrowest = 128;  // below it, rounding the stride leaves no room

bool areApart(const Band<float>& band) {
  const auto begin = [](const float* p) { return reinterpret_cast<std::uintptr_t>(p); };
  const auto end = [&](const float* p, std::ptrdiff_t step) { return begin(advance(p, band.height * step)); };
  return end(band.src, band.srcStep) <= begin(band.dst) || end(band.dst, band.dstStep) <= begin(band.src);
}

void filterInStrips(const Band<float>& band, const float* taps, std::int64_t k, void* buffer) {
  const std::int64_t fewest = (band.width + stripWidth - 1) / stripWidth;
  const std::int64_t count = fewest > 2 ? fewest : 2;
  // Whole cache lines but for the last strip, which is narrower than the others by less than two of them: each has the
  // columns that a vector takes.
  const auto begin = [&](std::int64_t strip) {
    if (strip == count) return band.width;
    return (band.width / count * strip + band.width % count * strip / count + 15) / 16 * 16;
  };
  for (std::int64_t i = 0; i < count; ++i) {
    Band<float> strip = band;
    strip.before = begin(i);
    strip.src = band.src + strip.before;
    strip.dst = band.dst + strip.before;
    strip.width = begin(i + 1) - strip.before;
    strip.behind = band.width - begin(i + 1);
    filterBandByFours(strip, taps, k, divide(buffer, strip.width, k + linesAtOnce - 1));
  }
}

}  // namespace

IppStatus ippiFilterGaussianGetSpecSize_L(int kernelSize, int dataType, int numChannels, std::int64_t* specSize,
                                          std::int64_t* initBufferSize) {
  if (isNull(specSize) || isNull(initBufferSize)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkKernel(kernelSize, dataType, numChannels));
  *specSize = (std::int64_t{kernelSize} + 1) / 2 * 4 + 128;
  *initBufferSize = 64;
  return ippStsNoErr;
}

IppStatus ippiFilterGaussianInit_L(std::int64_t width, std::int64_t height, int kernelSize, std::uint32_t borderType,
                                   int dataType, int numChannels, void* spec, void* initBuffer, float sigma) {
  if (isNull(spec) || isNull(initBuffer)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkSize(width, height));
  RETURN_UNLESS_OK(checkKernel(kernelSize, dataType, numChannels));
  if (!(sigma > 0.0F)) return ippStsBadArgErr;
  if (!isBorder(borderType)) return ippStsBorderErr;

  store(spec, Head{kernelSize, ringAlignment, dataType, static_cast<std::int32_t>(borderType), 0});
  halfKernel(tapsOf(spec), kernelSize / 2, sigma);
  return ippStsNoErr;
}

IppStatus ippiFilterGaussianGetBufferSize_L(std::int64_t width, std::int64_t height, int kernelSize, int dataType,
                                            std::uint32_t borderType, int numChannels, std::int64_t* bufferSize) {
  if (isNull(bufferSize)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkSize(width, height));
  RETURN_UNLESS_OK(checkKernel(kernelSize, dataType, numChannels));
  if (!isBorder(borderType)) return ippStsBorderErr;

  constexpr std::int64_t widest = INT64_MAX / 3 / std::int64_t{sizeof(float)} - 64;
  if (width > widest) return ippStsSizeTooBigErr;
  const std::int64_t k = kernelSize;
  std::int64_t rows = 0;
  std::int64_t size = 0;
  if (__builtin_mul_overflow(k + 1, ringStride(width * numChannels), &rows)) return ippStsSizeTooBigErr;
  if (__builtin_add_overflow(rows, 12 * k + 64, &size)) return ippStsSizeTooBigErr;
  *bufferSize = size;
  return ippStsNoErr;
}

IppStatus ippiFilterGaussian_32f_C1R_L(const float* src, std::int64_t srcStep, float* dst, std::int64_t dstStep,
                                       std::int64_t width, std::int64_t height, std::uint32_t borderType,
                                       const float* borderValue, const void* spec, void* buffer) {
  if (isNull(src) || isNull(dst) || isNull(spec) || isNull(buffer)) return ippStsNullPtrErr;
  if (srcStep >> 2 < width || dstStep >> 2 < width) return ippStsStepErr;  // step < 4 width, for every width
  RETURN_UNLESS_OK(checkSize(width, height));
  if (srcStep % 4 != 0 || dstStep % 4 != 0) return ippStsNotEvenStepErr;
  if (borderType > 255) return ippStsBorderErr;
  const bool isConstant = (borderType & 15) == ippBorderConst;
  if (isConstant && isNull(borderValue)) return ippStsNullPtrErr;
  if (!isBorder(borderType)) return ippStsBorderErr;
  const std::int64_t k = load<Head>(spec).kernelSize;
  if (!isKernel(k)) return ippStsBadArgErr;

  const Band<float> band{
      src,        static_cast<std::ptrdiff_t>(srcStep), dst, static_cast<std::ptrdiff_t>(dstStep), width, height,
      borderType, isConstant ? *borderValue : 0.0F};
  if (width >= narrowest && areApart(band)) {
    filterInStrips(band, tapsOf(spec), k, buffer);
  } else {
    filterBand<PartnersFirst, PartnersFirst>(band, tapsOf(spec), k, divide(buffer, width, k));
  }
  return ippStsNoErr;
}

}  // namespace ROW
