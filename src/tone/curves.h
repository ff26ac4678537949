// Tone curves, thresholds and stretches of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// ApplyGammaCurve
void gammaCurve(KivImage& target, const KivImage& src, float gamma);
// SigmoidalCurve, SigmoidalCurve2 and Sigmoidal_Contrast
void sigmoidalCurve(KivImage& target, const KivImage& src, float slope, float midpoint);
void sigmoidalCurveThrough(KivImage& target, const KivImage& src, float slope, float low, float high);
void sigmoidalContrast(KivImage& target, const KivImage& src, float contrast);

// Threshold, Threshold_I, Threshold_GT and Threshold_LT
void applyThresholds(KivImage& target, const KivImage& src, float ltThreshold, float ltValue, float gtThreshold,
                     float gtValue);
void limitToRange(KivImage& target, float limit);
void limitAbove(KivImage& target, const KivImage& src, float limit);
void limitBelow(KivImage& target, const KivImage& src, float limit);

// Stretch_Range
void stretchRange(KivImage& target, float low, float high);

// Apply_Lut
void applyTable(KivImage& target, const float* table, int count);
