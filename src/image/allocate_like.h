// The beginning of every operation in target form.
#pragma once

#include "image/kiv_image.h"

// Gives an empty image the shape of src; a shaped one stays as it is.
inline void allocateLike(KivImage& target, const KivImage& src) {
  if (target.channels == 0) target.Init(src);
}
