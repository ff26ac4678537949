// Running extremes after van Herk (Pattern Recognition Letters 13, 1992) and Gil and Werman (PAMI 15, 1993): rows are
// taken in blocks as long as the window. A window that starts inside one block ends inside the next, so its extreme is
// that of a suffix of the first and a prefix of the second: three comparisons a sample, whatever the window.

#include "filters/morphology_kernels.h"

#include "primitives/regions.h"

namespace ROW {
namespace {

constexpr auto largest = [](Floats sample, Floats soFar) { return larger(sample, soFar); };
constexpr auto smallest = [](Floats sample, Floats soFar) { return smaller(sample, soFar); };

// soFar = choose(samples, soFar).
template <typename Choose>
void chooseLine(float* soFar, const float* samples, int width, Choose choose) {
  mapLine2(samples, soFar, soFar, width, 0.0F, choose);
}

void fillLine(float* line, float value, int width) {
  for (int x = 0; x < width; ++x) line[x] = value;
}

void copyLine(float* to, const float* from, int width) {
  __builtin_memcpy(to, from, static_cast<std::size_t>(width) * sizeof(float));
}

template <typename Choose>
void extremeDown(const ColumnExtreme& work, float none, Choose choose) {
  // Row r of the source as the blocks see it: they start anchor rows above it.
  const auto sourceRow = [&](std::int64_t r) {
    const std::int64_t y = r - work.anchor;
    return y >= 0 && y < work.srcRows ? work.src + y * work.srcStep : nullptr;
  };
  const auto choose2 = [&](float* soFar, const float* samples) {
    if (samples != nullptr) chooseLine(soFar, samples, work.columns, choose);
  };

  for (std::int64_t block = 0; block < work.dstRows; block += work.window) {
    const auto suffix = [&](std::int64_t i) { return work.suffixes + i * stripColumns; };
    float soFar[stripColumns];
    fillLine(soFar, none, work.columns);
    for (std::int64_t i = work.window - 1; i >= 0; --i) {
      choose2(soFar, sourceRow(block + i));
      copyLine(suffix(i), soFar, work.columns);
    }

    const std::int64_t rest = work.dstRows - block;
    const std::int64_t rows = rest < work.window ? rest : work.window;
    fillLine(soFar, none, work.columns);
    for (std::int64_t i = 0; i < rows; ++i) {
      if (i > 0) choose2(soFar, sourceRow(block + work.window + i - 1));
      float* to = work.dst + (block + i) * work.dstStep;
      mapLine2(suffix(i), soFar, to, work.columns, 0.0F, choose);
    }
  }
}

void largestDown(const ColumnExtreme& work) { extremeDown(work, -__builtin_inff(), largest); }
void smallestDown(const ColumnExtreme& work) { extremeDown(work, __builtin_inff(), smallest); }

void largerLine(float* soFar, const float* samples, int width) { chooseLine(soFar, samples, width, largest); }
void smallerLine(float* soFar, const float* samples, int width) { chooseLine(soFar, samples, width, smallest); }

template <typename Vector>
Vector localLevel(Vector src, Vector low, Vector high) {
  const Vector d = high - low;
  const Vector t = 1.0F - d;
  return t * src + (src - low);
}

void localLevelsLine(float* dst, const float* src, const float* low, const float* high, int width) {
  int x = 0;
  for (; x <= width - LANES; x += LANES) {
    store(dst + x, localLevel(load<Floats>(src + x), load<Floats>(low + x), load<Floats>(high + x)));
  }
  for (; x < width; ++x) dst[x] = localLevel(src[x], low[x], high[x]);
}

}  // namespace

extern const MorphologyKernels morphologyKernels = {largestDown, smallestDown, largerLine, smallerLine,
                                                    localLevelsLine};

}  // namespace ROW
