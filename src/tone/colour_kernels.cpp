#include "tone/colour_kernels.h"

const ColourKernels& colourKernels() {
  static const ColourKernels* const rows[] = {ADDRESS_IN_EACH_ROW(colourKernels)};
  return *rows[rowInForce()];
}
