// Planes enlarged by the Lanczos kernel of three lobes (Duchon, 1979), sinc(x) sinc(x / 3) for |x| < 3: along rows,
// then along columns, each sum of weights brought to 1; beyond the edge its sample goes on.
#pragma once

#include "image/kiv_image.h"

// to is at least as large as from, and has as many planes. Throws NO_MEMORY_ERROR.
void enlargeByLanczos(const KivImage& from, KivImage& to);
