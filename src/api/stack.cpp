// A picture taken apart once and weighed often.

#include "api/stack.h"

#include "api/door.h"
#include "api/look.h"
#include "api/settings.h"
#include "equalizer/reference_stack.h"

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

std::unique_ptr<orbel_stack> newStack(const orbel_settings& settings, const orbel_picture& shape) {
  auto stack = std::make_unique<orbel_stack>(settings, shape);
  requireAdmitted(stack->task, settings);
  return stack;
}

// The whole picture of a stack, for what goes over all of it.
orbel_picture requireWhole(const orbel_stack& stack, const orbel_picture* source) {
  const orbel_picture from = requirePicture(source, "source");
  if (from.width != stack.shape.width || from.height != stack.shape.height) {
    throw Refusal{ORBEL_BAD_PICTURE, "source: it is not of the stack's size"};
  }
  requireStacksChannels(stack, from);
  return from;
}

}  // namespace

const orbel_stack& requireStack(const orbel_stack* stack) {
  if (stack == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack is null"};
  if (stack->begun != nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack: lines of its picture have not been added"};
  return *stack;
}

orbel_settings requireSettingsOf(const orbel_stack& stack, const orbel_settings* settings) {
  const orbel_settings s = requireSettings(settings);
  if (!takeApartAlike(s, stack.settings)) {
    throw Refusal{ORBEL_BAD_SETTING,
                  "radius, threshold, edges, luminance, reference_edge and form must be those of the stack"};
  }
  return s;
}

void requireStacksChannels(const orbel_stack& stack, const orbel_picture& picture) {
  if (picture.channels != stack.shape.channels) {
    throw Refusal{ORBEL_BAD_PICTURE, "source: it has not the channels of the stack's picture"};
  }
}

orbel_status orbel_stack_create(const orbel_settings* settings, const orbel_picture* source,
                                const orbel_options* options, orbel_stack** stack) {
  if (stack != nullptr) *stack = nullptr;
  return guarded(options, [&](const orbel_options& o) {
    if (stack == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack is null"};
    const orbel_settings s = requireSettings(settings);
    const orbel_picture picture = requirePicture(source, "source");
    std::unique_ptr<orbel_stack> made = newStack(s, picture);
    std::optional<Progress> progress = progressFor(o, made->task.takingApart());
    made->bands = takeApart(made->task, PictureLines(picture), progress ? &*progress : nullptr);
    *stack = made.release();
  });
}

orbel_status orbel_stack_begin(const orbel_settings* settings, const orbel_picture* shape, const orbel_options* options,
                               orbel_stack** stack) {
  if (stack != nullptr) *stack = nullptr;
  return guarded(options, [&](const orbel_options&) {
    if (stack == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "stack is null"};
    const orbel_settings s = requireSettings(settings);
    const orbel_picture picture = requireShape(shape, "shape");
    std::unique_ptr<orbel_stack> made = newStack(s, picture);
    if (made->task.isFull) {
      throw Refusal{ORBEL_BAD_SETTING, "reference_edge is 0; line by line goes with a reference edge, or wavelets"};
    }
    auto bands = std::make_unique<ReferenceStack>(made->task.picture, made->task.plan, made->task.planes);
    made->begun = bands.get();
    made->bands = std::move(bands);
    *stack = made.release();
  });
}

orbel_status orbel_stack_add(orbel_stack* stack, const orbel_picture* lines, const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    if (stack == nullptr || stack->begun == nullptr || stack->begun->isBroken()) {
      throw Refusal{ORBEL_BAD_ARGUMENT, "stack: it takes no lines"};
    }
    const orbel_picture next = requirePicture(lines, "lines");
    if (next.width != stack->shape.width || next.channels != stack->shape.channels ||
        next.height > stack->shape.height - stack->begun->linesAdded()) {
      throw Refusal{ORBEL_BAD_PICTURE, "lines: they aren't of the stack's picture"};
    }
    const bool areLast = next.height == stack->shape.height - stack->begun->linesAdded();
    std::optional<Progress> progress = progressFor(
        o, linesWork({next.width, next.height}) + (areLast ? stack->task.plan.taps(stack->task.planes.count()) : 0));
    const PictureLines picture(next);
    stack->begun->add(PlaneLines(picture, stack->task.planes, next.width), next.height,
                      progress ? &*progress : nullptr);
    if (areLast) stack->begun = nullptr;
  });
}

orbel_status orbel_stack_weigh(const orbel_stack* stack, const orbel_settings* settings, const orbel_picture* source,
                               const orbel_picture* target, const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    const orbel_stack& taken = requireStack(stack);
    const orbel_settings s = requireSettingsOf(taken, settings);
    const orbel_picture from = requireWhole(taken, source);
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    const std::optional<orbel_picture> mask = maskFor(o, from);
    std::optional<Progress> progress = progressFor(o, taken.bands->weighingWork() + taken.task.puttingTogether());
    Progress* const told = progress ? &*progress : nullptr;
    const WeighedPicture weighed(taken.task, *taken.bands, s, taken.task.picture, told);
    weighed.render({0, 0, from.width, from.height}, PictureLines(from), to, mask ? &*mask : nullptr, told);
  });
}

orbel_status orbel_stack_band(const orbel_stack* stack, int32_t band, const orbel_picture* source,
                              const orbel_picture* target, const orbel_options* options) {
  return guarded(options, [&](const orbel_options&) {
    const orbel_stack& taken = requireStack(stack);
    if (band < 0 || band > ORBEL_BANDS) throw Refusal{ORBEL_BAD_ARGUMENT, "band is not 0 to 5"};
    const orbel_picture from = requireWhole(taken, source);
    const orbel_picture to = requirePicture(target, "target");
    if (to.width != from.width || to.height != from.height || to.channels != taken.task.planes.count()) {
      throw Refusal{ORBEL_BAD_PICTURE, "target: it must have the stack's size, and a channel for each plane"};
    }
    float gains[levelCount] = {};
    if (band < levelCount) gains[band] = 1.0F;
    const std::unique_ptr<Look> look =
        taken.bands->weigh(gains, band == levelCount ? 1.0F : 0.0F, taken.task.picture, nullptr);
    const PictureLines lines(from);
    BandLines result(to, band < levelCount && to.samples != ORBEL_FLOAT32);
    putPlanesTogether(*look, {0, 0, from.width, from.height}, PlaneLines(lines, taken.task.planes, from.width), result);
  });
}

void orbel_stack_free(orbel_stack* stack) { delete stack; }
