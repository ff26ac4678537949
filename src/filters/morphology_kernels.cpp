#include "filters/morphology_kernels.h"

const MorphologyKernels& morphologyKernels() {
  static const MorphologyKernels* const rows[] = {ADDRESS_IN_EACH_ROW(morphologyKernels)};
  return *rows[rowInForce()];
}
