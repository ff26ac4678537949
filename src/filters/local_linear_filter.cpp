// KivImage: the local linear filter, an image smoothed by itself.

#include <algorithm>

#include "image/kiv_image.h"

void KivImage::ApplyLocalLinearFilter(const KivImage& src, int radius, float eps) {
  const int r = std::max(radius, 0);
  KivImage boxMean(src.size, src.channels);
  KivImage second;
  KivImage work;
  boxMean.Box_Blur(src, r);
  second = src * src;
  work.Box_Blur(second, r);
  second = boxMean * boxMean;
  work -= second;  // the window's variance
  second = work + eps;
  work = work / second;  // a
  second.Box_Blur(work, r);
  *this = second * src;
  work = work * -1.0F;
  work += 1.0F;
  work *= boxMean;  // (1 - a) * mean
  work.Box_Blur(work, r);
  *this += work;
}
