// The equalizer as the filter run calls it: the user's parameters, and the run over colour planes or luminance.
#pragma once

#include <cstdint>

#include "image/kiv_image.h"

struct PS_Database;

// The parameters as the user gave them, in single precision, finest band first. Nothing is checked or limited.
struct OrbelBandEqualizerGuiParams {
  float contrast[5];      // gain of the band in percent
  float radius[5];        // standard deviation of the level's low-pass, in pixels of that level
  float threshold[5];     // range deviation of the bilateral filter, on a scale of 0 to 255
  unsigned char edge[5];  // 1: the level's low-pass is the bilateral filter
  float factor;           // gain of the residual in percent
  unsigned char half;     // 1: add 0.5 to every sample at the end
  unsigned char lumi;     // 1: work on luminance, else on each plane
  std::int32_t width;     // thickness of the overlay in pixels; 0 or less: none
};

struct OrbelBandEqualizerWrapperParams {
  KivImage* image;  // worked on in place
  KivImage* sameImage;
  OrbelBandEqualizerGuiParams gui;
};

// Equalizes an image of three planes in place, then draws the overlay. The PS_Database is not used.
// Throws NO_MEMORY_ERROR; the image may then hold intermediate values.
void OrbelBandEqualizer(PS_Database& db, OrbelBandEqualizerGuiParams& params, KivImage& image);

// The same without the overlay: scales the parameters, works on luminance or plane by plane, adds the 0.5.
void OrbelBandEqualizerWrapper(OrbelBandEqualizerWrapperParams& params);

// y = (c0 * w0 + c1 * w1) + c2 * w2. step is the row step in floats of all four planes; exactly width samples of a row
// are written. weights selects luminanceWeights.
void ExtractYChannelKiv(float* y, float* c0, float* c1, float* c2, int height, int width, int step, int weights);

// Adds (yAfter - yBefore) * strength to each of the three planes. step as above.
void SetYChannelOutputKiv(float* c0, float* c1, float* c2, float* yBefore, float* yAfter, int height, int width,
                          int step, float strength);
