#include "equalizer/pyramid.h"

#include <algorithm>
#include <cstddef>
#include <utility>

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
  LevelRebuild(const LevelLines& level, const KivImage& reduced, const KivImage& rebuilt, float gain)
      : level_(level),
        reduced_(reduced),
        rebuilt_(rebuilt),
        gain_(gain),
        expansion_(reduced.size, level.size()),
        rowBytes_(rowBytesFor(level.size().width)) {}

  // Makes each line y at place(y, line in scratch), which may be C(i)'s own, and calls done(y, line of C(i), line).
  template <typename Place, typename Done>
  void run(Place place, Done done) const {
    const auto weighBandLine = equalizerKernels().weighBandLine;
    const std::int64_t scratchBytes = std::int64_t{2 * bandRows + 2} * rowBytes_ + expansion_.scratchBytes();
    eachBand(level_.size().height, bandRows, scratchBytes, [&](int first, int count, void* scratch) {
      float* const expanded = static_cast<float*>(scratch);
      float* const rebuilt = expanded + bandRows * rowFloats();
      float* const line = rebuilt + bandRows * rowFloats();
      float* const forLevel = line + rowFloats();
      float* const forExpansion = forLevel + rowFloats();
      expansion_.rows(reduced_.planes[0], reduced_.stride, 0, first, count, expanded, rowBytes_, forExpansion);
      expansion_.rows(rebuilt_.planes[0], rebuilt_.stride, 0, first, count, rebuilt, rowBytes_, forExpansion);
      for (int i = 0; i < count; ++i) {
        const int y = first + i;
        const float* const level = level_.rows(y, y + 1, forLevel, rowBytes_).first;
        float* const to = place(y, line);
        weighBandLine(to, rebuilt + i * rowFloats(), level, expanded + i * rowFloats(), gain_, level_.size().width);
        done(y, level, to);
      }
    });
  }

  void runInto(KivImage& target) const {
    run([&](int y, float*) { return target.At(0, 0, y); }, [](int, const float*, float*) {});
  }

 private:
  std::ptrdiff_t rowFloats() const { return rowBytes_ / static_cast<int>(sizeof(float)); }

  LevelLines level_;
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

// reduced = lines, under the level's Gaussian if it has one, at half size, without ever having the whole of the blurred
// level. False, and nothing done, where that isn't possible or doesn't pay.
bool reduceByBands(const LevelLines& lines, const Level& level, KivImage& reduced) {
  if (level.lowPass == LowPass::bilateral) return false;
  const IppiSize size = level.size;
  const bool blurs = level.lowPass == LowPass::gaussian;
  const int reach = blurs ? gaussianReach(level.radius, lowPassReach) : 0;
  if (reach > farthestReach) return false;
  const int mostBlurred = std::min(2 * reducedBandRows + 1 + reach, size.height);
  const int mostRows = lines.rowsInScratch(std::min(mostBlurred + 2 * reach, size.height));
  const GaussianBands gaussian(size, blurs ? level.radius : 0.0F, lowPassReach, mostBlurred);
  const Resizer halving(size, reduced.size);
  if (gaussian.isServed() != blurs || !halving.isServed()) return false;

  const int rowBytes = rowBytesFor(size.width);
  const std::ptrdiff_t rowFloats = rowBytes / static_cast<int>(sizeof(float));
  const std::int64_t scratchBytes = std::int64_t{mostRows + (blurs ? mostBlurred : 0)} * rowBytes +
                                    std::max(gaussian.scratchBytes(), halving.scratchBytes());
  if (scratchBytes > INT32_MAX) return false;
  eachBand(reduced.size.height, reducedBandRows, scratchBytes, [&](int first, int count, void* scratch) {
    float* const forLines = static_cast<float*>(scratch);
    float* const blurred = forLines + mostRows * rowFloats;
    float* const rest = blurred + (blurs ? mostBlurred : 0) * rowFloats;
    Resizer::Rows rows = halving.sourceRows(first, count);
    // Down to the edge where the kernel would reach beyond it; at the top the second band begins far behind its reach.
    if (size.height - rows.end < reach) rows.end = size.height;
    const int top = std::max(rows.first - reach, 0);
    LevelLines::Rows source = lines.rows(top, std::min(rows.end + reach, size.height), forLines, rowBytes);
    if (blurs) {
      const float* const from = source.first + (rows.first - top) * (source.stride / static_cast<int>(sizeof(float)));
      gaussian.rows(from, source.stride, rows.first, rows.end - rows.first, blurred, rowBytes, rest);
      source = {blurred, rowBytes};
    }
    halving.rows(source.first, source.stride, rows.first, first, count, reduced.At(0, 0, first), reduced.stride, rest);
  });
  return true;
}

}  // namespace

Pyramid::Pyramid(LevelLines finest, const Levels& levels, const float* gains, float baseGain)
    : finest_(std::move(finest)), gain_(gains[0]) {
  takeApart(levels);
  rebuilt_.back() = reduced_.back();
  if (baseGain != 1.0F) rebuilt_.back() *= baseGain;
  for (std::size_t i = levels.size() - 1; i > 0; --i) {
    rebuilt_[i - 1].Init(levels[i].size, 1);
    LevelRebuild(LevelLines(reduced_[i - 1]), reduced_[i], rebuilt_[i], gains[i]).runInto(rebuilt_[i - 1]);
  }
}

void Pyramid::takeApart(const Levels& levels) {
  KivImage lowpass;  // one block for all levels, each in its corner: new memory is dearer than the room
  for (std::size_t i = 0; i < levels.size(); ++i) {
    reduced_[i].Init(halved(levels[i].size), 1);
    LevelLines lines = i == 0 ? finest_ : LevelLines(reduced_[i - 1]);
    if (reduceByBands(lines, levels[i], reduced_[i])) continue;
    const KivImage& level = i == 0 ? finest_.whole() : reduced_[i - 1];
    if (levels[i].lowPass == LowPass::none) {
      reduced_[i].Resize(level, reduced_[i].size);
      continue;
    }
    if (lowpass.channels == 0) lowpass.Init(level.size, 1);
    KivImage corner = lowpass.ROI(0, 0, level.size.width, level.size.height);
    applyLowPass(corner, level, levels[i]);
    reduced_[i].Resize(corner, reduced_[i].size);
  }
}

void Pyramid::rebuildInto(KivImage& target) const {
  LevelRebuild(finest_, reduced_.front(), rebuilt_.front(), gain_).runInto(target);
}

void Pyramid::rebuild(const LineSink& sink) const {
  LevelRebuild(finest_, reduced_.front(), rebuilt_.front(), gain_).run([](int, float* line) { return line; }, sink);
}
