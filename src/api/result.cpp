#include "api/result.h"

#include <algorithm>

namespace {

bool sameSamples(const orbel_picture& a, const orbel_picture& b, int channel) {
  return a.base[channel] == b.base[channel] && a.column_step == b.column_step && a.row_step == b.row_step;
}

}  // namespace

PictureResult::PictureResult(const KivRect& part, const CrossOverlay* overlay, double mix, const PictureLines& source,
                             const orbel_picture& target, const orbel_picture* mask)
    : part_(part),
      overlay_(overlay),
      source_(source),
      target_(target),
      mix_(static_cast<float>(mix / 100)),
      isBlended_(mix != 100 || mask != nullptr) {
  if (mask != nullptr) mask_.emplace(*mask);
}

void PictureResult::write(int y, float* const* colours, float* const* scratch) {
  const int count = coloursOf(target_.picture());
  for (int c = 0; overlay_ != nullptr && c < count; ++c) overlay_->draw(part_.y + y, part_.x, part_.width, colours[c]);
  if (isBlended_) blend(y, colours, scratch);
  carryAlpha(y, scratch[0]);
  for (int c = 0; c < count; ++c) target_.writeChannel(c, y, colours[c]);
}

// original * (1 - weight) + result * weight; at weights of 0 and 1 exactly the one or the other.
void PictureResult::blend(int y, float* const* colours, float* const* scratch) const {
  const int width = target_.picture().width;
  float* const weights = scratch[mostColours];
  if (mask_) {
    mask_->readChannel(0, y, weights);
    // A float mask may hold anything; what is no number counts as black.
    for (int x = 0; x < width; ++x) weights[x] = weights[x] > 0 ? std::min(weights[x], 1.0F) * mix_ : 0.0F;
  } else {
    std::fill(weights, weights + width, mix_);
  }
  source_.read(y, scratch);
  for (int c = 0; c < coloursOf(target_.picture()); ++c) {
    const float* const from = scratch[c];
    float* const to = colours[c];
    for (int x = 0; x < width; ++x) {
      const float weight = weights[x];
      // Apart, because 0 times an infinity is no number.
      if (weight == 0) {
        to[x] = from[x];
      } else if (weight < 1) {
        to[x] = from[x] * (1 - weight) + to[x] * weight;
      }
    }
  }
}

void PictureResult::carryAlpha(int y, float* scratch) const {
  const orbel_picture& source = source_.picture();
  const orbel_picture& target = target_.picture();
  if (!hasAlpha(target)) return;
  const int channel = target.channels - 1;
  if (source.samples != target.samples) {
    source_.readChannel(channel, y, scratch);
    target_.writeChannel(channel, y, scratch);
  } else if (!sameSamples(source, target, channel)) {
    copyLine(source, target, channel, y);
  }
}
