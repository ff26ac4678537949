#include "equalizer/band_stack.h"

#include <algorithm>
#include <cstring>

#include "equalizer/equalizer_kernels.h"
#include "equalizer/luminance.h"
#include "equalizer/progress.h"
#include "equalizer/stepwise.h"
#include "image/row_bands.h"
#include "tone/colour_kernels.h"

namespace {

constexpr int rec601 = 2;  // selector of the luminance weights

constexpr double lineWork = 8;  // of putting a line together, for each sample, in taps

// Addresses of lines in scratch.
template <std::size_t count>
std::array<float*, count> linesAt(float* first, int rowBytes) {
  std::array<float*, count> lines{};
  for (std::size_t i = 0; i < count; ++i) lines[i] = floatsAt(first, static_cast<std::int64_t>(i) * rowBytes);
  return lines;
}

constexpr int most = BandStack::mostColours;

// The rows of scratch that a line takes: the colours, the luminance, and what became of each plane.
constexpr int rowsOfLine = most + 1 + most;

void luminanceLine(float* to, float* const* colours, int width) {
  static const LuminanceWeights weights = luminanceWeights(rec601);
  colourKernels().weightedSumLine(to, colours[0], colours[1], colours[2], width, weights.values);
}

// Grey stands for three equal colours.
void readColours(int y, int width, int colours, float* const* to, const ColourLines& lines) {
  lines.read(y, to);
  const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(float);
  for (int i = colours; i < most; ++i) std::memcpy(to[i], to[0], bytes);
}

}  // namespace

BandStack::BandStack(const Plan& plan, int colours, bool luminance, const ColourLines& lines, Progress* progress)
    : levels_(plan.levels), size_(plan.levels[0].size), colours_(colours), luminance_(luminance) {
  const int width = size_.width;
  const int rowBytes = rowBytesFor(width);
  const auto readPlane = [&](int plane, int y, float* to, float* scratch) {
    const auto all = linesAt<most>(scratch, rowBytes);
    readColours(y, width, colours_, all.data(), lines);
    if (luminance_) {
      luminanceLine(to, all.data(), width);
    } else {
      std::memcpy(to, all[static_cast<std::size_t>(plane)], static_cast<std::size_t>(width) * sizeof(float));
    }
  };
  if (!Pyramid::serves(size_)) small_.Init(size_, planes());
  for (int plane = 0; plane < planes(); ++plane) {
    const LineSource source{[&, plane](int y, float* to, float* scratch) { readPlane(plane, y, to, scratch); }, most};
    LevelLines planeLines(size_, source);
    if (Pyramid::serves(size_)) {
      pyramids_.emplace_back(planeLines, plan.levels, progress);
    } else {
      KivImage view = small_.Plane(plane);
      planeLines.readInto(view);
    }
  }
}

double BandStack::work(const Plan& plan, int planes) {
  const IppiSize size = plan.levels[0].size;
  return plan.taps(planes) + lineWork * size.width * size.height;
}

double BandStack::weighingWork() const {
  double taps = lineWork * size_.width * size_.height;
  if (Pyramid::serves(size_)) return taps;
  for (const Level& level : levels_) taps += planes() * level.taps();
  return taps;
}

