#include "batch/job.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "batch/equalize.h"
#include "batch/estimate.h"
#include "batch/made_with.h"
#include "batch/streamed.h"
#include "files/failure.h"
#include "files/file_state.h"
#include "files/target_file.h"
#include "files/text_file.h"
#include "pictures/formats.h"
#include "pictures/mask.h"
#include "pictures/metadata.h"
#include "pictures/stream.h"
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
      writeToPipe(equalize());
    } else {
      // Opened before the work, so that a target that can't be written doesn't cost the work first.
      TargetFile target(job_.output, overwrites(), permissionsFor(job_));
      write(equalize(), target);
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
    if (job_.input != pipeName) read_.emplace(job_.input);
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
    if (options_.crop) requireThatPartLiesIn(*options_.crop, *opened_, job_.input);
    outcome_.width = opened_->width();
    outcome_.height = opened_->height();
    outcome_.bits = depthOf(samples_);
    run_ = options_.plugin == nullptr ? options_.settings.run
                                      : scaledTo(outcome_.width, outcome_.height, options_.settings.run);
    checkCost(options_.settings.mask ? requireThatMaskFits(*options_.settings.mask, *opened_) : 0);
  }

  // With a reference edge a picture passes by in lines, else it is in memory as a whole.
  bool isInLines() const { return run_.reference_edge != 0; }

  // Else what is decoded is kept for the result.
  bool isReadTwice() const {
    const FileFormat* const format = formatOf(*opened_);
    return job_.input != pipeName && format != nullptr && format->loader.has(readsTwice);
  }

  double heldBytes() const {
    const FileFormat* const format = formatOf(*opened_);
    const int bytesOfPixel = opened_->channels() * bytesOf(opened_->samples());
    const bool isKnown = format != nullptr && job_.input != pipeName;
    const double reading = isKnown ? format->loader.heldBytesOf(job_.input, bytesOfPixel) : 0;
    return reading + format_->saver.heldBytes;
  }

  void checkCost(double maskBytes) {
    if (options_.plugin != nullptr) requireThatHostHolds(job_.input, outcome_.width, outcome_.height);
    const orbel_plan plan = planFor(job_.input, run_, opened_->shape(), options_.threads);
    requireShortWork(job_.input, run_, plan, options_.threads, options_.mostMinutes);
    RunShape shape = shapeOf(*opened_);
    shape.writtenBytes = bytesOf(samples_);
    shape.documentBytes = options_.plugin != nullptr ? documentDepth() / 8 : 0;
    shape.blended = isBlended(options_.settings);
    shape.inLines = isInLines();
    shape.kept = !isReadTwice();
    if (options_.crop && (!isInLines() || hasThumbnail(*opened_))) {
      const double pixels = static_cast<double>(options_.crop->width) * options_.crop->height;
      shape.cutBytes = pixels * shape.channels * shape.writtenBytes;
    }
    shape.maskBytes = maskBytes;
    shape.heldBytes = heldBytes();
    shape.nanosecondsPerPixel = format_->saver.nanosecondsPerPixel;
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

  Picture equalize() { return isInLines() ? equalizeInLines() : equalizeWhole(); }

  // In its own place, where its samples stay what they are.
  Picture equalizeWhole() {
    opened_ = decodePicture(*opened_, job_.input);  // what the image library holds to read it goes
    const Picture picture = *opened_;
    const Picture result = picture.samples() == samples_ ? picture : roomFor(picture, samples_);
    if (options_.plugin != nullptr) {
      std::vector<float> mask;
      if (options_.settings.mask) mask = maskWeights(*options_.settings.mask, picture);
      equalizeByPlugin(job_.input, options_.plugin, run_, documentDepth(), picture.record(), result.record(), mask);
    } else {
      const std::optional<Picture> mask = maskInMemory(picture);
      const orbel_picture weights = mask ? mask->record() : orbel_picture{};
      equalizeByEngine(job_.input, run_, options_.threads, picture.record(), result.record(),
                       mask ? &weights : nullptr);
    }
    Picture whole = options_.crop ? cutOut(result, *partToWrite()) : result;
    renewThumbnail(whole, whole);
    return whole;
  }

  std::optional<Rectangle> partToWrite() const {
    return options_.crop ? std::optional(asStored(*options_.crop, *opened_)) : std::nullopt;
  }

  // What is read twice has to be one picture.
  void requireThatItIsTheSame() const {
    if (isInLines() && isReadTwice()) read_->requireUnchanged();
  }

  Picture equalizeInLines() {
    const bool twice = isReadTwice();
    if (!twice) opened_ = decodePicture(*opened_, job_.input);
    streamed_.emplace(job_.input, run_, opened_->shape(), surroundings_.tellPart);
    std::optional<SmallCopy> small;
    if (hasThumbnail(*opened_) && !options_.crop) small.emplace(*opened_);
    readInLines(*opened_, job_.input, [&](const orbel_picture& lines) {
      if (small) small->take(lines);
      return streamed_->take(lines);
    });
    std::optional<Picture> copy;
    if (small) {
      copy = small->copy();
      small.reset();
      streamed_->equalizeCopy(*copy, maskInMemory(*copy));
    }
    Notes known;
    if (twice) {
      opened_ = openPicture(job_.input, known, options_.page);
      requireThatItIsTheSame();
    }
    std::optional<Picture> mask;
    if (options_.settings.mask) mask = maskOver(*options_.settings.mask, *opened_);
    const std::optional<Rectangle> part = partToWrite();
    Picture result = streamed_->result(*opened_, part, samples_, mask);
    if (part && hasThumbnail(result)) {
      Picture cut = decodePicture(result, job_.input);
      renewThumbnail(cut, cut);
      return cut;
    }
    if (copy) renewThumbnail(result, *copy);
    return result;
  }

  std::optional<Picture> maskInMemory(const Picture& picture) const {
    if (!options_.settings.mask) return std::nullopt;
    return decodePicture(maskOver(*options_.settings.mask, picture), job_.input);
  }

  void writeToPipe(const Picture& picture) {
    savePictureToPipe(remembering({options_.madeWith, std::time(nullptr)}, picture, *format_), *format_, save_);
    requireThatItIsTheSame();
    append(outcome_.notes, completeMetadata(job_.input, picture, nullptr, *format_, surroundings_.askExiftool));
  }

  void write(const Picture& picture, TargetFile& target) {
    const MadeWith made{options_.madeWith, target.begun()};
    const Picture whole = withHiddenXmp(job_.input, picture, *format_, surroundings_.askExiftool);
    savePicture(remembering(made, whole, *format_), *format_, target.descriptor(), job_.output, save_);
    requireThatItIsTheSame();
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
  std::optional<FileState> read_;  // the input, where it is a file
  std::optional<Picture> opened_;
  const FileFormat* format_ = nullptr;
  SampleType samples_{};
  SaveOptions save_;
  orbel_settings run_{};
  std::optional<StreamedRun> streamed_;
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
