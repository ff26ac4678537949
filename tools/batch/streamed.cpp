#include "batch/streamed.h"

#include <utility>

namespace orbel {

// The image library reads on while lines are taken, so these don't take more than their own thread.
StreamedRun::StreamedRun(const std::string& file, const orbel_settings& run, const orbel_picture& shape,
                         std::function<void(double)> tellPart)
    : file_(file),
      run_(run),
      options_(file, 1),
      tellPart_(std::move(tellPart)),
      pixels_(2.0 * shape.width * shape.height) {
  orbel_stack* begun = nullptr;
  options_.require(orbel_stack_begin(&run_, &shape, options_.get(), &begun));
  stack_.reset(begun);
}

bool StreamedRun::take(const orbel_picture& lines) {
  status_ = orbel_stack_add(stack_.get(), &lines, options_.get());
  passed(lines.height, lines.width);
  return status_ == ORBEL_OK;
}

Picture StreamedRun::result(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                            const std::optional<Picture>& mask) {
  options_.require(status_);
  orbel_look* made = nullptr;
  options_.require(orbel_look_create(stack_.get(), &run_, options_.get(), &made));
  look_.reset(made);
  if (part) pixels_ += static_cast<double>(part->width) * part->height - pixels_ / 2;
  return rendered(source, part, samples, mask, [this](const PartOf& p) { return render(p); });
}

void StreamedRun::equalizeCopy(const Picture& copy, const std::optional<Picture>& mask) {
  options_.require(status_);
  const orbel_picture record = copy.record();
  orbel_look* made = nullptr;
  options_.require(orbel_look_create_in_size(stack_.get(), &run_, record.width, record.height, options_.get(), &made));
  const Look look(made);
  EngineOptions options(file_, 1);
  const orbel_picture weights = mask ? mask->record() : orbel_picture{};
  if (mask) options.get()->mask = &weights;
  options.require(orbel_look_render(look.get(), 0, 0, &record, &record, options.get()));
}

// Empty where it went well. Called on several threads at once, so each call works alone.
std::string StreamedRun::render(const PartOf& part) {
  EngineOptions options(file_, 1);
  options.get()->mask = part.mask;
  const orbel_status status =
      orbel_look_render(look_.get(), part.column, part.row, &part.source, &part.target, options.get());
  passed(part.target.height, part.target.width);
  return status == ORBEL_OK ? "" : options.message();
}

void StreamedRun::passed(int lines, int width) {
  constexpr double step = 0.02;
  const std::lock_guard<std::mutex> alone(telling_);
  passed_ += static_cast<double>(lines) * width;
  if (passed_ < (lastTold_ + step) * pixels_) return;
  lastTold_ = passed_ / pixels_;
  tellPart_(lastTold_);
}

}  // namespace orbel
