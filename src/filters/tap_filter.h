// A one-dimensional kernel along rows and columns: the bodies of KivImage's members, each of which documents its own.
#pragma once

#include "image/kiv_image.h"

// Filter and Filter_With_Pad
void separableFilter(KivImage& target, const KivImage& src, const Kernel& kernel, int passes);
void separableFilterWithPadding(KivImage& target, const KivImage& src, const Kernel& kernel);
