// A whole run, and its plan.

#include "api/run.h"

#include <string>

#include "api/door.h"
#include "api/picture.h"
#include "api/result.h"
#include "api/settings.h"

namespace {

void fill(const Plan& plan, const BandStack::Bytes& bytes, double taps, orbel_plan& to) {
  for (std::size_t i = 0; i < plan.levels.size(); ++i) {
    const Level& level = plan.levels[i];
    const bool bilateral = level.lowPass == LowPass::bilateral;
    const int lowPass = bilateral ? ORBEL_BILATERAL : level.lowPass == LowPass::gaussian ? ORBEL_GAUSSIAN : ORBEL_NONE;
    const bool hasRoom = static_cast<int>(i) < plan.refused;
    to.levels[i] = {level.size.width, level.size.height, lowPass, bilateral && hasRoom ? level.window() : 0,
                    level.taps()};
  }
  to.taps = taps;
  to.bytes = bytes.run;
  to.stack_bytes = bytes.stack;
  to.refused_band = plan.refused;
  to.largest_radius = plan.largestRadius;
}

void requireAdmitted(const Plan& plan, const orbel_settings& settings) {
  if (plan.isAdmitted()) return;
  throw Refusal{ORBEL_TOO_LARGE,
                "bands[" + std::to_string(plan.refused) + "].radius is " + textOf(settings.bands[plan.refused].radius) +
                    ", too large for edge protection on this picture; at most " + textOf(plan.largestRadius)};
}

}  // namespace

std::optional<orbel_picture> maskFor(const orbel_options& options, const orbel_picture& picture) {
  if (options.mask == nullptr) return std::nullopt;
  const orbel_picture mask = requirePicture(options.mask, "mask");
  if (mask.channels != 1 || mask.width != picture.width || mask.height != picture.height) {
    throw Refusal{ORBEL_BAD_PICTURE, "mask: it must have one channel and the picture's size"};
  }
  return mask;
}

std::optional<Progress> progressFor(const orbel_options& options, double work) {
  if (options.progress == nullptr) return std::nullopt;
  return std::optional<Progress>(std::in_place, work,
                                 [&options](double done) { return options.progress(options.context, done) == 0; });
}

Plan requirePlan(const ScaledParameters& parameters, const orbel_settings& settings, const orbel_picture& picture) {
  const Plan plan = parameters.planFor({picture.width, picture.height});
  requireAdmitted(plan, settings);
  return plan;
}

orbel_status orbel_equalize(const orbel_settings* settings, const orbel_picture* source, const orbel_picture* target,
                            const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    const orbel_settings s = requireSettings(settings);
    const orbel_picture from = requirePicture(source, "source");
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    const std::optional<orbel_picture> mask = maskFor(o, from);
    const ScaledParameters parameters = parametersOf(s);
    const Plan plan = requirePlan(parameters, s, from);

    const PictureLines lines(from);
    const int planes = s.luminance != 0 ? 1 : coloursOf(from);
    std::optional<Progress> progress = progressFor(o, BandStack::work(plan, planes));
    const BandStack stack(plan, coloursOf(from), s.luminance != 0, lines, progress ? &*progress : nullptr);
    PictureResult result(s, lines, to, mask ? &*mask : nullptr);
    stack.weigh(parameters.gains, parameters.baseGain, s.half != 0, lines, result, progress ? &*progress : nullptr);
  });
}

orbel_status orbel_plan_init(orbel_plan* plan, size_t size) {
  const orbel_status status = initRecord(plan, size);
  if (status == ORBEL_OK) plan->refused_band = ORBEL_BANDS;
  return status;
}

orbel_status orbel_plan_run(const orbel_settings* settings, const orbel_picture* source, const orbel_options* options,
                            orbel_plan* plan) {
  return guarded(options, [&](const orbel_options&) {
    requireRecord(plan, "plan");
    const orbel_settings s = requireSettings(settings);
    const orbel_picture picture = requireShape(source, "source");
    const Plan levels = parametersOf(s).planFor({picture.width, picture.height});
    const int colours = coloursOf(picture);
    BandStack::Bytes bytes{};
    if (levels.isAdmitted())
      bytes = BandStack::bytesOf(levels, colours, s.luminance != 0, PictureResult::rows, threadsHere());
    bytes.stack += static_cast<double>(bytesOf(picture.samples)) * picture.channels * picture.width * picture.height;
    fill(levels, bytes, levels.taps(s.luminance != 0 ? 1 : colours), *plan);
    requireAdmitted(levels, s);
  });
}

orbel_status orbel_options_init(orbel_options* options, size_t size) { return initRecord(options, size); }
