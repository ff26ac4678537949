#include "equalizer/pyramid.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "equalizer/equalizer_kernels.h"
#include "equalizer/low_pass.h"
#include "equalizer/progress.h"
#include "filters/gaussian_bands.h"
#include "image/row_bands.h"

namespace {

// Rows of a reduced level that are made at a time. A Gaussian does its horizontal half again for the rows that it
// reaches beyond a band, so bands are high where it reaches far.
constexpr int reducedBandRows = 128;
constexpr int farthestReach = reducedBandRows / 4;

// reduced = lines, under the level's Gaussian if it has one, at half size, without ever having the whole of the blurred
// level. False, and nothing done, where that isn't possible or doesn't pay.
bool reduceByBands(const LevelLines& lines, const Level& level, KivImage& reduced, Progress* progress) {
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
    if (progress != nullptr && progress->isCancelled()) return;
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
    if (progress != nullptr) progress->add(level.taps() * count / reduced.size.height);
  });
  return true;
}

// R(1).
std::unique_ptr<KivImage> putTogether(const Pyramid& pyramid, const float* gains, float baseGain) {
  auto rebuilt = std::make_unique<KivImage>();
  *rebuilt = pyramid.reduced(levelCount - 1);
  if (baseGain != 1.0F) *rebuilt *= baseGain;
  for (std::size_t i = levelCount - 1; i > 0; --i) {
    const KivImage& level = pyramid.reduced(i - 1);
    auto next = std::make_unique<KivImage>(level.size, 1);
    const LevelRebuild rebuild(level.size, pyramid.reduced(i), *rebuilt, gains[i]);
    eachBand(level.size.height, LevelRebuild::bandRows, rebuild.scratchBytes(),
             [&](int first, int count, void* scratch) {
               rebuild.prepare(first, count, scratch);
               for (int y = 0; y < count; ++y)
                 rebuild.line(y, level.At(0, 0, first + y), next->At(0, 0, first + y), scratch);
             });
    rebuilt = std::move(next);
  }
  return rebuilt;
}

}  // namespace

Pyramid::Pyramid(const LevelLines& finest, const Levels& levels, Progress* progress) : levels_(levels) {
  KivImage made;     // the finest level, where a low-pass needs the whole of it
  KivImage lowpass;  // one block for all levels, each in its corner: new memory is dearer than the room
  for (std::size_t i = 0; i < levels.size(); ++i) {
    reduced_[i].Init(halved(levels[i].size), 1);
    const LevelLines lines = i == 0 ? finest : LevelLines(reduced_[i - 1]);
    if (reduceByBands(lines, levels[i], reduced_[i], progress)) {
      if (progress != nullptr) progress->check();
      continue;
    }
    const KivImage& level = lines.whole(made);
    if (levels[i].lowPass == LowPass::none) {
      reduced_[i].Resize(level, reduced_[i].size);
      continue;
    }
    if (lowpass.channels == 0) lowpass.Init(level.size, 1);
    KivImage corner = lowpass.ROI(0, 0, level.size.width, level.size.height);
    applyLowPass(corner, level, levels[i], progress);
    reduced_[i].Resize(corner, reduced_[i].size);
  }
}

LevelRebuild::LevelRebuild(IppiSize size, const KivImage& reduced, const KivImage& rebuilt, float gain)
    : width_(size.width),
      reduced_(reduced),
      rebuilt_(rebuilt),
      gain_(gain),
      expansion_(reduced.size, size),
      rowBytes_(rowBytesFor(size.width)) {}

std::int64_t LevelRebuild::scratchBytes() const {
  return std::int64_t{2 * bandRows} * rowBytes_ + (expansion_.scratchBytes() + 63) / 64 * 64;
}

void LevelRebuild::prepare(int first, int count, void* scratch) const {
  float* const expanded = static_cast<float*>(scratch);
  float* const rebuilt = expanded + bandRows * rowFloats();
  float* const forExpansion = rebuilt + bandRows * rowFloats();
  expansion_.rows(reduced_.planes[0], reduced_.stride, 0, first, count, expanded, rowBytes_, forExpansion);
  expansion_.rows(rebuilt_.planes[0], rebuilt_.stride, 0, first, count, rebuilt, rowBytes_, forExpansion);
}

void LevelRebuild::line(int i, const float* level, float* to, const void* scratch) const {
  const float* const expanded = static_cast<const float*>(scratch) + i * rowFloats();
  const float* const rebuilt = expanded + bandRows * rowFloats();
  equalizerKernels().weighBandLine(to, rebuilt, level, expanded, gain_, width_);
}

WeighedPyramid::WeighedPyramid(const Pyramid& pyramid, const float* gains, float baseGain)
    : rebuilt_(putTogether(pyramid, gains, baseGain)),
      finest_(pyramid.size(), pyramid.reduced(0), *rebuilt_, gains[0]) {}

void WeighedPyramid::rebuildInto(KivImage& target) const {
  eachBand(target.size.height, LevelRebuild::bandRows, finest_.scratchBytes(),
           [&](int first, int count, void* scratch) {
             finest_.prepare(first, count, scratch);
             for (int y = 0; y < count; ++y) {
               float* const line = target.At(0, 0, first + y);
               finest_.line(y, line, line, scratch);
             }
           });
}