template <typename Line>
void BandStack::eachLine(const float* gains, float baseGain, const ColourLines& lines, int scratchRows,
                         Progress* progress, Line line) const {
  const int width = size_.width;
  const int rowBytes = rowBytesFor(width);
  std::vector<WeighedPyramid> weighed;
  weighed.reserve(pyramids_.size());
  for (const Pyramid& pyramid : pyramids_) weighed.emplace_back(pyramid, gains, baseGain);
  KivImage small;
  if (weighed.empty()) {
    small = small_;
    for (int i = 0; i < planes(); ++i) {
      KivImage plane = small.Plane(i);
      equalizeStepwise(plane, levels_, gains, baseGain, progress);
    }
  }
  const std::int64_t rebuildBytes = weighed.empty() ? 0 : weighed.front().finest().scratchBytes();
  const std::int64_t lineBytes = std::int64_t{rowsOfLine + scratchRows} * rowBytes;
  const auto count = static_cast<std::int64_t>(weighed.size());
  if (progress != nullptr) progress->commit();
  eachBand(size_.height, LevelRebuild::bandRows, count * rebuildBytes + lineBytes,
           [&](int first, int rows, void* scratch) {
             const auto rebuildScratch = [&](std::size_t i) {
               return floatsAt(scratch, static_cast<std::int64_t>(i) * rebuildBytes);
             };
             float* const own = floatsAt(scratch, count * rebuildBytes);
             const auto colours = linesAt<most>(own, rowBytes);
             float* const luminance = floatsAt(own, std::int64_t{most} * rowBytes);
             const auto after = linesAt<most>(floatsAt(luminance, rowBytes), rowBytes);
             // No memory is asked for from here on: lines of the target have been written.
             std::array<float*, mostScratchRows> rest{};
             for (int i = 0; i < scratchRows; ++i) {
               rest[static_cast<std::size_t>(i)] = floatsAt(own, std::int64_t{rowsOfLine + i} * rowBytes);
             }
             for (std::size_t i = 0; i < weighed.size(); ++i) {
               weighed[i].finest().prepare(first, rows, rebuildScratch(i));
             }
             for (int i = 0; i < rows; ++i) {
               const int y = first + i;
               readColours(y, width, colours_, colours.data(), lines);
               if (luminance_) luminanceLine(luminance, colours.data(), width);
               for (std::size_t plane = 0; plane < static_cast<std::size_t>(planes()); ++plane) {
                 const float* const before = luminance_ ? luminance : colours[plane];
                 if (weighed.empty()) {
                   std::memcpy(after[plane], small.At(static_cast<int>(plane), 0, y),
                               static_cast<std::size_t>(width) * sizeof(float));
                 } else {
                   weighed[plane].finest().line(i, before, after[plane], rebuildScratch(plane));
                 }
               }
               line(y, colours.data(), luminance, after.data(), rest.data());
             }
           });
}

void BandStack::weigh(const float* gains, float baseGain, bool half, const ColourLines& lines, ResultLines& result,
                      Progress* progress) const {
  const int width = size_.width;
  const auto addChangeLine = equalizerKernels().addChangeLine;
  eachLine(gains, baseGain, lines, result.scratchRows(), progress,
           [&](int y, float* const* colours, const float* luminance, float* const* after, float* const* scratch) {
             if (luminance_) addChangeLine(colours[0], colours[1], colours[2], luminance, after[0], 1.0F, width);
             float* const* const changed = luminance_ ? colours : after;
             for (int c = 0; half && c < colours_; ++c) {
               for (int x = 0; x < width; ++x) changed[c][x] += 0.5F;
             }
             result.write(y, changed, scratch);
             if (progress != nullptr) progress->add(lineWork * size_.width);
           });
}

void BandStack::sum(const float* gains, float baseGain, const ColourLines& lines, ResultLines& result) const {
  eachLine(gains, baseGain, lines, result.scratchRows(), nullptr,
           [&](int y, float* const*, const float*, float* const* after, float* const* scratch) {
             result.write(y, after, scratch);
           });
}

BandStack::Bytes BandStack::bytesOf(const Plan& plan, int colours, bool luminance, int scratchRows, int threads) {
  const int planes = luminance ? 1 : colours;
  const IppiSize size = plan.levels[0].size;
  const double rowBytes = rowBytesFor(size.width);
  const double plane = rowBytes * size.height;
  const double lines = threads * (rowsOfLine + scratchRows) * rowBytes;
  if (!Pyramid::serves(size)) {
    // Beside the planes, their copy, and what the steps keep of one: three images and the bands.
    constexpr double imagesOfSteps = 3 + 1.34;
    return {(2 * planes + imagesOfSteps) * plane + lines, planes * plane};
  }
  const Pyramid::Bytes pyramid = Pyramid::bytesOf(plan.levels, most, threads);
  const double apart = (planes - 1) * pyramid.kept + pyramid.making;
  const double together = planes * (pyramid.kept + pyramid.weighing + threads * pyramid.scratch) + lines;
  return {std::max(apart, together), planes * pyramid.kept};
}
