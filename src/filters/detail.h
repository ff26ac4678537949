// Detail of images, what a Gaussian takes away: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// HighPassFilter and HighPassPS
void highPassHalfStrength(KivImage& target, const KivImage& src, float sigma);
void highPassFullStrength(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier);

// UsmPS
void unsharpMask(KivImage& target, const KivImage& src, float amount, float sigma, float threshold);
