// A mix of two images by how dark or light the first is; and the same on one plane in one pass is in
// blend_kernels.

#include "image/allocate_like.h"
#include "tone/blends.h"
#include "tone/curves.h"

namespace {

KivImage luminance(const KivImage& base, IppiSize size) {
  KivImage luma(size, 1);
  if (base.channels != 3) {
    luma = base.Plane(0);
    return luma;
  }
  constexpr float weights[] = {0.299F, 0.587F, 0.114F};
  KivImage part(size, 1);
  luma = base.Plane(0) * weights[0];
  part = base.Plane(1) * weights[1];
  luma += part;
  part = base.Plane(2) * weights[2];
  luma += part;
  return luma;
}

void copyToEachPlane(KivImage& image, const KivImage& plane) {
  for (int i = 0; i < image.channels; ++i) image.Plane(i).Copy(plane);
}

}  // namespace

void applyTonalMask(KivImage& target, const KivImage& base, const KivImage& filtered, float shadows, float midtones,
                    float highlights) {
  allocateLike(target, base);
  KivImage dark(target.size, 1);
  KivImage light(target.size, 1);
  dark = luminance(base, target.size) * 2.0F;
  light = dark;
  dark *= -1.0F;
  dark += 1.0F;
  limitBelow(dark, dark, 0.0F);
  light -= 1.0F;
  limitBelow(light, light, 0.0F);
  KivImage middle;
  middle = dark + light;
  middle -= 1.0F;
  middle *= -midtones;

  KivImage& weight = dark;
  weight *= shadows;
  light *= highlights;
  weight += light;
  weight += middle;
  limitToRange(weight, 1.0F);
  KivImage rest;
  rest = weight * -1.0F;
  rest += 1.0F;

  // The target is written last, so that it may be an operand.
  KivImage mixed(target.size, target.channels);
  copyToEachPlane(mixed, weight);
  mixed *= filtered;
  KivImage kept(target.size, target.channels);
  copyToEachPlane(kept, rest);
  kept *= base;
  target = mixed + kept;
}
