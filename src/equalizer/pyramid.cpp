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
// level.
class ReductionByBands {
 public:
  // Throws NO_MEMORY_ERROR.
  ReductionByBands(const Level& level, RowsOfLines rowsOfLines)
      : level_(level),
        blurs_(level.lowPass == LowPass::gaussian),
        reach_(blurs_ ? gaussianReach(level.radius, lowPassReach) : 0),
        canPay_(level.lowPass != LowPass::bilateral && reach_ <= farthestReach),
        mostBlurred_(canPay_ ? std::min(2 * reducedBandRows + 1 + reach_, level.size.height) : 0),
        mostRows_(rowsOfLines.inScratch(std::min(mostBlurred_ + 2 * reach_, level.size.height))),
        rowBytes_(rowBytesFor(level.size.width)),
        gaussian_(level.size, blurs_ && canPay_ ? level.radius : 0.0F, lowPassReach, mostBlurred_),
        halving_(level.size, halved(level.size)) {}

  // Where it is possible, and less work than by whole planes.
  bool pays() const {
    return canPay_ && gaussian_.isServed() == blurs_ && halving_.isServed() && scratchBytes() <= INT32_MAX;
  }

  // Of each thread.
  std::int64_t scratchBytes() const {
    return std::int64_t{mostRows_ + (blurs_ ? mostBlurred_ : 0)} * rowBytes_ +
           std::max(gaussian_.scratchBytes(), halving_.scratchBytes());
  }

  void run(const LevelLines& lines, KivImage& reduced, Progress* progress) const {
    const IppiSize size = level_.size;
    const std::ptrdiff_t rowFloats = rowBytes_ / static_cast<int>(sizeof(float));
    eachBand(reduced.size.height, reducedBandRows, scratchBytes(), [&](int first, int count, void* scratch) {
      if (progress != nullptr && progress->isCancelled()) return;
      float* const forLines = static_cast<float*>(scratch);
      float* const blurred = forLines + mostRows_ * rowFloats;
      float* const rest = blurred + (blurs_ ? mostBlurred_ : 0) * rowFloats;
      Resizer::Rows rows = halving_.sourceRows(first, count);
      // Down to the edge where the kernel would reach beyond it; at the top the second band begins far behind its
      // reach.
      if (size.height - rows.end < reach_) rows.end = size.height;
      const int top = std::max(rows.first - reach_, 0);
      LevelLines::Rows source = lines.rows(top, std::min(rows.end + reach_, size.height), forLines, rowBytes_);
      if (blurs_) {
        const float* const from = source.first + (rows.first - top) * (source.stride / static_cast<int>(sizeof(float)));
        gaussian_.rows(from, source.stride, rows.first, rows.end - rows.first, blurred, rowBytes_, rest);
        source = {blurred, rowBytes_};
      }
      halving_.rows(source.first, source.stride, rows.first, first, count, reduced.At(0, 0, first), reduced.stride,
                    rest);
      if (progress != nullptr) progress->add(level_.taps() * count / reduced.size.height);
    });
    if (progress != nullptr) progress->check();
  }

 private:
  Level level_;
  bool blurs_;
  int reach_;
  bool canPay_;
  int mostBlurred_;  // rows of a band's blurred level
  int mostRows_;     // rows of scratch for lines that are made
  int rowBytes_;
  GaussianBands gaussian_;
  Resizer halving_;
};

double planeBytes(IppiSize size) { return static_cast<double>(rowBytesFor(size.width)) * size.height; }

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
                 rebuild.line(y, 0, level.size.width, level.At(0, 0, first + y), next->At(0, 0, first + y), scratch);
             });
    rebuilt = std::move(next);
  }
  return rebuilt;
}

}  // namespace

Pyramid::Pyramid(const LevelLines& finest, const Levels& levels, Progress* progress) : levels_(levels) {
  KivImage lowpass;  // one block for all levels, each in its corner: new memory is dearer than the room
  for (std::size_t i = 0; i < levels.size(); ++i) {
    KivImage made;
    reduced_[i].Init(halved(levels[i].size), 1);
    const LevelLines lines = i == 0 ? finest : LevelLines(reduced_[i - 1]);
    if (const ReductionByBands bands(levels[i], lines.rowsOfLines()); bands.pays()) {
      bands.run(lines, reduced_[i], progress);
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

Pyramid::Bytes Pyramid::bytesOf(const Levels& levels, RowsOfLines finest, int threads) {
  Bytes bytes{};
  double lowpass = 0;
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const Level& level = levels[i];
    const ReductionByBands bands(level, i == 0 ? finest : RowsOfLines{false, 0});
    bytes.kept += planeBytes(halved(level.size));
    double making = bytes.kept;
    if (bands.pays()) {
      making += static_cast<double>(threads) * static_cast<double>(bands.scratchBytes());
    } else {
      if (lowpass == 0 && level.lowPass != LowPass::none) lowpass = planeBytes(level.size);
      making += (i == 0 && finest.areMade ? planeBytes(level.size) : 0) + lowPassBytes(level, threads);
    }
    bytes.making = std::max(bytes.making, making + lowpass);
  }
  // R(1) and what it is made of.
  bytes.weighing = planeBytes(levels[1].size) + planeBytes(levels[2].size);
  bytes.scratch = static_cast<double>(
      LevelRebuild::scratchBytesFor(Resizer(levels[1].size, levels[0].size), rowBytesFor(levels[0].size.width)));
  return bytes;
}

LevelRebuild::LevelRebuild(IppiSize size, const KivImage& reduced, const KivImage& rebuilt, float gain)
    : reduced_(reduced),
      rebuilt_(rebuilt),
      gain_(gain),
      expansion_(reduced.size, size),
      rowBytes_(rowBytesFor(size.width)) {}

std::int64_t LevelRebuild::scratchBytesFor(const Resizer& expansion, int rowBytes) {
  return std::int64_t{2 * bandRows} * rowBytes + (expansion.scratchBytes() + 63) / 64 * 64;
}

void LevelRebuild::prepare(int first, int count, void* scratch) const {
  float* const expanded = static_cast<float*>(scratch);
  float* const rebuilt = expanded + bandRows * rowFloats();
  float* const forExpansion = rebuilt + bandRows * rowFloats();
  expansion_.rows(reduced_.planes[0], reduced_.stride, 0, first, count, expanded, rowBytes_, forExpansion);
  expansion_.rows(rebuilt_.planes[0], rebuilt_.stride, 0, first, count, rebuilt, rowBytes_, forExpansion);
}

void LevelRebuild::line(int i, int left, int width, const float* level, float* to, const void* scratch) const {
  const float* const expanded = static_cast<const float*>(scratch) + i * rowFloats() + left;
  const float* const rebuilt = expanded + bandRows * rowFloats();
  equalizerKernels().weighBandLine(to, rebuilt, level, expanded, gain_, width);
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
               finest_.line(y, 0, target.size.width, line, line, scratch);
             }
           });
}
