// A whole run, and its plan.

#include "api/run.h"

#include <algorithm>
#include <string>

#include "api/door.h"
#include "api/look.h"
#include "api/settings.h"
#include "equalizer/reference_stack.h"
#include "equalizer/working_size.h"

namespace {

void fill(const Task& task, orbel_plan& to) {
  const Plan& plan = task.plan;
  for (std::size_t i = 0; i < plan.levels.size(); ++i) {
    const Level& level = plan.levels[i];
    const bool bilateral = level.lowPass == LowPass::bilateral;
    const int lowPass = bilateral                            ? ORBEL_BILATERAL
                        : level.lowPass == LowPass::gaussian ? ORBEL_GAUSSIAN
                        : level.lowPass == LowPass::wavelet  ? ORBEL_WAVELET
                                                             : ORBEL_NONE;
    const bool hasRoom = static_cast<int>(i) < plan.refused;
    to.levels[i] = {level.size.width, level.size.height, lowPass, bilateral && hasRoom ? level.window() : 0,
                    level.taps()};
  }
  to.taps = plan.taps(task.planes.count());
  to.refused_band = plan.refused;
  to.largest_radius = plan.largestRadius / task.radii;
  to.bytes = to.stack_bytes = to.look_bytes = 0;
  if (!plan.isAdmitted()) return;
  const StackBytes bytes = task.bytes(threadsHere());
  const double lines = static_cast<double>(threadsHere()) * static_cast<double>(lineBytes(task.picture.width));
  to.bytes = std::max(bytes.making, bytes.kept + bytes.weighing + lines);
  to.stack_bytes = bytes.kept;
  to.look_bytes = bytes.weighing + lines;
}

// As of a setting: a wider Gaussian smooths no more, and asks for gigabytes of weights.
constexpr double mostOfRadius = 32767;

WorkingSize workingSizeOf(const orbel_settings& settings, const orbel_picture& shape) {
  return workingSize({shape.width, shape.height}, settings.reference_edge);
}

}  // namespace

Task::Task(const orbel_settings& settings, const orbel_picture& shape)
    : picture{shape.width, shape.height},
      planes{coloursOf(shape), settings.luminance != 0},
      isFull(settings.reference_edge == 0 && settings.form == ORBEL_PYRAMID),
      parameters(parametersOf(settings)),
      radii(workingSizeOf(settings, shape).radii) {
  if (radii != 1) {
    for (float& radius : parameters.radii) radius = static_cast<float>(std::min(radius * radii, mostOfRadius));
  }
  const IppiSize size = workingSizeOf(settings, shape).size;
  plan = settings.form == ORBEL_WAVELETS ? planWavelets(size, parameters.radii, parameters.thresholds, parameters.edges)
                                         : parameters.planFor(size);
}

double Task::takingApart() const { return plan.taps(planes.count()) + (isFull ? 0 : linesWork(picture)); }

StackBytes Task::bytes(int threads) const {
  return isFull ? FullStack::bytesOf(plan, planes, threads) : ReferenceStack::bytesOf(picture, plan, planes, threads);
}

void requireAdmitted(const Task& task, const orbel_settings& settings) {
  const Plan& plan = task.plan;
  if (plan.isAdmitted()) return;
  throw Refusal{ORBEL_TOO_LARGE, "bands[" + std::to_string(plan.refused) + "].radius is " +
                                     textOf(settings.bands[plan.refused].radius) +
                                     ", too large for edge protection on this picture; at most " +
                                     textOf(plan.largestRadius / task.radii)};
}

std::unique_ptr<BandStack> takeApart(const Task& task, const PictureLines& picture, Progress* progress) {
  const PlaneLines lines(picture, task.planes, task.picture.width);
  if (task.isFull) return std::make_unique<FullStack>(task.plan, lines, progress);
  auto stack = std::make_unique<ReferenceStack>(task.picture, task.plan, task.planes);
  stack->add(lines, task.picture.height, progress);
  return stack;
}

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

orbel_status orbel_equalize(const orbel_settings* settings, const orbel_picture* source, const orbel_picture* target,
                            const orbel_options* options) {
  return guarded(options, [&](const orbel_options& o) {
    const orbel_settings s = requireSettings(settings);
    const orbel_picture from = requirePicture(source, "source");
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    const std::optional<orbel_picture> mask = maskFor(o, from);
    const Task task(s, from);
    requireAdmitted(task, s);
    const PictureLines lines(from);
    std::optional<Progress> progress = progressFor(o, task.takingApart() + task.puttingTogether());
    Progress* const told = progress ? &*progress : nullptr;
    const std::unique_ptr<BandStack> stack = takeApart(task, lines, told);
    const WeighedPicture weighed(task, *stack, s, task.picture, told);
    weighed.render({0, 0, from.width, from.height}, lines, to, mask ? &*mask : nullptr, told);
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
    const Task task(s, requireShape(source, "source"));
    fill(task, *plan);
    requireAdmitted(task, s);
  });
}

orbel_status orbel_options_init(orbel_options* options, size_t size) { return initRecord(options, size); }
