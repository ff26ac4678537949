// The bodies behind stdRows and what belongs to it in BilateralKernels; for body files only.
#pragma once

#include "equalizer/bilateral_kernels.h"

namespace ROW {

void bilateralStdRows(const float* top, std::ptrdiff_t blockStep, int window, GaussianFactors factors, float* dst,
                      std::ptrdiff_t dstStep, int columns, int rows, int blockRow, float* scratch);
std::int64_t bilateralStdRowsScratch(int columns, int window);
bool bilateralStdRowsPays(int columns, int rows, int window);

}  // namespace ROW
