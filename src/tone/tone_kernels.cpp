#include "tone/tone_kernels.h"

const ToneKernels& toneKernels() {
  static const ToneKernels* const rows[] = {ADDRESS_IN_EACH_ROW(toneKernels)};
  return *rows[rowInForce()];
}
