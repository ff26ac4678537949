// The local linear filter, an image smoothed by itself.

#include <algorithm>

#include "filters/box_blur.h"
#include "filters/local_contrast.h"

void localLinearFilter(KivImage& target, const KivImage& src, int radius, float eps) {
  const int r = std::max(radius, 0);
  KivImage boxMean(src.size, src.channels);
  KivImage second;
  KivImage work;
  boxBlur(boxMean, src, r);
  second = src * src;
  boxBlur(work, second, r);
  second = boxMean * boxMean;
  work -= second;  // the window's variance
  second = work + eps;
  work = work / second;  // a
  boxBlur(second, work, r);
  target = second * src;
  work = work * -1.0F;
  work += 1.0F;
  work *= boxMean;  // (1 - a) * mean
  boxBlur(work, work, r);
  target += work;
}
