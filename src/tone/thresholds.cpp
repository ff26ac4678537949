// KivImage: clipping thresholds and range stretches, plane by plane on the primitives.

#include "image/kiv_image.h"

void KivImage::Threshold(const KivImage& src, float ltThreshold, float ltValue, float gtThreshold, float gtValue) {
  allocateLike(src);
  for (int i = 0; i < channels; ++i) {
    ippiThreshold_LTValGTVal_32f_C1R(src.planes[i], src.stride, planes[i], stride, size, ltThreshold, ltValue,
                                     gtThreshold, gtValue);
  }
}
void KivImage::Threshold(float ltThreshold, float ltValue, float gtThreshold, float gtValue) {
  Threshold(*this, ltThreshold, ltValue, gtThreshold, gtValue);
}
void KivImage::Threshold_I(float limit) { Threshold(0.0F, 0.0F, limit, limit); }

void KivImage::Threshold_GT(const KivImage& src, float limit) {
  allocateLike(src);
  for (int i = 0; i < channels; ++i) {
    ippiThreshold_GT_32f_C1R(src.planes[i], src.stride, planes[i], stride, size, limit);
  }
}
void KivImage::Threshold_LT(const KivImage& src, float limit) {
  allocateLike(src);
  for (int i = 0; i < channels; ++i) {
    ippiThreshold_LT_32f_C1R(src.planes[i], src.stride, planes[i], stride, size, limit);
  }
}

void KivImage::Stretch_Range(float low, float high) {
  *this -= low;
  *this /= high - low;
}
void KivImage::Stretch_Range() { Stretch_Range(Min(), Max()); }
