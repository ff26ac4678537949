#include "equalizer/low_pass.h"

#include "equalizer/bilateral_filter.h"
#include "equalizer/progress.h"

void applyLowPass(KivImage& to, const KivImage& from, const Level& level, Progress* progress) {
  switch (level.lowPass) {
    case LowPass::none:
      to.Copy(from);
      break;
    case LowPass::gaussian:
      to.GaussBlurFast(from, level.radius, lowPassReach);
      if (progress != nullptr) progress->add(level.taps());
      break;
    case LowPass::bilateral:
      bilateralStd({to.planes[0], to.stride / 4}, {from.planes[0], from.stride / 4}, level.size, level.window(),
                   level.radius, level.threshold, progress);
      break;
  }
  if (progress != nullptr) progress->check();
}
