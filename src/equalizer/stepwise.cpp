// The band decomposition step by step. All levels live in the top-left corners of three full-size images: the one
// passed in, which serves as scratch until it receives the result, lowpass and current.

#include "equalizer/stepwise.h"

#include "equalizer/low_pass.h"

namespace {

// The view of an image's top-left corner that a level works in.
KivImage corner(const KivImage& image, IppiSize size) { return image.ROI(0, 0, size.width, size.height); }

void copyCorner(KivImage& to, const KivImage& from, IppiSize size) { corner(to, size).Copy(corner(from, size)); }

void resizeCorner(KivImage& to, IppiSize toSize, const KivImage& from, IppiSize fromSize) {
  corner(to, toSize).Resize(corner(from, fromSize), toSize);
}

}  // namespace

void equalizeStepwise(KivImage& image, const Levels& levels, const float* gains, float baseGain, Progress* progress) {
  const IppiSize residualSize = halved(levels.back().size);

  KivImage lowpass(image.size, 1);
  KivImage current(image.size, 1);
  std::array<KivImage, levelCount> bands;
  current.Copy(image);

  for (std::size_t i = 0; i < levels.size(); ++i) {
    const IppiSize size = levels[i].size;
    const IppiSize half = halved(size);
    bands[i].Init(size, 1);
    KivImage filtered = corner(lowpass, size);
    applyLowPass(filtered, corner(current, size), levels[i], progress);
    resizeCorner(image, half, lowpass, size);
    copyCorner(lowpass, image, half);
    resizeCorner(image, size, lowpass, half);
    bands[i] = corner(current, size) - image;
    bands[i] *= gains[i];
    copyCorner(current, lowpass, half);
  }

  if (baseGain != 1.0F) corner(current, residualSize) *= baseGain;

  resizeCorner(image, levels.back().size, current, residualSize);
  corner(image, levels.back().size) += bands.back();
  for (std::size_t i = levels.size() - 1; i-- > 0;) {
    const IppiSize size = levels[i].size;
    // The two images take turns: a resize never has one image as source and target.
    resizeCorner(current, size, image, levels[i + 1].size);
    corner(image, size) = corner(current, size) + bands[i];
  }
}
