#include "api/look.h"

#include "api/door.h"
#include "api/result.h"
#include "api/settings.h"
#include "api/stack.h"

WeighedPicture::WeighedPicture(const Task& task, const BandStack& stack, const orbel_settings& settings, IppiSize size,
                               Progress* progress)
    : size_(size), planes_(task.planes), settings_(settings) {
  const ScaledParameters parameters = parametersOf(settings);
  look_ = stack.weigh(parameters.gains, parameters.baseGain, size, progress);
  const std::int64_t overlay = std::int64_t{settings.overlay} * size.width / task.picture.width;
  if (overlay > 0) overlay_.emplace(size, static_cast<int>(overlay));
}

void WeighedPicture::render(const KivRect& part, const PictureLines& source, const orbel_picture& target,
                            const orbel_picture* mask, Progress* progress) const {
  const PlaneLines lines(source, planes_, part.width);
  PictureResult result(part, overlay_ ? &*overlay_ : nullptr, settings_.mix, source, target, mask);
  putTogether(*look_, part, lines, {settings_.limit != 0, settings_.half != 0}, result, progress);
}

struct orbel_look {
  const orbel_stack& stack;
  WeighedPicture weighed;
};

namespace {

KivRect requirePart(const orbel_look& look, std::int32_t column, std::int32_t row, const orbel_picture& part) {
  const IppiSize picture = look.weighed.size();
  if (column < 0 || row < 0 || part.width > picture.width - column || part.height > picture.height - row) {
    throw Refusal{ORBEL_BAD_PICTURE, "source: it reaches beyond the look's picture"};
  }
  requireStacksChannels(look.stack, part);
  return {column, row, part.width, part.height};
}

}  // namespace

orbel_status orbel_look_create(const orbel_stack* stack, const orbel_settings* settings, const orbel_options* options,
                               orbel_look** look) {
  const orbel_picture* const shape = stack != nullptr ? &stack->shape : nullptr;
  return orbel_look_create_in_size(stack, settings, shape != nullptr ? shape->width : 1,
                                   shape != nullptr ? shape->height : 1, options, look);
}

orbel_status orbel_look_create_in_size(const orbel_stack* stack, const orbel_settings* settings, int32_t width,
                                       int32_t height, const orbel_options* options, orbel_look** look) {
  if (look != nullptr) *look = nullptr;
  return guarded(options, [&](const orbel_options& o) {
    if (look == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "look is null"};
    const orbel_stack& taken = requireStack(stack);
    const orbel_settings s = requireSettingsOf(taken, settings);
    orbel_picture shape = taken.shape;
    shape.width = width;
    shape.height = height;
    requireShape(&shape, "look");
    if (taken.task.isFull && (width != taken.shape.width || height != taken.shape.height)) {
      throw Refusal{ORBEL_BAD_SETTING, "reference_edge is 0; other sizes go with a reference edge, or wavelets"};
    }
    std::optional<Progress> progress = progressFor(o, taken.bands->weighingWork());
    *look = new orbel_look{
        taken, WeighedPicture(taken.task, *taken.bands, s, {width, height}, progress ? &*progress : nullptr)};
  });
}

orbel_status orbel_look_render(const orbel_look* look, int32_t column, int32_t row, const orbel_picture* source,
                               const orbel_picture* target, const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    if (look == nullptr) throw Refusal{ORBEL_BAD_ARGUMENT, "look is null"};
    const orbel_picture from = requirePicture(source, "source");
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    const KivRect part = requirePart(*look, column, row, from);
    const std::optional<orbel_picture> mask = maskFor(o, from);
    std::optional<Progress> progress = progressFor(o, linesWork({part.width, part.height}));
    look->weighed.render(part, PictureLines(from), to, mask ? &*mask : nullptr, progress ? &*progress : nullptr);
  });
}

void orbel_look_free(orbel_look* look) { delete look; }
