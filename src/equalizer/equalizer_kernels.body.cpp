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

void addGuidedLine(float* to, const float* before, float gain, const float* upperB, const float* lowerB,
                   const float* upperA, const float* lowerA, float share, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    const Floats b = load<Floats>(upperB + x);
    const Floats a = load<Floats>(upperA + x);
    const Floats shift = b + (load<Floats>(lowerB + x) - b) * share;
    const Floats factor = gain + (a + (load<Floats>(lowerA + x) - a) * share);
    store(to + x, load<Floats>(before + x) * factor + shift);
  }
  for (; x < width; ++x) {
    const float shift = upperB[x] + (lowerB[x] - upperB[x]) * share;
    const float factor = gain + (upperA[x] + (lowerA[x] - upperA[x]) * share);
    to[x] = before[x] * factor + shift;
  }
}

inline Floats heldBack(Floats change, Floats least, Floats most) {
  const Floats zero{};
  const Floats room = larger(select(change > 0.0F, 1.0F - most, least), zero);
  const Floats room2 = room * room;
  const Floats change2 = change * change;
  const Floats held = change * room / squareRoots(squareRoots(room2 * room2 + change2 * change2));
  return select(room > 0.0F, held, zero);
}

void addLimitedLine(float* c0, float* c1, float* c2, const float* before, const float* after, int count, int width) {
  float* const colours[] = {c0, c1, c2};
  const int last = count == 1 ? 0 : 2;
  for (int x = 0; x < width; x += LANES) {
    const int length = width - x < LANES ? width - x : LANES;
    Floats samples[3] = {};
    for (int c = 0; c <= last; ++c) samples[c] = loadPart<Floats>(colours[c] + x, length, 0.0F);
    Floats least = samples[0];
    Floats most = samples[0];
    for (int c = 1; c <= last; ++c) {
      least = smaller(least, samples[c]);
      most = larger(most, samples[c]);
    }
    const Floats change = loadPart<Floats>(after + x, length, 0.0F) - loadPart<Floats>(before + x, length, 0.0F);
    const Floats held = heldBack(change, least, most);
    for (int c = 0; c <= last; ++c) storePart(colours[c] + x, samples[c] + held, length);
  }
}

}  // namespace

extern const EqualizerKernels equalizerKernels = {weighBandLine,  addChangeLine, weightLine,    addWeightedLine,
                                                  addBetweenLine, addGuidedLine, addLimitedLine};

}  // namespace ROW
