// Gaussians of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// GaussBlurFast and GaussBlurDecimate
void gaussianBlurFast(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier);
void gaussianBlurDecimated(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier);

// Gauss_Blur, GaussBlur16 and GaussBlur8
void gaussianBlur(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate);
void gaussianBlurOfWords(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier,
                         bool borderIsReplicate);
void gaussianBlurOfBytes(KivImage& target, const KivImage& src, float sigma, int kernelMultiplier,
                         bool borderIsReplicate);

// Gaussian_IIR_Blur
void gaussianBlurRecursive(KivImage& target, const KivImage& src, double sigma);
