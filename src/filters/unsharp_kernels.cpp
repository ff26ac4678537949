#include "filters/unsharp_kernels.h"

const UnsharpKernels& unsharpKernels() {
  static const UnsharpKernels* const rows[] = {ADDRESS_IN_EACH_ROW(unsharpKernels)};
  return *rows[rowInForce()];
}
