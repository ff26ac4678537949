#include "batch/streamed.h"

#include "pictures/stream.h"

namespace orbel {

namespace {

// Empty where a call went well. It works alone: it is called on many threads at once.
std::string errorOf(const orbel_look* look, const PartOf& part) {
  EngineOptions options("", 1);
  options.get()->mask = part.mask;
  const orbel_status status =
      orbel_look_render(look, part.column, part.row, &part.source, &part.target, options.get());
  return status == ORBEL_OK ? "" : options.message();
}

}  // namespace

// The image library reads on while lines are taken, so these don't take more than their own thread.
StreamedRun::StreamedRun(const std::string& file, const orbel_settings& run, const orbel_picture& shape)
    : file_(file), run_(run), options_(file, 1) {
  orbel_stack* begun = nullptr;
  options_.require(orbel_stack_begin(&run_, &shape, options_.get(), &begun));
  stack_.reset(begun);
}

bool StreamedRun::take(const orbel_picture& lines) {
  status_ = orbel_stack_add(stack_.get(), &lines, options_.get());
  return status_ == ORBEL_OK;
}

Picture StreamedRun::result(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                            const std::optional<Picture>& mask) {
  options_.require(status_);
  orbel_look* made = nullptr;
  options_.require(orbel_look_create(stack_.get(), &run_, options_.get(), &made));
  look_.reset(made);
  return rendered(source, part, samples, mask, [look = look_.get()](const PartOf& p) { return errorOf(look, p); });
}

}  // namespace orbel
