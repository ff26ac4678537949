// A level of the pyramid put together again; the change of the luminance laid over three planes; lines in between.

#include "equalizer/equalizer_kernels.h"

#include "primitives/lanes.h"

namespace ROW {
namespace {

void weighBandLine(float* to, const float* rebuilt, const float* level, const float* expanded, float gain, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Floats band = (load<Floats>(level + x) - load<Floats>(expanded + x)) * gain;
    store(to + x, load<Floats>(rebuilt + x) + band);
  }
  for (; x < width; ++x) to[x] = rebuilt[x] + (level[x] - expanded[x]) * gain;
}

void addChangeLine(float* c0, float* c1, float* c2, const float* before, const float* after, float strength,
                   int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Floats change = (load<Floats>(after + x) - load<Floats>(before + x)) * strength;
    store(c0 + x, load<Floats>(c0 + x) + change);
    store(c1 + x, load<Floats>(c1 + x) + change);
    store(c2 + x, load<Floats>(c2 + x) + change);
  }
  for (; x < width; ++x) {
    const float change = (after[x] - before[x]) * strength;
    c0[x] += change;
    c1[x] += change;
    c2[x] += change;
  }
}

void weightLine(float* to, const float* from, float weight, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(to + x, load<Floats>(from + x) * weight);
  for (; x < width; ++x) to[x] = from[x] * weight;
}

void addWeightedLine(float* to, const float* from, float weight, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) store(to + x, load<Floats>(to + x) + load<Floats>(from + x) * weight);
  for (; x < width; ++x) to[x] += from[x] * weight;
}

void addBetweenLine(float* to, const float* before, float gain, const float* upper, const float* lower, float share,
                    int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Floats above = load<Floats>(upper + x);
    const Floats between = above + (load<Floats>(lower + x) - above) * share;
    store(to + x, load<Floats>(before + x) * gain + between);
  }
  for (; x < width; ++x) to[x] = before[x] * gain + (upper[x] + (lower[x] - upper[x]) * share);
}

}  // namespace

extern const EqualizerKernels equalizerKernels = {weighBandLine, addChangeLine, weightLine, addWeightedLine,
                                                  addBetweenLine};

}  // namespace ROW
