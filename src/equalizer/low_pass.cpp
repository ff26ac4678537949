#include "equalizer/low_pass.h"

#include "equalizer/bilateral_filter.h"
#include "equalizer/progress.h"
#include "filters/gaussian_strips.h"

void applyLowPass(KivImage& to, const KivImage& from, const Level& level, Progress* progress) {
  switch (level.lowPass) {
    case LowPass::wavelet:  // no low-pass of a pyramid's level
    case LowPass::none:
      to.Copy(from);
      break;
    case LowPass::gaussian:
      blurInStrips(from, to, level.radius, lowPassReach, [&](double done) {
        if (progress != nullptr) progress->add(done * level.taps());
        return progress != nullptr && progress->isCancelled();
      });
      break;
    case LowPass::bilateral:
      bilateralStd({to.planes[0], to.stride / 4}, {from.planes[0], from.stride / 4}, level.size, level.window(),
                   level.radius, level.threshold, progress);
      break;
  }
  if (progress != nullptr) progress->check();
}

double lowPassBytes(const Level& level, int threads) {
  switch (level.lowPass) {
    case LowPass::wavelet:  // no low-pass of a pyramid's level
    case LowPass::none:
      return 0;
    case LowPass::gaussian:
      return blurInStripsBytes(level.size, level.radius, lowPassReach, threads);
    case LowPass::bilateral:
      return bilateralStdBytes(level.size, level.window(), threads);
  }
  return 0;
}
