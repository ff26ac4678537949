#pragma once

#include "image/kiv_image.h"

// KivImage::CrossIt_I.
void drawCross(KivImage& image, int thickness);
