#include "equalizer/band_decomposition.h"

#include "equalizer/pyramid.h"
#include "equalizer/stepwise.h"
#include "image/parallel.h"

void EqualizeIT(KivImage&, KivImage& image, float* gains, float* radii, float* thresholds, bool* edges, int,
                float baseGain) {
  const Team team;
  const Plan plan = planRun(image.size, radii, thresholds, edges);
  if (!plan.isAdmitted()) throw NO_MEMORY_ERROR();
  if (Pyramid::serves(image.size)) {
    const Pyramid pyramid(LevelLines(image), plan.levels, nullptr);
    WeighedPyramid(pyramid, gains, baseGain).rebuildInto(image);
  } else {
    equalizeStepwise(image, plan.levels, gains, baseGain, nullptr);
  }
}
