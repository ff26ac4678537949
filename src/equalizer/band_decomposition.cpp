#include "equalizer/band_decomposition.h"

#include "equalizer/pyramid.h"
#include "equalizer/stepwise.h"
#include "image/parallel.h"

void EqualizeIT(KivImage&, KivImage& image, float* gains, float* radii, float* thresholds, bool* edges, int,
                float baseGain) {
  const Team team;
  const Levels levels = planLevels(image.size, radii, thresholds, edges);
  if (Pyramid::serves(image.size)) {
    Pyramid(LevelLines(image), levels, gains, baseGain).rebuildInto(image);
  } else {
    equalizeStepwise(image, levels, gains, baseGain);
  }
}
