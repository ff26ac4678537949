#include "equalizer/wavelets.h"

#include <algorithm>
#include <limits>

#include "equalizer/equalizer_kernels.h"
#include "equalizer/progress.h"
#include "equalizer/wavelet_kernels.h"
#include "image/parallel.h"
#include "image/row_bands.h"

namespace {

constexpr int reach = 2;  // of the spline, in taps
constexpr int taps = 2 * reach + 1;

// to = the level's low-pass of from; wide has room for a plane with what is read beside it.
void smooth(KivImage& to, const KivImage& from, const Level& level, KivImage& wide, Progress* progress) {
  const int width = level.size.width;
  const int height = level.size.height;
  const int margin = reach * level.spacing;
  eachIndex(height, [&](int y) {
    const float* const line = from.At(0, 0, y);
    float* const row = wide.At(0, 0, y);
    std::fill(row, row + margin, line[0]);
    std::copy(line, line + width, row + margin);
    std::fill(row + margin + width, row + margin + width + margin, line[width - 1]);
  });
  const auto smoothLine = waveletKernels().smoothLine;
  // A band with edges in it: every tap counts in full. Of a threshold near to nothing too large a number would come,
  // and of equal samples none.
  const float square = level.threshold * level.threshold;
  const float steepness = level.keepsEdges ? std::min(1.0F / square, std::numeric_limits<float>::max()) : 0.0F;
  eachIndex(height, [&](int y) {
    if (progress != nullptr && progress->isCancelled()) return;
    const float* rows[taps];
    for (int j = 0; j < taps; ++j) {
      rows[j] = wide.At(0, margin, std::clamp(y + (j - reach) * level.spacing, 0, height - 1));
    }
    smoothLine(to.At(0, 0, y), rows, level.spacing, steepness, width);
    if (progress != nullptr) progress->add(level.taps() / height);
  });
  if (progress != nullptr) progress->check();
}

int widest(const Levels& levels) {
  int spacing = 0;
  for (const Level& level : levels) spacing = std::max(spacing, level.spacing);
  return levels[0].size.width + 2 * reach * spacing;
}

double planeBytes(int width, int height) { return static_cast<double>(rowBytesFor(width)) * height; }

}  // namespace

WaveletPlanes::WaveletPlanes(KivImage&& all, const Levels& levels, Progress* progress) : PlaneStack(std::move(all)) {
  const IppiSize size = planes().size;
  KivImage wide(widest(levels), size.height, 1);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    smoothed_[i].Init(size, planes().channels);
    for (int p = 0; p < planes().channels; ++p) {
      const KivImage from = after(i).Plane(p);
      KivImage to = smoothed_[i].Plane(p);
      if (levels[i].lowPass == LowPass::none) {
        to.Copy(from);
      } else {
        smooth(to, from, levels[i], wide, progress);
      }
    }
  }
}

KivImage WaveletPlanes::weigh(const float* gains, float baseGain, Progress*) const {
  const int width = planes().size.width;
  const EqualizerKernels& kernels = equalizerKernels();
  KivImage weighed;
  weighed.Init(planes());
  for (int p = 0; p < planes().channels; ++p) {
    eachIndex(planes().size.height, [&](int y) {
      float* const line = weighed.At(p, 0, y);
      kernels.weightLine(line, after(levelCount).At(p, 0, y), baseGain, width);
      for (std::size_t i = levelCount; i-- > 0;) {
        kernels.weighBandLine(line, line, after(i).At(p, 0, y), after(i + 1).At(p, 0, y), gains[i], width);
      }
    });
  }
  return weighed;
}

StackBytes WaveletPlanes::bytesOf(const Levels& levels, int planes) {
  const IppiSize size = levels[0].size;
  const double plane = planeBytes(size.width, size.height);
  const double kept = planes * (1 + levelCount) * plane;
  return {kept + planeBytes(widest(levels), size.height), kept, planes * plane};
}
