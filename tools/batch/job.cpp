#include "batch/job.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "batch/equalize.h"
#include "batch/estimate.h"
#include "batch/made_with.h"
#include "files/failure.h"
#include "files/target_file.h"
#include "files/text_file.h"
#include "pictures/formats.h"
#include "pictures/mask.h"
#include "pictures/metadata.h"
#include "pictures/thumbnail.h"
#include "settings/settings_file.h"

namespace orbel {

namespace {

// A result is for nobody's eyes that its source isn't for.
mode_t permissionsFor(const Job& job) { return job.input == pipeName ? 0666 : permissionsOf(job.input); }

// Where the input's extension chose the output's format, and the input is of another one.
void noteMisnomer(const std::string& input, const Picture& opened, const FileFormat& written, Notes& notes) {
  const FileFormat* const content = formatOf(opened);
  if (content == nullptr || findFormat(extensionOf(input)) != &written ||
      std::string_view(content->loader.name) == written.loader.name) {
    return;
  }
  notes.push_back("is a " + content->name + " file by its content, and comes back as " + written.name +
                  ", by its name");
}

void append(Notes& notes, const Notes& more) { notes.insert(notes.end(), more.begin(), more.end()); }

// A job on its way.
class Road {
 public:
  Road(const Job& job, const JobOptions& options, const Surroundings& surroundings)
      : job_(job), options_(options), surroundings_(surroundings) {
    outcome_.input = job.input;
    outcome_.output = job.output;
    outcome_.notes = job.notes;
  }

  Outcome go() {
    const auto start = std::chrono::steady_clock::now();
    check();
    surroundings_.waitFor(outcome_.memory);
    if (options_.dryRun) {
      requireThatItDecodes(*opened_, job_.input);
      if (options_.settings.mask) maskWeights(*options_.settings.mask, *opened_);
    } else if (isPiped()) {
      writeToPipe(equalize(decode()));
    } else {
      // Opened before the work, so that a target that can't be written doesn't cost the work first.
      TargetFile target(job_.output, overwrites(), permissionsFor(job_));
      write(equalize(decode()), target);
    }
    outcome_.status = Outcome::Status::Done;
    if (!options_.dryRun) {
      outcome_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    return outcome_;
  }

 private:
  bool isPiped() const { return job_.output == pipeName; }
  bool overwrites() const { return job_.overwrite || job_.update; }

  // All that can be known from the headers.
  void check() {
    if (std::error_code none; std::filesystem::is_directory(job_.input, none)) {
      throw Failure(job_.input, "is a folder; -r takes the pictures in it", Cause::Unreadable);
    }
    opened_ = openPicture(job_.input, outcome_.notes, options_.page);
    format_ = &writableFormat(job_.extension, job_.output);
    requireThatFormatKnows(*format_, options_.save, job_.output);
    if (!isPiped()) {
      requireReplaceable(job_.output, overwrites(), job_.makesFolder);
      if (options_.writesRecipe) requireReplaceable(recipeOf(job_.output), job_.overwriteRecipe, job_.makesFolder);
    }
    samples_ = options_.samples.value_or(opened_->samples());
    requireThatFormatHolds(*format_, *opened_, samples_, job_.output);
    noteMisnomer(job_.input, *opened_, *format_, outcome_.notes);
    save_ = keepPacking(job_.input, options_.page.value_or(1), *opened_, *format_, options_.save, outcome_.notes);
    outcome_.width = opened_->width();
    outcome_.height = opened_->height();
    outcome_.bits = depthOf(samples_);
    run_ = runFor(options_.settings, outcome_.width, outcome_.height);
    checkCost();
    if (options_.settings.mask) requireThatMaskFits(*options_.settings.mask, *opened_);
  }

  void checkCost() {
    if (options_.plugin != nullptr) requireThatHostHolds(job_.input, outcome_.width, outcome_.height);
    const orbel_plan plan = planFor(job_.input, run_, opened_->shape(), options_.threads);
    requireShortWork(job_.input, run_, plan, options_.threads, options_.mostMinutes);
    const RunShape shape = {opened_->channels(),
                            opened_->colours(),
                            bytesOf(opened_->samples()),
                            bytesOf(samples_),
                            options_.plugin != nullptr ? documentDepth() / 8 : 0,
                            isBlended(options_.settings),
                            format_->saver.nanosecondsPerPixel};
    outcome_.memory = memoryOf(plan, shape);
    outcome_.estimatedSeconds = secondsOf(plan, shape, options_.threads);
    requireMemory(job_.input, outcome_.memory, options_.mostMemory);
  }

  // Between two depths, and at 16 bits, floats: the host's own 16 bits have half the levels of a file's.
  int documentDepth() const {
    if (options_.hostDepth) return *options_.hostDepth;
    const bool bytes = opened_->samples() == SampleType::bytes && samples_ == SampleType::bytes;
    return bytes && !isBlended(options_.settings) ? 8 : 32;
  }

  Picture decode() const { return decodePicture(*opened_, job_.input); }

  // In its own place, where its samples stay what they are.
  Picture equalize(const Picture& picture) const {
    Picture result = picture.samples() == samples_ ? picture : roomFor(picture, samples_);
    std::vector<float> mask;
    if (options_.settings.mask) mask = maskWeights(*options_.settings.mask, picture);
    if (options_.plugin != nullptr) {
      equalizeByPlugin(job_.input, options_.plugin, run_, documentDepth(), picture.record(), result.record(), mask);
    } else {
      equalizeByEngine(job_.input, run_, options_.threads, picture.record(), result.record(), mask);
    }
    renewThumbnail(result);
    return result;
  }

  void writeToPipe(const Picture& picture) {
    savePictureToPipe(remembering({options_.madeWith, std::time(nullptr)}, picture, *format_), *format_, save_);
    append(outcome_.notes, completeMetadata(job_.input, picture, nullptr, *format_, surroundings_.askExiftool));
  }

  void write(const Picture& picture, TargetFile& target) {
    const MadeWith made{options_.madeWith, target.begun()};
    const Picture whole = withHiddenXmp(job_.input, picture, *format_, surroundings_.askExiftool);
    savePicture(remembering(made, whole, *format_), *format_, target.descriptor(), job_.output, save_);
    append(outcome_.notes, completeMetadata(job_.input, whole, &target, *format_, surroundings_.askExiftool));
    target.replace(options_.keepsOriginal);
    if (options_.writesRecipe) {
      writeTextFile(recipeOf(job_.output), settingsText(options_.settings, "") + recipeLine(made), job_.overwriteRecipe,
                    permissionsFor(job_));
    }
  }

  const Job& job_;
  const JobOptions& options_;
  const Surroundings& surroundings_;
  Outcome outcome_;
  std::optional<Picture> opened_;
  const FileFormat* format_ = nullptr;
  SampleType samples_{};
  SaveOptions save_;
  orbel_settings run_{};
};

}  // namespace

Outcome outcomeOf(const Job& job, Outcome::Status status, const Failure& why) {
  Outcome outcome;
  outcome.input = job.input;
  outcome.output = job.output;
  outcome.status = status;
  outcome.cause = why.cause;
  outcome.about = why.file;
  outcome.reason = why.reason;
  return outcome;
}

Outcome doJob(const Job& job, const JobOptions& options, const Surroundings& surroundings) {
  return Road(job, options, surroundings).go();
}

}  // namespace orbel
