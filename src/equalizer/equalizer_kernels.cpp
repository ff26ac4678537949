#include "equalizer/equalizer_kernels.h"

const EqualizerKernels& equalizerKernels() {
  static const EqualizerKernels* const rows[] = {ADDRESS_IN_EACH_ROW(equalizerKernels)};
  return *rows[rowInForce()];
}
