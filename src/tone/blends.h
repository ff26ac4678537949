// Blends of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// OverlayBlend and OverlayBlendSSE
void overlayBlend(KivImage& target, const KivImage& base, const KivImage& top);
void overlayBlendPlane0(KivImage& target, const KivImage& base, const KivImage& top);

// AlphaCombine
void alphaCombine(KivImage& target, const KivImage& a, const KivImage& b, float weight);

// The assignment of Blend_R
void linearLightBlend(KivImage& target, const KivImage& first, const KivImage& second, float amount);

// ApplyTonalMask
void applyTonalMask(KivImage& target, const KivImage& base, const KivImage& filtered, float shadows, float midtones,
                    float highlights);
