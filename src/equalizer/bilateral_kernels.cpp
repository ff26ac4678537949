#include "equalizer/bilateral_kernels.h"

const BilateralKernels& bilateralKernels() {
  static const BilateralKernels* const rows[] = {ADDRESS_IN_EACH_ROW(bilateralKernels)};
  return *rows[rowInForce()];
}
