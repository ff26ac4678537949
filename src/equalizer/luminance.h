// The weights of luminance.
#pragma once

struct LuminanceWeights {
  float values[3];  // of red, green and blue
};

// 2 and 4: 0.299, 0.587, 0.114 (ITU-R BT.601); 3: 0.213, 0.715, 0.072 (ITU-R BT.709, rounded); any other: 0.25, 0.5,
// 0.25.
LuminanceWeights luminanceWeights(int selector);
