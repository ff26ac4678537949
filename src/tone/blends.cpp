// Blends of two images.

#include "tone/blends.h"

#include "image/allocate_like.h"
#include "image/parallel.h"
#include "tone/curves.h"
#include "tone/tone_kernels.h"

void overlayBlend(KivImage& target, const KivImage& base, const KivImage& top) {
  allocateLike(target, base);
  // The target is written last, so that it may be an operand.
  KivImage product(target.size, target.channels);
  product = top * 2.0F;
  product *= base;

  KivImage screen(target.size, target.channels);
  KivImage mask(target.size, base.channels);  // first the inverse of base
  screen = top * -1.0F;
  mask = base * -1.0F;
  screen += 1.0F;
  mask += 1.0F;
  screen *= mask;
  screen *= 2.0F;
  screen *= -1.0F;
  screen += 1.0F;

  applyThresholds(mask, base, 0.5F, 0.0F, 0.5F, 1.0F);  // 0.5 stays 0.5: half of either
  screen *= mask;
  mask *= -1.0F;
  mask += 1.0F;
  product *= mask;
  target = product + screen;
}

void overlayBlendPlane0(KivImage& target, const KivImage& base, const KivImage& top) {
  allocateLike(target, base);
  const auto line = toneKernels().overlayLine;
  // Line by line, since the images' row steps may differ.
  eachIndex(target.size.height,
            [&](int y) { line(target.At(0, 0, y), top.At(0, 0, y), base.At(0, 0, y), target.size.width); });
}

void alphaCombine(KivImage& target, const KivImage& a, const KivImage& b, float weight) {
  if (target.channels == 0) return;
  ippiAlphaCompC_32f_C1R(a.planes[0], a.stride, b.planes[0], b.stride, target.planes[0], target.stride, target.size,
                         weight, 1.0F, ippAlphaOver);
}

void linearLightBlend(KivImage& target, const KivImage& first, const KivImage& second, float amount) {
  allocateLike(target, first);
  const bool isTarget = second.planes[0] == target.planes[0];
  KivImage copy;  // the first step overwrites the target
  if (isTarget) copy = second;
  const KivImage& below = isTarget ? copy : second;
  target = first * 2.0F;
  target += below;
  target -= 1.0F;
  target *= amount;
  KivImage rest;
  rest = below * (1.0F - amount);
  target += rest;
}
