// Planes taken apart by edge-avoiding wavelets, without halving (Hanika, Dammertz and Lensch, Edge-optimized à-trous
// wavelets for local contrast enhancement with robust denoising, 2011): each level is the one before under a B3 spline
// of five taps both ways, whose distance doubles from level to level, and each tap weighs the less the more its sample
// differs from the one in the middle. A band is what a level takes away, so no band holds an edge, and no gain makes a
// halo of one.
//
// The weight over 1 + (d / threshold)^2, a Cauchy function of the difference d, halves at the threshold: it takes one
// division, every processor computes it alike, and its long slope leaves less of a halo at soft edges than Gaussians
// do at the same contrast. Beyond the plane its edge samples go on.
#pragma once

#include "equalizer/plane_stack.h"

class WaveletPlanes : public PlaneStack {
 public:
  // Levels as planWavelets makes them. Otherwise as takePlanesApart.
  WaveletPlanes(KivImage&& planes, const Levels& levels, Progress* progress);

  KivImage weigh(const float* gains, float baseGain, Progress* progress) const override;

  static StackBytes bytesOf(const Levels& levels, int planes);

 private:
  // The planes under the low-passes of so many levels.
  const KivImage& after(std::size_t levels) const { return levels == 0 ? planes() : smoothed_[levels - 1]; }

  std::array<KivImage, levelCount> smoothed_;
};
