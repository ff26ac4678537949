// KivImage's members over neighbourhoods.

#include "filters/box_blur.h"
#include "filters/detail.h"
#include "filters/gaussian_blur.h"
#include "filters/local_contrast.h"
#include "filters/morphology.h"
#include "filters/tap_filter.h"
#include "image/allocate_like.h"

void KivImage::Box_Blur(const KivImage& src, int radius) { boxBlur(*this, src, radius); }
void KivImage::ApplyBoxFilter(const KivImage& src, int radius, KivBorderType border, float borderValue,
                              bool divideByArea) {
  boxBlurWithBorder(*this, src, radius, border, borderValue, divideByArea);
}

void KivImage::Filter(const KivImage& src, const Kernel& kernel, int passes) {
  separableFilter(*this, src, kernel, passes);
}
void KivImage::Filter_With_Pad(const KivImage& src, const Kernel& kernel) {
  separableFilterWithPadding(*this, src, kernel);
}

void KivImage::GaussBlurFast(const KivImage& src, float sigma, int factor) {
  gaussianBlurFast(*this, src, sigma, factor);
}
void KivImage::GaussBlurDecimate(const KivImage& src, float sigma, int kernelMultiplier) {
  gaussianBlurDecimated(*this, src, sigma, kernelMultiplier);
}
void KivImage::Gauss_Blur(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate) {
  gaussianBlur(*this, src, sigma, kernelMultiplier, borderIsReplicate);
}
void KivImage::GaussBlur16(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate) {
  gaussianBlurOfWords(*this, src, sigma, kernelMultiplier, borderIsReplicate);
}
void KivImage::GaussBlur8(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate) {
  gaussianBlurOfBytes(*this, src, sigma, kernelMultiplier, borderIsReplicate);
}
void KivImage::Gaussian_Box_Blur(const KivImage& src, float sigma, int passes) {
  gaussianBlurByBoxes(*this, src, sigma, passes);
}
void KivImage::Gaussian_IIR_Blur(const KivImage& src, double sigma) { gaussianBlurRecursive(*this, src, sigma); }
void KivImage::GaussBlurSSE(const KivImage& src, KivImage& scratch, float, int) {
  allocateLike(*this, src);
  allocateLike(scratch, src);
}

void KivImage::HighPassFilter(const KivImage& src, float sigma, bool) { highPassHalfStrength(*this, src, sigma); }
void KivImage::HighPassPS(const KivImage& src, float sigma, int kernelMultiplier) {
  highPassFullStrength(*this, src, sigma, kernelMultiplier);
}
void KivImage::UsmPS(const KivImage& src, float amount, float sigma, float threshold) {
  unsharpMask(*this, src, amount, sigma, threshold);
}

void KivImage::Dilate(const KivImage& src, unsigned char* mask, int side, bool insideOnly) {
  dilate(*this, src, mask, side, insideOnly);
}
void KivImage::Erode(const KivImage& src, unsigned char* mask, int side, bool insideOnly) {
  erode(*this, src, mask, side, insideOnly);
}
ImageDilateParameters KivImage::Dilate_R(unsigned char* mask, int side) const { return {this, mask, side}; }
ImageErodeParameters KivImage::Erode_R(unsigned char* mask, int side) const { return {this, mask, side}; }
KivImage& KivImage::operator=(const ImageDilateParameters& p) {
  dilate(*this, *p.image, p.mask, p.size, false);
  return *this;
}
KivImage& KivImage::operator=(const ImageErodeParameters& p) {
  erode(*this, *p.image, p.mask, p.size, false);
  return *this;
}

void KivImage::LocalAutoLevels(const KivImage& src, int radius, bool detailOverlay) {
  localAutoLevels(*this, src, radius, detailOverlay);
}
void KivImage::LocalAutoLevelsOld(const KivImage& src, int radius, bool detailOverlay) {
  localAutoLevelsStepwise(*this, src, radius, detailOverlay);
}
void KivImage::ApplyLocalContrast(const KivImage& src, float radius1, float amount1, float radius2, float amount2) {
  localContrast(*this, src, radius1, amount1, radius2, amount2);
}
void KivImage::ApplyLocalLinearFilter(const KivImage& src, int radius, float eps) {
  localLinearFilter(*this, src, radius, eps);
}
