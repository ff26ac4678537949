// A run through the front door on interleaved floats, for tests.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "api/orbel.h"

inline std::vector<float> equalized(const orbel_settings& settings, std::vector<float> samples, int width, int height,
                                    int channels, int threads = 0) {
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.threads = threads;
  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, ORBEL_FLOAT32, width, height, channels, samples.data(),
                            std::ptrdiff_t{4} * channels * width);
  EXPECT_EQ(orbel_equalize(&settings, &picture, &picture, &options), ORBEL_OK);
  return samples;
}
