// Layer blends of two planes, and detail layers, each in one pass.
//
// dst and the inputs have height rows of width samples and the common row step strideFloats, in floats. dst may be any
// of the inputs. Exactly width samples a row are written. clamp limits to 0 to 1 and makes 0 of NaN; what has no clamp
// isn't clipped. Operations go in the order written. Rows in parallel.
#pragma once

// ((base * top) * 2) * m + (1 - ((1 - base) * (1 - top)) * 2) * (1 - m), with m = 1 where base < 0.5, else 0.
void BlendModeOverlayKiv(float* dst, float* top, float* base, int height, int width, int strideFloats);

// clamp((b + a) - 1)
void BlendModeLinearBurnKiv(float* dst, float* a, float* b, int height, int width, int strideFloats);

// clamp(b + a)
void BlendModeLinearDodgeKiv(float* dst, float* a, float* b, int height, int width, int strideFloats);

// (a - b) + 0.5
void CalcDetailsLayerMergeGrain(float* dst, float* a, float* b, int height, int width, int strideFloats);

// (a - b) * 0.5 + (offset + 0.5)
void CalcDetailsLayerLinearLight(float* dst, float* a, float* b, int height, int width, int strideFloats, float offset);

// filtered * w + base * (1 - w), where w runs linearly from shadows at base 0 over midtones at 0.5 to highlights at 1:
//   t = 1 - 2 * base, d = max(t, 0), l = max(-t, 0)
//   w = clamp(d * shadows + ((1 - (d + l)) * midtones + l * highlights))
void ApplyTonalMaskKiv(float* dst, float* base, float* filtered, int height, int width, int strideFloats, float shadows,
                       float midtones, float highlights);
