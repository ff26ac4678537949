// A picture taken apart once and weighed often.

#include <cstdint>
#include <utility>
#include <vector>

#include "api/door.h"
#include "api/picture.h"
#include "api/result.h"
#include "api/run.h"
#include "api/settings.h"

namespace {

// The picture's channels beside each other, in the type that they have.
struct Copy {
  std::vector<unsigned char> samples;
  orbel_picture picture{};

  explicit Copy(const orbel_picture& source) {
    const auto pixel =
        static_cast<std::uint64_t>(bytesOf(source.samples)) * static_cast<std::uint64_t>(source.channels);
    const std::uint64_t row = pixel * static_cast<std::uint64_t>(source.width);
    const std::uint64_t all = row * static_cast<std::uint64_t>(source.height);
    if (all > PTRDIFF_MAX) throw NO_MEMORY_ERROR();  // samples may lie on each other, and here they don't
    samples.resize(static_cast<std::size_t>(all));
    orbel_picture_interleaved(&picture, sizeof picture, static_cast<orbel_samples>(source.samples), source.width,
                              source.height, source.channels, samples.data(), static_cast<std::ptrdiff_t>(row));
    eachIndex(source.height, [&](int y) {
      for (int c = 0; c < source.channels; ++c) copyLine(source, picture, c, y);
    });
  }
};

}  // namespace

struct orbel_stack {
  orbel_settings settings;
  Copy source;
  PictureLines lines;
  BandStack bands;

  orbel_stack(const orbel_settings& madeWith, Copy&& copy, const Plan& plan, Progress* progress)
      : settings(madeWith),
        source(std::move(copy)),
        lines(source.picture),
        bands(plan, coloursOf(source.picture), settings.luminance != 0, lines, progress) {}
};

namespace {

// The lines of a band on their way into a picture of its own channels.
class BandLines : public ResultLines {
 public:
  BandLines(const orbel_picture& target, bool aroundGrey) : target_(target), aroundGrey_(aroundGrey) {}

  void write(int y, float* const* planes, float* const*) override {
    const orbel_picture& target = target_.picture();
    for (int c = 0; c < target.channels; ++c) {
      for (int x = 0; aroundGrey_ && x < target.width; ++x) planes[c][x] += 0.5F;
      target_.writeChannel(c, y, planes[c]);
    }
  }

 private:
  PictureLines target_;
  bool aroundGrey_;
};

const orbel_stack& requireStack(const orbel_stack* stack) {
  if (stack == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack is null"};
  return *stack;
}

}  // namespace

orbel_status orbel_stack_create(const orbel_settings* settings, const orbel_picture* source,
                                const orbel_options* options, orbel_stack** stack) {
  if (stack != nullptr) *stack = nullptr;
  return guarded(options, [&](const orbel_options& o) {
    if (stack == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack is null"};
    const orbel_settings s = requireSettings(settings);
    const orbel_picture picture = requirePicture(source, "source");
    const Plan plan = requirePlan(parametersOf(s), s, picture);
    std::optional<Progress> progress = progressFor(o, plan.taps(s.luminance != 0 ? 1 : coloursOf(picture)));
    *stack = new orbel_stack(s, Copy(picture), plan, progress ? &*progress : nullptr);
  });
}

orbel_status orbel_stack_weigh(const orbel_stack* stack, const orbel_settings* settings, const orbel_picture* target,
                               const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    const orbel_stack& taken = requireStack(stack);
    const orbel_settings s = requireSettings(settings);
    if (!takeApartAlike(s, taken.settings)) {
      throw Refusal{ORBEL_BAD_SETTING, "radius, threshold, edges and luminance must be those of the stack"};
    }
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(taken.source.picture, to);
    const std::optional<orbel_picture> mask = maskFor(o, to);
    const ScaledParameters parameters = parametersOf(s);
    std::optional<Progress> progress = progressFor(o, taken.bands.weighingWork());
    PictureResult result(s, taken.lines, to, mask ? &*mask : nullptr);
    taken.bands.weigh(parameters.gains, parameters.baseGain, s.half != 0, taken.lines, result,
                      progress ? &*progress : nullptr);
  });
}

orbel_status orbel_stack_band(const orbel_stack* stack, int32_t band, const orbel_picture* target,
                              const orbel_options* options) {
  return guarded(options, [&](const orbel_options&) {
    const orbel_stack& taken = requireStack(stack);
    if (band < 0 || band > ORBEL_BANDS) throw Refusal{ORBEL_BAD_ARGUMENT, "band is not 0 to 5"};
    const orbel_picture to = requirePicture(target, "target");
    const orbel_picture& source = taken.source.picture;
    if (to.width != source.width || to.height != source.height || to.channels != taken.bands.planes()) {
      throw Refusal{ORBEL_BAD_PICTURE, "target: it must have the stack's size, and a channel for each plane"};
    }
    float gains[levelCount] = {};
    if (band < levelCount) gains[band] = 1.0F;
    BandLines result(to, band < levelCount && to.samples != ORBEL_FLOAT32);
    taken.bands.sum(gains, band == levelCount ? 1.0F : 0.0F, taken.lines, result);
  });
}

void orbel_stack_free(orbel_stack* stack) { delete stack; }
