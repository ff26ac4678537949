// Gaussian filter with the border in its specification: sums over the taps in ascending order, along the rows, then
// down the columns. A row filter of seven symmetric taps adds partners first where samples are floats.

#include "primitives/gaussian_ring.h"

namespace ROW {
namespace {

using Head = IppFilterGaussianSpec;

char* tapsOf(void* spec) { return alignUp(static_cast<char*>(spec) + sizeof(Head), 16); }
const char* tapsOf(const void* spec) { return alignUp(static_cast<const char*>(spec) + sizeof(Head), 16); }

int shiftOf(int dataType) { return dataType == ipp32f ? 0 : dataType == ipp8u ? 12 : 15; }

constexpr int typeOf(const float*) { return ipp32f; }
constexpr int typeOf(const std::uint16_t*) { return ipp16u; }
constexpr int typeOf(const std::uint8_t*) { return ipp8u; }

// The taps as the engine takes them: floats, integer taps divided by their scale.
void unpackTaps(const void* spec, const Head& head, float* taps) {
  const char* const from = tapsOf(spec);
  for (int i = 0; i < head.kernelSize; ++i) {
    if (head.dataType == ipp32f) {
      taps[i] = load<float>(from + i * std::ptrdiff_t{16});
    } else {
      taps[i] = load<std::uint16_t>(from + i * std::ptrdiff_t{2}) / static_cast<float>(1 << head.shift);
    }
  }
}

bool isSymmetricSeven(const float* taps, int k) {
  return k == 7 && taps[0] == taps[6] && taps[1] == taps[5] && taps[2] == taps[4];
}

// Bytes of a row of the ring.
std::int64_t ringStride(std::int64_t width, std::int64_t k, int numChannels) {
  return roundUp((width + k) * numChannels, std::int64_t{8}) * std::int64_t{sizeof(float)};
}

template <typename Sample>
IppStatus filter(const Sample* src, int srcStep, Sample* dst, int dstStep, IppiSize size, Sample borderValue,
                 const void* spec, void* buffer) {
  if (isNull(src) || isNull(dst) || isNull(spec) || isNull(buffer)) return ippStsNullPtrErr;
  const std::int64_t rowBytes = size.width * std::int64_t{sizeof(Sample)};
  if (srcStep < rowBytes || dstStep < rowBytes) return ippStsStepErr;
  if (isEmpty(size)) return ippStsSizeErr;
  if (sizeof(Sample) == 4 && (srcStep % 4 != 0 || dstStep % 4 != 0)) return ippStsNotEvenStepErr;
  const Head head = load<Head>(spec);
  const auto border = static_cast<std::uint32_t>(head.border);
  if (!isBorder(border)) return ippStsBorderErr;
  if (!isKernel(head.kernelSize)) return ippStsBadArgErr;
  if (head.dataType != typeOf(src)) return ippStsContextMatchErr;

  const std::int64_t k = head.kernelSize;
  const std::int64_t stride = ringStride(size.width, k, 1);
  char* const ring = alignUp(static_cast<char*>(buffer), 64);
  char* const extended = ring + k * stride;
  char* const rows = extended + stride;
  char* const taps = rows + k * std::int64_t{sizeof(float*)};
  const RingBuffer parts{reinterpret_cast<float*>(ring), stride / std::int64_t{sizeof(float)},
                         reinterpret_cast<const float**>(rows), reinterpret_cast<float*>(extended)};
  float* const kernel = reinterpret_cast<float*>(taps);
  unpackTaps(spec, head, kernel);

  const Band<Sample> band{src, srcStep, dst, dstStep, size.width, size.height, border, borderValue};
  if (sizeof(Sample) == 4 && isSymmetricSeven(kernel, head.kernelSize)) {
    filterBand<PartnersFirst, Ascending>(band, kernel, k, parts);
  } else {
    filterBand<Ascending, Ascending>(band, kernel, k, parts);
  }
  return ippStsNoErr;
}

}  // namespace

// The buffer: k + min(height, k) rows of the ring, k rows more, and for each tap a pointer and a float.
IppStatus ippiFilterGaussianGetBufferSize(IppiSize roiSize, std::uint32_t kernelSize, int dataType, int numChannels,
                                          int* specSize, int* bufferSize) {
  if (isNull(specSize) || isNull(bufferSize)) return ippStsNullPtrErr;
  if (isEmpty(roiSize)) return ippStsSizeErr;
  RETURN_UNLESS_OK(checkKernel(kernelSize, dataType, numChannels));

  const std::int64_t k = kernelSize;
  const std::int64_t forSpec = dataType == ipp32f ? 16 * k + 32 : 8 * k + 36;
  if (forSpec > INT32_MAX) return ippStsSizeTooBigErr;
  const std::int64_t rows = 2 * k + (roiSize.height < k ? roiSize.height : k);
  const std::int64_t rest = 16 * k + 64;
  const std::int64_t stride = ringStride(roiSize.width, k, numChannels);
  if (stride > (INT32_MAX - rest) / rows) return ippStsSizeTooBigErr;
  *specSize = static_cast<int>(forSpec);
  *bufferSize = static_cast<int>(rows * stride + rest);
  return ippStsNoErr;
}

IppStatus ippiFilterGaussianInit(IppiSize roiSize, std::uint32_t kernelSize, std::uint32_t borderType, int dataType,
                                 int numChannels, void* spec, void* buffer, float sigma) {
  if (isNull(spec) || isNull(buffer)) return ippStsNullPtrErr;
  if (isEmpty(roiSize)) return ippStsSizeErr;
  RETURN_UNLESS_OK(checkKernel(kernelSize, dataType, numChannels));
  if (!(sigma > 0.0F)) return ippStsBadArgErr;
  if (!isBorder(borderType)) return ippStsBorderErr;
  if (kernelSize > INT32_MAX) return ippStsSizeTooBigErr;  // no query gives a size for it, and no head could hold it

  const int k = static_cast<int>(kernelSize);
  const int shift = shiftOf(dataType);
  store(spec, Head{k, sizeof(Head), dataType, static_cast<std::int32_t>(borderType), shift});
  float* const weights = reinterpret_cast<float*>(alignUp(static_cast<char*>(buffer), 64));
  const float divisor = sigma * (sigma + sigma);
  float sum = 0.0F;
  for (int i = 0; i < k; ++i) {
    weights[i] = gaussianWeight(static_cast<float>(i - k / 2), divisor);
    sum = sum + weights[i];
  }
  char* const taps = tapsOf(spec);
  const auto scale = static_cast<float>(1 << shift);
  for (int i = 0; i < k; ++i) {
    const float tap = weights[i] / sum;
    if (dataType == ipp32f) {
      store(taps + i * std::ptrdiff_t{16}, tap - Floats4{});
    } else {
      const double scaled = static_cast<double>(tap * scale) + 0.5;
      store(taps + i * std::ptrdiff_t{2}, static_cast<std::uint16_t>(scaled));
    }
  }
  return ippStsNoErr;
}

IppStatus ippiFilterGaussianBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize,
                                           float borderValue, const void* spec, void* buffer) {
  return filter(src, srcStep, dst, dstStep, roiSize, borderValue, spec, buffer);
}
IppStatus ippiFilterGaussianBorder_16u_C1R(const unsigned short* src, int srcStep, unsigned short* dst, int dstStep,
                                           IppiSize roiSize, unsigned short borderValue, const void* spec,
                                           void* buffer) {
  return filter(src, srcStep, dst, dstStep, roiSize, borderValue, spec, buffer);
}
IppStatus ippiFilterGaussianBorder_8u_C1R(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                                          IppiSize roiSize, unsigned char borderValue, const void* spec, void* buffer) {
  return filter(src, srcStep, dst, dstStep, roiSize, borderValue, spec, buffer);
}

}  // namespace ROW
