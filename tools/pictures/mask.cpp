#include "pictures/mask.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "pictures/errors.h"
#include "pictures/samples.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

namespace {

// Turns a picture that is upright into one whose orientation tag will turn it upright.
VImage turnedAway(const VImage& upright, int orientation) {
  VImage picture = upright.copy();
  // A quarter turn is undone by the other one, every other orientation by itself.
  picture.set(VIPS_META_ORIENTATION, orientation == 6 ? 8 : orientation == 8 ? 6 : orientation);
  return picture.autorot();
}

// The other side of a picture scaled to a given side is the one wanted, give or take a pixel on the smaller of the two.
bool sameProportions(const VImage& a, const VImage& b) {
  const double scale = static_cast<double>(b.width()) / a.width();
  return std::abs(a.height() * scale - b.height()) < std::max(1.0, scale);
}

// One band of floats, 0 for black and 1 for white.
VImage greyOf(VImage mask) {
  const double white = whiteOf(mask.format());
  const bool alpha = mask.bands() == 2 || mask.bands() == 4;
  const VImage opacity = alpha ? mask[mask.bands() - 1] / white : VImage::black(mask.width(), mask.height()) + 1;
  if (alpha) mask = mask.extract_band(0, VImage::option()->set("n", mask.bands() - 1));
  return (mask.cast(VIPS_FORMAT_FLOAT).bandmean() / white * opacity).cast(VIPS_FORMAT_FLOAT);
}

// The mask as it lies over the picture, still of its own size. Throws vips::VError, and Failure where it doesn't fit.
VImage fittingMask(const Picture& loaded, const std::string& file, const Picture& picture) {
  VImage mask = turnedAway(greyOf(imageOf(loaded).autorot()), picture.orientation());
  if (!sameProportions(mask, imageOf(picture))) {
    const auto size = [](int width, int height) { return std::to_string(width) + " x " + std::to_string(height); };
    throw Failure(file,
                  "this mask of " + size(mask.width(), mask.height()) +
                      " pixels has other proportions than the picture of " + size(picture.width(), picture.height()),
                  Cause::Settings);
  }
  return mask;
}

VImage scaledToSizeOf(const Picture& picture, const VImage& mask) {
  if (mask.width() == picture.width() && mask.height() == picture.height()) return mask;
  return mask.resize(static_cast<double>(picture.width()) / mask.width(),
                     VImage::option()
                         ->set("vscale", static_cast<double>(picture.height()) / mask.height())
                         ->set("kernel", VIPS_KERNEL_LINEAR));
}

}  // namespace

double requireThatMaskFits(const std::string& mask, const Picture& picture) {
  return translated(mask, Cause::Damaged, [&] {
    Notes notes;
    const Picture opened = openPicture(mask, notes);
    fittingMask(opened, mask, picture);
    return static_cast<double>(opened.width()) * opened.height() * opened.channels() * bytesOf(opened.samples());
  });
}

Picture maskOver(const std::string& mask, const Picture& picture) {
  return translated(mask, Cause::Damaged, [&] {
    return pictureOf(scaledToSizeOf(picture, fittingMask(loadPicture(mask), mask, picture)), mask);
  });
}

std::vector<float> maskWeights(const std::string& mask, const Picture& picture) {
  const Picture over = maskOver(mask, picture);
  const VImage memory = translated(mask, Cause::Damaged, [&] { return imageOf(over).copy_memory(); });
  std::vector<float> weights(static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height()));
  std::memcpy(weights.data(), memory.data(), weights.size() * sizeof(float));
  for (float& weight : weights) weight = weight > 0 ? std::min(weight, 1.0F) : 0.0F;
  return weights;
}

}  // namespace orbel
