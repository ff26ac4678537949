// From the user's parameters to the band decomposition.

#include "equalizer/band_equalizer.h"

#include "equalizer/cross_overlay.h"
#include "equalizer/equalizer_kernels.h"
#include "equalizer/luminance.h"
#include "equalizer/pyramid.h"
#include "image/row_bands.h"
#include "tone/colour_kernels.h"

namespace {

constexpr int rec601 = 2;  // selector of the luminance weights

void equalize(KivImage& plane, ScaledParameters& p) {
  EqualizeIT(plane, plane, p.gains, p.radii, p.thresholds, p.edges, levelCount, p.baseGain);
}

void equalizePlanes(KivImage& image, ScaledParameters& scaled) {
  for (int i = 0; i < 3; ++i) {
    KivImage plane = image.Plane(i);
    equalize(plane, scaled);
  }
}

// Luminance is worked out where it is needed, and again where it is needed again: three lines are read sooner than a
// plane of new memory is written and read.
void equalizeLuminanceByLines(KivImage& image, const ScaledParameters& scaled) {
  const int width = image.size.width;
  const auto weightedSumLine = colourKernels().weightedSumLine;
  const auto addChangeLine = equalizerKernels().addChangeLine;
  const LuminanceWeights weights = luminanceWeights(rec601);
  const auto luminanceOf = [&](int y, float* to) {
    weightedSumLine(to, image.At(0, 0, y), image.At(1, 0, y), image.At(2, 0, y), width, weights.values);
  };
  const LineSource luminance{[&](int y, float* to, float*) { luminanceOf(y, to); }};
  const Plan plan = scaled.planFor(image.size);
  if (!plan.isAdmitted()) throw NO_MEMORY_ERROR();
  const Pyramid pyramid(LevelLines(image.size, luminance), plan.levels, nullptr);
  const WeighedPyramid weighed(pyramid, scaled.gains, scaled.baseGain);
  const LevelRebuild& finest = weighed.finest();
  const int rowBytes = rowBytesFor(width);
  eachBand(image.size.height, LevelRebuild::bandRows, finest.scratchBytes() + std::int64_t{2} * rowBytes,
           [&](int first, int count, void* scratch) {
             float* const before = floatsAt(scratch, finest.scratchBytes());
             float* const after = floatsAt(before, rowBytes);
             finest.prepare(first, count, scratch);
             for (int i = 0; i < count; ++i) {
               const int y = first + i;
               luminanceOf(y, before);
               finest.line(i, 0, width, before, after, scratch);
               addChangeLine(image.At(0, 0, y), image.At(1, 0, y), image.At(2, 0, y), before, after, 1.0F, width);
             }
           });
}

void equalizeLuminance(KivImage& image, ScaledParameters& scaled) {
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
  equalize(lumaAfter, scaled);
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
  ScaledParameters scaled(params.gui);
  if (params.gui.lumi == 1) {
    equalizeLuminance(image, scaled);
  } else {
    equalizePlanes(image, scaled);
  }
  if (params.gui.half == 1) image = image + 0.5F;
}
