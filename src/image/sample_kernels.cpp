#include "image/sample_kernels.h"

const SampleKernels& sampleKernels() {
  static const SampleKernels* const rows[] = {ADDRESS_IN_EACH_ROW(sampleKernels)};
  return *rows[rowInForce()];
}
