#include "pictures/finish.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "files/failure.h"
#include "pictures/image_file.h"

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
  const double white = mask.format() == VIPS_FORMAT_UCHAR ? 255 : mask.format() == VIPS_FORMAT_USHORT ? 65535 : 1;
  const bool alpha = mask.bands() == 2 || mask.bands() == 4;
  const VImage opacity = alpha ? mask[mask.bands() - 1] / white : VImage::black(mask.width(), mask.height()) + 1;
  if (alpha) mask = mask.extract_band(0, VImage::option()->set("n", mask.bands() - 1));
  return (mask.cast(VIPS_FORMAT_FLOAT).bandmean() / white * opacity).cast(VIPS_FORMAT_FLOAT);
}

// The mask as it lies over the picture, still of its own size.
VImage fittingMask(const VImage& loaded, const std::string& file, const VImage& picture) {
  const int orientation = vips_image_get_orientation(picture.get_image());
  VImage mask = turnedAway(greyOf(loaded.autorot()), orientation);
  if (!sameProportions(mask, picture)) {
    const auto size = [](const VImage& image) {
      return std::to_string(image.width()) + " x " + std::to_string(image.height());
    };
    throw Failure(file,
                  "this mask of " + size(mask) + " pixels has other proportions than the picture of " + size(picture),
                  Cause::Settings);
  }
  return mask;
}

std::vector<float> maskOf(const std::string& file, const VImage& picture) {
  try {
    VImage mask = fittingMask(loadPicture(file), file, picture);
    if (mask.width() != picture.width() || mask.height() != picture.height()) {
      mask = mask.resize(static_cast<double>(picture.width()) / mask.width(),
                         VImage::option()
                             ->set("vscale", static_cast<double>(picture.height()) / mask.height())
                             ->set("kernel", VIPS_KERNEL_LINEAR));
    }
    std::vector<float> weights(static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height()));
    const VImage memory = mask.copy_memory();
    std::memcpy(weights.data(), memory.data(), weights.size() * sizeof(float));
    return weights;
  } catch (const vips::VError& error) {
    throw Failure(file, error.what(), Cause::Damaged);
  }
}

}  // namespace

Settings settingsFor(const SettingsChoice& choice, int width, int height) {
  Settings settings = choice.settings;
  if (!choice.refEdge) return settings;
  const double scale = static_cast<double>(std::max(width, height)) / *choice.refEdge;
  for (const char* key : {"RAD1", "RAD2", "RAD3", "RAD4", "RAD5"}) {
    settings.setNumber(key, settings.value(key) * scale);
  }
  return settings;
}

bool isBlended(const SettingsChoice& choice) { return choice.mix != 100 || choice.mask; }

void requireThatMaskFits(const SettingsChoice& choice, const VImage& picture) {
  if (!choice.mask) return;
  try {
    Notes notes;
    fittingMask(openPicture(*choice.mask, notes), *choice.mask, picture);
  } catch (const vips::VError& error) {
    throw Failure(*choice.mask, error.what(), Cause::Damaged);
  }
}

std::vector<float> weightsOf(const SettingsChoice& choice, const VImage& picture) {
  const auto mix = static_cast<float>(choice.mix / 100);
  std::vector<float> weights;
  if (!choice.mask) {
    weights.assign(static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height()), mix);
    return weights;
  }
  weights = maskOf(*choice.mask, picture);
  // A float mask may hold anything; what is no number counts as black.
  for (float& weight : weights) weight = weight > 0 ? std::min(weight, 1.0F) * mix : 0.0F;
  return weights;
}

void blend(const Document& original, const std::vector<float>& weights, Document& result) {
  if (weights.empty()) return;
  for (std::size_t plane = 0; plane < result.planes.size(); ++plane) {
    const auto* const from = reinterpret_cast<const float*>(original.planes[plane].data());
    auto* const to = reinterpret_cast<float*>(result.planes[plane].data());
    for (std::size_t i = 0; i < weights.size(); ++i) {
      const float weight = weights[i];
      // Apart, because 0 times an infinity is no number.
      if (weight == 0) {
        to[i] = from[i];
      } else if (weight < 1) {
        to[i] = from[i] * (1 - weight) + to[i] * weight;
      }
    }
  }
}

}  // namespace orbel
