// KivImage: blends of two images, on all planes.

#include "image/kiv_image.h"
#include "image/parallel.h"
#include "tone/tone_kernels.h"

void KivImage::OverlayBlend(const KivImage& base, const KivImage& top) {
  allocateLike(base);
  // The target is written last, so that it may be an operand.
  KivImage product(size, channels);
  product = top * 2.0F;
  product *= base;

  KivImage screen(size, channels);
  KivImage mask(size, base.channels);  // first the inverse of base
  screen = top * -1.0F;
  mask = base * -1.0F;
  screen += 1.0F;
  mask += 1.0F;
  screen *= mask;
  screen *= 2.0F;
  screen *= -1.0F;
  screen += 1.0F;

  mask.Threshold(base, 0.5F, 0.0F, 0.5F, 1.0F);  // 0.5 stays 0.5: half of either
  screen *= mask;
  mask *= -1.0F;
  mask += 1.0F;
  product *= mask;
  *this = product + screen;
}

void KivImage::OverlayBlendSSE(const KivImage& base, const KivImage& top) {
  allocateLike(base);
  const auto line = toneKernels().overlayLine;
  // Line by line, since the images' row steps may differ.
  eachIndex(size.height, [&](int y) { line(At(0, 0, y), top.At(0, 0, y), base.At(0, 0, y), size.width); });
}

void KivImage::AlphaCombine(const KivImage& a, const KivImage& b, float weight) {
  if (channels == 0) return;
  ippiAlphaCompC_32f_C1R(a.planes[0], a.stride, b.planes[0], b.stride, planes[0], stride, size, weight, 1.0F,
                         ippAlphaOver);
}
void KivImage::AlphaCombine(const KivImage& b, float weight) { AlphaCombine(*this, b, weight); }

ImageBlendParameters KivImage::Blend_R(const KivImage& second, float amount) const { return {this, &second, amount}; }

ImageOverlayBlendParameters KivImage::OverlayBlend_R(const KivImage& second) const { return {this, &second}; }

KivImage& KivImage::operator=(const ImageBlendParameters& p) {
  allocateLike(*p.first);
  const KivImage* second = p.second;
  KivImage copy;  // the first step overwrites the target
  if (second->planes[0] == planes[0]) {
    copy = *second;
    second = &copy;
  }
  *this = *p.first * 2.0F;
  *this += *second;
  *this -= 1.0F;
  *this *= p.amount;
  KivImage rest;
  rest = *second * (1.0F - p.amount);
  *this += rest;
  return *this;
}

KivImage& KivImage::operator=(const ImageOverlayBlendParameters& p) {
  OverlayBlend(*p.first, *p.second);
  return *this;
}
