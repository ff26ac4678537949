// Conversion of three planes between colour spaces.

#include <algorithm>

#include "image/allocate_like.h"
#include "image/scratch.h"
#include "tone/colours.h"

namespace {

using PixelConversion = IppStatus (*)(const float* src, int srcStep, float* dst, int dstStep, IppiSize size);

// The conversion works on interleaved pixels.
void convertPixels(const KivImage& dst, const KivImage& src, PixelConversion convert) {
  // Over the size that both have: beyond it the pixels would hold what memory happened to.
  const IppiSize size = {std::min(dst.size.width, src.size.width), std::min(dst.size.height, src.size.height)};
  std::int32_t step = 0;
  const Scratch block(ippiMalloc_32f_C3(dst.size.width, dst.size.height, &step));
  // Without memory this is null, which all three steps refuse: dst keeps its samples.
  float* const pixels = static_cast<float*>(block.get());
  ippiCopy_32f_P3C3R(src.planes, src.stride, pixels, step, size);
  convert(pixels, step, pixels, step, size);
  ippiCopy_32f_C3P3R(pixels, step, dst.planes, dst.stride, size);
}

}  // namespace

IppStatus twistColours(KivImage& target, const KivImage& src, const float (&twist)[3][4]) {
  allocateLike(target, src);
  return ippiColorTwist_32f_P3R(src.planes, src.stride, target.planes, target.stride, target.size, twist);
}

void rgbToLab(KivImage& target, const KivImage& src) {
  allocateLike(target, src);
  convertPixels(target, src, ippiRGBToLab_32f_C3R);
}

void labToRgb(KivImage& target, const KivImage& src) {
  allocateLike(target, src);
  convertPixels(target, src, ippiLabToRGB_32f_C3R);
}
