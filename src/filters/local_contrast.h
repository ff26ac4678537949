// Local levels, contrast and smoothing of images: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// LocalAutoLevels and LocalAutoLevelsOld
void localAutoLevels(KivImage& target, const KivImage& src, int radius, bool detailOverlay);
void localAutoLevelsStepwise(KivImage& target, const KivImage& src, int radius, bool detailOverlay);

// ApplyLocalContrast
void localContrast(KivImage& target, const KivImage& src, float radius1, float amount1, float radius2, float amount2);

// ApplyLocalLinearFilter
void localLinearFilter(KivImage& target, const KivImage& src, int radius, float eps);
