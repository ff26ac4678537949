// From the user's parameters to the band decomposition.

#include "equalizer/band_equalizer.h"

#include "equalizer/cross_overlay.h"
#include "equalizer/equalizer_kernels.h"
#include "equalizer/luminance.h"
#include "equalizer/pyramid.h"
#include "image/parallel.h"
#include "tone/colour_kernels.h"

namespace {

constexpr int rec601 = 2;  // selector of the luminance weights

// The arguments of EqualizeIT.
struct Scaled {
  float gains[levelCount];
  float radii[levelCount];
  float thresholds[levelCount];
  bool edges[levelCount];
  float baseGain;

  explicit Scaled(const OrbelBandEqualizerGuiParams& gui) : baseGain(gui.factor * 0.01F) {
    for (int i = 0; i < levelCount; ++i) {
      gains[i] = gui.contrast[i] * 0.01F;
      radii[i] = gui.radius[i];
      thresholds[i] = gui.threshold[i] * (1.0F / 255.0F);
      edges[i] = gui.edge[i] == 1;
    }
  }

  void equalize(KivImage& plane) { EqualizeIT(plane, plane, gains, radii, thresholds, edges, levelCount, baseGain); }
};

void equalizePlanes(KivImage& image, Scaled& scaled) {
  for (int i = 0; i < 3; ++i) {
    KivImage plane = image.Plane(i);
    scaled.equalize(plane);
  }
}

// Luminance is worked out where it is needed, and again where it is needed again: three lines are read sooner than a
// plane of new memory is written and read.
void equalizeLuminanceByLines(KivImage& image, const Scaled& scaled) {
  const int width = image.size.width;
  const auto weightedSumLine = colourKernels().weightedSumLine;
  const auto addChangeLine = equalizerKernels().addChangeLine;
  const LuminanceWeights weights = luminanceWeights(rec601);
  const LineSource luminance = [&](int y, float* to) {
    weightedSumLine(to, image.At(0, 0, y), image.At(1, 0, y), image.At(2, 0, y), width, weights.values);
  };
  const Levels levels = planLevels(image.size, scaled.radii, scaled.thresholds, scaled.edges);
  const Pyramid pyramid(LevelLines(image.size, luminance), levels, scaled.gains, scaled.baseGain);
  pyramid.rebuild([&](int y, const float* before, const float* after) {
    addChangeLine(image.At(0, 0, y), image.At(1, 0, y), image.At(2, 0, y), before, after, 1.0F, width);
  });
}

void equalizeLuminance(KivImage& image, Scaled& scaled) {
  if (Pyramid::serves(image.size)) return equalizeLuminanceByLines(image, scaled);
  KivImage lumaBefore(image.size, 1);
  if (image.stride != lumaBefore.stride) {
    // The kernels take one step for all planes: a view or a wrapped image goes through a copy with rows of our own.
    KivImage copy;
    copy = image;
    equalizeLuminance(copy, scaled);
    image = copy;
    return;
  }
  const int height = image.size.height;
  const int width = image.size.width;
  const int step = image.stride / 4;
  float** const planes = image.planes;
  ExtractYChannelKiv(lumaBefore.planes[0], planes[0], planes[1], planes[2], height, width, step, rec601);
  KivImage lumaAfter;
  lumaAfter = lumaBefore;
  scaled.equalize(lumaAfter);
  SetYChannelOutputKiv(planes[0], planes[1], planes[2], lumaBefore.planes[0], lumaAfter.planes[0], height, width, step,
                       1.0F);
}

}  // namespace

void OrbelBandEqualizer(PS_Database&, OrbelBandEqualizerGuiParams& params, KivImage& image) {
  ippInit();
  OrbelBandEqualizerWrapperParams wrapper = {&image, &image, params};
  OrbelBandEqualizerWrapper(wrapper);
  if (params.width > 0) drawCross(image, params.width);
}

void OrbelBandEqualizerWrapper(OrbelBandEqualizerWrapperParams& params) {
  ippInit();
  const Team team;
  KivImage& image = *params.image;
  Scaled scaled(params.gui);
  if (params.gui.lumi == 1) {
    equalizeLuminance(image, scaled);
  } else {
    equalizePlanes(image, scaled);
  }
  if (params.gui.half == 1) image = image + 0.5F;
}
