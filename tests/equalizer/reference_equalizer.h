// The band decomposition written down step by step, with nothing fused or shared: what every faster form must equal to
// the bit, also where a level is one sample wide or high and a resize leaves its target as it was.
#pragma once

#include <cmath>
#include <vector>

#include "equalizer/bilateral_filter.h"
#include "image/kiv_image.h"

struct BandSettings {
  float gains[5] = {1, 1, 1, 1, 1};
  float radii[5] = {3, 3, 3, 3, 3};
  float thresholds[5] = {1, 0.04F, 0.04F, 0.04F, 0.04F};
  bool edges[5] = {false, true, true, true, true};
  float baseGain = 1;
};

inline void referenceEqualize(KivImage& image, const BandSettings& s) {
  std::vector<int> w{image.size.width};
  std::vector<int> h{image.size.height};
  for (int i = 0; i < 5; ++i) {
    w.push_back(static_cast<int>(std::ceil(static_cast<float>(w.back()) * 0.5F)));
    h.push_back(static_cast<int>(std::ceil(static_cast<float>(h.back()) * 0.5F)));
  }
  const auto at = [&](const KivImage& of, std::size_t i) { return of.ROI(0, 0, w[i], h[i]); };

  KivImage lowpass(image.size, 1);
  KivImage current(image.size, 1);
  KivImage bands[5];
  current = image;
  for (std::size_t i = 0; i < 5; ++i) {
    bands[i].Init(w[i], h[i], 1);
    if (s.edges[i]) {
      BilateralFilterKiv(lowpass.planes[0], current.planes[0], static_cast<unsigned>(h[i]), static_cast<unsigned>(w[i]),
                         static_cast<unsigned>(current.stride / 4),
                         static_cast<unsigned short>(std::ceil(4.0F * s.radii[i])), s.radii[i], s.thresholds[i], 0, 1);
    } else {
      at(lowpass, i).GaussBlurFast(at(current, i), s.radii[i], 4);
    }
    at(image, i + 1).Resize(at(lowpass, i), w[i + 1], h[i + 1]);
    at(lowpass, i + 1).Copy(at(image, i + 1));
    image.Resize(at(lowpass, i + 1), w[i], h[i]);
    bands[i] = at(current, i) - image;
    bands[i] *= s.gains[i];
    at(current, i + 1).Copy(at(lowpass, i + 1));
  }
  if (s.baseGain != 1.0F) at(current, 5) *= s.baseGain;
  at(image, 4).Resize(at(current, 5), w[4], h[4]);
  at(image, 4) += bands[4];
  for (std::size_t i = 4; i-- > 0;) {
    at(current, i).Resize(at(image, i + 1), w[i], h[i]);
    at(image, i) = at(current, i) + bands[i];
  }
}
