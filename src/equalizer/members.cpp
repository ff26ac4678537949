// KivImage's overlay.

#include "equalizer/cross_overlay.h"

void KivImage::CrossIt_I(int thickness) { drawCross(*this, thickness); }
