#include "equalizer/pyramid.h"

#include <algorithm>
#include <cstddef>

#include "equalizer/equalizer_kernels.h"
#include "filters/gaussian_bands.h"
#include "image/resizer.h"
#include "image/row_bands.h"

namespace {

// Rows that are expanded at a time: few enough to stay in the cache until they are used.
constexpr int bandRows = 8;

// Of a row in scratch.
int rowBytesFor(int width) { return (width * static_cast<int>(sizeof(float)) + 63) / 64 * 64; }

// The lines of R(i) = R(i + 1) expanded + gain * (C(i) - C(i + 1) expanded).
class LevelRebuild {
 public:
  // level is C(i), reduced C(i + 1), rebuilt R(i + 1).
  LevelRebuild(const KivImage& level, const KivImage& reduced, const KivImage& rebuilt, float gain)
      : level_(level),
        reduced_(reduced),
        rebuilt_(rebuilt),
        gain_(gain),
        expansion_(reduced.size, level.size),
        rowBytes_(rowBytesFor(level.size.width)) {}

  // Makes each line y at place(y, line in scratch), which may be C(i)'s own, and calls done(y, line).
  template <typename Place, typename Done>
  void run(Place place, Done done) const {
    const auto weighBandLine = equalizerKernels().weighBandLine;
    const std::int64_t scratchBytes = std::int64_t{2 * bandRows + 1} * rowBytes_ + expansion_.scratchBytes();
    eachBand(level_.size.height, bandRows, scratchBytes, [&](int first, int count, void* scratch) {
      float* const expanded = static_cast<float*>(scratch);
      float* const rebuilt = expanded + bandRows * rowFloats();
      float* const line = rebuilt + bandRows * rowFloats();
      float* const forExpansion = line + rowFloats();
      expansion_.rows(reduced_.planes[0], reduced_.stride, 0, first, count, expanded, rowBytes_, forExpansion);
      expansion_.rows(rebuilt_.planes[0], rebuilt_.stride, 0, first, count, rebuilt, rowBytes_, forExpansion);
      for (int i = 0; i < count; ++i) {
        const int y = first + i;
        float* const to = place(y, line);
        weighBandLine(to, rebuilt + i * rowFloats(), level_.At(0, 0, y), expanded + i * rowFloats(), gain_,
                      level_.size.width);
        done(y, to);
      }
    });
  }

  void runInto(KivImage& target) const {
    run([&](int y, float*) { return target.At(0, 0, y); }, [](int, float*) {});
  }

 private:
  std::ptrdiff_t rowFloats() const { return rowBytes_ / static_cast<int>(sizeof(float)); }

  const KivImage& level_;
  const KivImage& reduced_;
  const KivImage& rebuilt_;
  float gain_;
  Resizer expansion_;
  int rowBytes_;
};

// Rows of a reduced level that are made at a time. A Gaussian does its horizontal half again for the rows that it
// reaches beyond a band, so bands are high where it reaches far.
constexpr int reducedBandRows = 128;
constexpr int farthestReach = reducedBandRows / 4;

// reduced = level under its Gaussian, at half size, without ever having the whole of the blurred level. False, and
// nothing done, where it pays no more to go by bands.
bool blurAndHalve(const KivImage& level, float sigma, KivImage& reduced) {
  const int reach = gaussianReach(sigma, lowPassReach);
  if (reach < 1 || reach > farthestReach) return false;
  const int mostRows = std::min(2 * (reducedBandRows + 2 + reach), level.size.height);
  const GaussianBands gaussian(level.size, sigma, lowPassReach, mostRows);
  const Resizer halving(level.size, reduced.size);
  if (!gaussian.isServed() || !halving.isServed()) return false;

  const int rowBytes = rowBytesFor(level.size.width);
  const std::int64_t blurredBytes = std::int64_t{mostRows} * rowBytes;
  const std::int64_t scratchBytes = blurredBytes + std::max(gaussian.scratchBytes(), halving.scratchBytes());
  eachBand(reduced.size.height, reducedBandRows, scratchBytes, [&](int first, int count, void* scratch) {
    Resizer::Rows rows = halving.sourceRows(first, count);
    // Up to an edge where the kernel would reach beyond it.
    if (rows.first < reach) rows.first = 0;
    if (level.size.height - rows.end < reach) rows.end = level.size.height;
    float* const blurred = static_cast<float*>(scratch);
    void* const rest = static_cast<char*>(scratch) + blurredBytes;
    gaussian.rows(level, rows.first, rows.end - rows.first, blurred, rowBytes, rest);
    halving.rows(blurred, rowBytes, rows.first, first, count, reduced.At(0, 0, first), reduced.stride, rest);
  });
  return true;
}

}  // namespace

Pyramid::Pyramid(const KivImage& plane, const Levels& levels, const float* gains, float baseGain)
    : plane_(plane), gain_(gains[0]) {
  takeApart(levels);
  rebuilt_.back() = reduced_.back();
  if (baseGain != 1.0F) rebuilt_.back() *= baseGain;
  for (std::size_t i = levels.size() - 1; i > 0; --i) {
    rebuilt_[i - 1].Init(levels[i].size, 1);
    LevelRebuild(reduced_[i - 1], reduced_[i], rebuilt_[i], gains[i]).runInto(rebuilt_[i - 1]);
  }
}

void Pyramid::takeApart(const Levels& levels) {
  KivImage lowpass;  // one block for all levels, each in its corner: new memory is dearer than the room
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const KivImage& level = i == 0 ? plane_ : reduced_[i - 1];
    reduced_[i].Init(halved(level.size), 1);
    if (levels[i].lowPass == LowPass::none) {
      reduced_[i].Resize(level, reduced_[i].size);
      continue;
    }
    if (levels[i].lowPass == LowPass::gaussian && blurAndHalve(level, levels[i].radius, reduced_[i])) continue;
    if (lowpass.channels == 0) lowpass.Init(level.size, 1);
    KivImage corner = lowpass.ROI(0, 0, level.size.width, level.size.height);
    applyLowPass(corner, level, levels[i]);
    reduced_[i].Resize(corner, reduced_[i].size);
  }
}

void Pyramid::rebuildInto(KivImage& target) const {
  LevelRebuild(plane_, reduced_.front(), rebuilt_.front(), gain_).runInto(target);
}

void Pyramid::rebuild(const LineSink& sink) const {
  LevelRebuild(plane_, reduced_.front(), rebuilt_.front(), gain_).run([](int, float* line) { return line; }, sink);
}
