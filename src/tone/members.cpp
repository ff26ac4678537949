// KivImage's members on tone and colour.

#include "tone/blends.h"
#include "tone/colours.h"
#include "tone/curves.h"

void KivImage::ApplyGammaCurve(const KivImage& src, float gamma) { gammaCurve(*this, src, gamma); }
void KivImage::ApplyGammaCurve(float gamma) { gammaCurve(*this, *this, gamma); }

void KivImage::SigmoidalCurve(const KivImage& src, float slope, float midpoint) {
  sigmoidalCurve(*this, src, slope, midpoint);
}
void KivImage::SigmoidalCurve(float slope, float midpoint) { sigmoidalCurve(*this, *this, slope, midpoint); }

void KivImage::SigmoidalCurve2(const KivImage& src, float slope, float low, float high) {
  sigmoidalCurveThrough(*this, src, slope, low, high);
}
void KivImage::SigmoidalCurve2(float slope, float low, float high) {
  sigmoidalCurveThrough(*this, *this, slope, low, high);
}

void KivImage::Sigmoidal_Contrast(const KivImage& src, float contrast) { sigmoidalContrast(*this, src, contrast); }
void KivImage::Sigmoidal_Contrast(float contrast) { sigmoidalContrast(*this, *this, contrast); }

void KivImage::Threshold(const KivImage& src, float ltThreshold, float ltValue, float gtThreshold, float gtValue) {
  applyThresholds(*this, src, ltThreshold, ltValue, gtThreshold, gtValue);
}
void KivImage::Threshold(float ltThreshold, float ltValue, float gtThreshold, float gtValue) {
  applyThresholds(*this, *this, ltThreshold, ltValue, gtThreshold, gtValue);
}
void KivImage::Threshold_I(float limit) { limitToRange(*this, limit); }
void KivImage::Threshold_GT(const KivImage& src, float limit) { limitAbove(*this, src, limit); }
void KivImage::Threshold_LT(const KivImage& src, float limit) { limitBelow(*this, src, limit); }

void KivImage::Stretch_Range(float low, float high) { stretchRange(*this, low, high); }
void KivImage::Stretch_Range() { stretchRange(*this, Min(), Max()); }

void KivImage::Apply_Lut(float* table, int count) { applyTable(*this, table, count); }
void KivImage::ApplyLut(KivImage&, float*, float*, int) {}

IppStatus KivImage::Color_Twist(const KivImage& src, const float (&twist)[3][4]) {
  return twistColours(*this, src, twist);
}
IppStatus KivImage::Color_Twist(const float (&twist)[3][4]) { return twistColours(*this, *this, twist); }

void KivImage::ColorToGraySSE(const KivImage& src, float r, float g, float b) {
  const float weights[] = {r, g, b};
  colourToGrey(*this, src, weights);
}
void KivImage::ColorToGraySSE(const KivImage& src, float* weights) { colourToGrey(*this, src, weights); }
void KivImage::ConvertRgbToLSSE(const KivImage& src) { rgbToLightness(*this, src); }

void KivImage::Convert_RGB_to_LAB(const KivImage& src) { rgbToLab(*this, src); }
void KivImage::Convert_RGB_to_LAB() { rgbToLab(*this, *this); }
void KivImage::Convert_LAB_To_RGB(const KivImage& src) { labToRgb(*this, src); }
void KivImage::Convert_LAB_To_RGB() { labToRgb(*this, *this); }

void KivImage::Delta_E(const KivImage& lab, float* reference, float* weights) {
  colourDifference(*this, lab, reference, weights);
}
void KivImage::Delta_E(float* reference, float* weights) { colourDifference(*this, *this, reference, weights); }

void KivImage::OverlayBlend(const KivImage& base, const KivImage& top) { overlayBlend(*this, base, top); }
void KivImage::OverlayBlendSSE(const KivImage& base, const KivImage& top) { overlayBlendPlane0(*this, base, top); }

void KivImage::AlphaCombine(const KivImage& a, const KivImage& b, float weight) { alphaCombine(*this, a, b, weight); }
void KivImage::AlphaCombine(const KivImage& b, float weight) { alphaCombine(*this, *this, b, weight); }

void KivImage::ApplyTonalMask(const KivImage& base, const KivImage& filtered, float shadows, float midtones,
                              float highlights) {
  applyTonalMask(*this, base, filtered, shadows, midtones, highlights);
}

ImageBlendParameters KivImage::Blend_R(const KivImage& second, float amount) const { return {this, &second, amount}; }
ImageOverlayBlendParameters KivImage::OverlayBlend_R(const KivImage& second) const { return {this, &second}; }
KivImage& KivImage::operator=(const ImageBlendParameters& p) {
  linearLightBlend(*this, *p.first, *p.second, p.amount);
  return *this;
}
KivImage& KivImage::operator=(const ImageOverlayBlendParameters& p) {
  overlayBlend(*this, *p.first, *p.second);
  return *this;
}
