// The fused kernel of local auto levels.
#pragma once

// For each sample: d = high - low, t = 1 - d, dst = t * src + (src - low), in this order, unclipped. All four have the
// row step strideFloats, and rows are worked on as long as that, padding included: views and images whose rows end with
// their samples need a copy with rows of their own. dst may be any of the others. Rows in parallel.
void LocalAutoLevelsKiv(float* src, float* low, float* high, float* dst, int height, int strideFloats);
