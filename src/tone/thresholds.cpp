// Clipping thresholds and range stretches, plane by plane on the primitives.

#include "image/allocate_like.h"
#include "tone/curves.h"

void applyThresholds(KivImage& target, const KivImage& src, float ltThreshold, float ltValue, float gtThreshold,
                     float gtValue) {
  allocateLike(target, src);
  for (int i = 0; i < target.channels; ++i) {
    ippiThreshold_LTValGTVal_32f_C1R(src.planes[i], src.stride, target.planes[i], target.stride, target.size,
                                     ltThreshold, ltValue, gtThreshold, gtValue);
  }
}
void limitToRange(KivImage& target, float limit) { applyThresholds(target, target, 0.0F, 0.0F, limit, limit); }

void limitAbove(KivImage& target, const KivImage& src, float limit) {
  allocateLike(target, src);
  for (int i = 0; i < target.channels; ++i) {
    ippiThreshold_GT_32f_C1R(src.planes[i], src.stride, target.planes[i], target.stride, target.size, limit);
  }
}
void limitBelow(KivImage& target, const KivImage& src, float limit) {
  allocateLike(target, src);
  for (int i = 0; i < target.channels; ++i) {
    ippiThreshold_LT_32f_C1R(src.planes[i], src.stride, target.planes[i], target.stride, target.size, limit);
  }
}

void stretchRange(KivImage& target, float low, float high) {
  target -= low;
  target /= high - low;
}
