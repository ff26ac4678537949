// Box means of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// Box_Blur and ApplyBoxFilter
void boxBlur(KivImage& target, const KivImage& src, int radius);
void boxBlurWithBorder(KivImage& target, const KivImage& src, int radius, KivImage::KivBorderType border,
                       float borderValue, bool divideByArea);

// Gaussian_Box_Blur
void gaussianBlurByBoxes(KivImage& target, const KivImage& src, float sigma, int passes);
