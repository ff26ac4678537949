// Colour of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// Color_Twist
IppStatus twistColours(KivImage& target, const KivImage& src, const float (&twist)[3][4]);

// ColorToGraySSE and ConvertRgbToLSSE
void colourToGrey(KivImage& target, const KivImage& src, const float* weights);
void rgbToLightness(KivImage& target, const KivImage& src);

// Convert_RGB_to_LAB and Convert_LAB_To_RGB
void rgbToLab(KivImage& target, const KivImage& src);
void labToRgb(KivImage& target, const KivImage& src);

// Delta_E
void colourDifference(KivImage& target, const KivImage& lab, const float* reference, const float* weights);
