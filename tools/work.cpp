#include "work.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string_view>

#include "estimate.h"
#include "failure.h"
#include "finish.h"
#include "made_with.h"
#include "metadata.h"
#include "settings_file.h"
#include "target_file.h"
#include "text_file.h"
#include "thumbnail.h"

using vips::VImage;

namespace {

// The document's depth. Between two depths, and at 16 bits, floats: the host's own 16 bits have half the levels of a
// file's.
int documentDepth(VipsBandFormat read, VipsBandFormat written, const WorkOptions& options) {
  if (options.hostDepth) return *options.hostDepth;
  if (isBlended(options.choice)) return 32;
  const bool bytes = read == VIPS_FORMAT_UCHAR && written == VIPS_FORMAT_UCHAR;
  return bytes ? 8 : 32;
}

// A result is for nobody's eyes that its source isn't for.
mode_t permissionsFor(const Job& job) { return job.input == pipeName ? 0666 : permissionsOf(job.input); }

int bytesOf(VipsBandFormat format) { return static_cast<int>(vips_format_sizeof(format)); }

void equalize(const Job& job, const WorkOptions& options, int depth, VipsBandFormat samples, VImage& picture) {
  Document document = documentOf(picture, depth);
  Document original;
  std::vector<float> weights;
  if (isBlended(options.choice)) {
    weights = weightsOf(options.choice, picture);
    original = document;
  }
  try {
    runPlugin(options.entry, settingsFor(options.choice, picture.width(), picture.height()).script(), document);
  } catch (const PluginRefusal& refusal) {
    throw Failure(job.input, refusal.what(), Cause::PluginRefused);
  }
  blend(original, weights, document);
  picture = withSamples(picture, samples);
  putDocument(document, picture);
  renewThumbnail(picture);
}

// Where the input's extension chose the output's format, and the input is of another one.
void noteMisnomer(const std::string& input, const VImage& opened, const FileFormat& written, Notes& notes) {
  const FileFormat* const content = formatOf(opened);
  if (content == nullptr || findFormat(extensionOf(input)) != &written ||
      std::string_view(content->loader.name) == written.loader.name) {
    return;
  }
  notes.push_back("is a " + content->name + " file by its content, and comes back as " + written.name +
                  ", by its name");
}

void append(Notes& notes, const Notes& more) { notes.insert(notes.end(), more.begin(), more.end()); }

void writeTo(TargetFile& target, const Job& job, const WorkOptions& options, const FileFormat& format,
             const SaveOptions& save, const VImage& picture, const AskExiftool& askExiftool, Notes& notes) {
  const MadeWith made{options.madeWith, target.begun()};
  const VImage whole = withHiddenXmp(job.input, picture, format, askExiftool);
  savePicture(remembering(made, whole, format), format, target.descriptor(), job.output, save);
  append(notes, completeMetadata(job.input, whole, &target, format, askExiftool));
  target.replace(options.keepsOriginal);
  if (options.writesRecipe) {
    writeTextFile(recipeOf(job.output), settingsText(options.choice, "") + recipeLine(made), job.overwriteRecipe,
                  permissionsFor(job));
  }
}

}  // namespace

Outcome settled(const Job& job, Outcome::Status status, const Failure& why) {
  Outcome outcome;
  outcome.input = job.input;
  outcome.output = job.output;
  outcome.status = status;
  outcome.cause = why.cause;
  outcome.about = why.file;
  outcome.reason = why.reason;
  return outcome;
}

Outcome work(const Job& job, const WorkOptions& options, const Surroundings& surroundings) {
  const auto start = std::chrono::steady_clock::now();
  Outcome outcome;
  outcome.input = job.input;
  outcome.output = job.output;
  outcome.notes = job.notes;
  if (std::error_code none; std::filesystem::is_directory(job.input, none)) {
    throw Failure(job.input, "is a folder; -r takes the pictures in it", Cause::Unreadable);
  }
  const VImage opened = openPicture(job.input, outcome.notes, options.page);
  const FileFormat& format = writableFormat(job.extension, job.output);
  requireThatFormatKnows(format, options.save, job.output);
  const bool overwrites = job.overwrite || job.update;
  if (job.output != pipeName) {
    requireReplaceable(job.output, overwrites, job.makesFolder);
    if (options.writesRecipe) requireReplaceable(recipeOf(job.output), job.overwriteRecipe, job.makesFolder);
  }
  const VipsBandFormat samples = options.samples.value_or(opened.format());
  const int depth = documentDepth(opened.format(), samples, options);
  requireThatFormatHolds(format, opened, samples, job.output);
  noteMisnomer(job.input, opened, format, outcome.notes);
  const SaveOptions save =
      keepPacking(job.input, options.page.value_or(1), opened, format, options.save, outcome.notes);
  const int width = opened.width();
  const int height = opened.height();
  requireThatHostHolds(job.input, width, height);
  const Settings settings = settingsFor(options.choice, width, height);
  requireThatWindowsFit(job.input, settings, width, height);
  requireShortWork(job.input, settings, width, height, options.threads, options.mostMinutes);
  outcome.width = width;
  outcome.height = height;
  outcome.bits = 8 * bytesOf(samples);
  const RunShape shape{width,
                       height,
                       opened.bands(),
                       colourBands(opened),
                       bytesOf(opened.format()),
                       bytesOf(samples),
                       depth / 8,
                       isBlended(options.choice),
                       format.name == "HEIF"};
  outcome.memory = memoryOf(shape, settings);
  outcome.estimatedSeconds = secondsOf(shape, settings, options.threads);
  requireMemory(job.input, outcome.memory, options.mostMemory);
  requireThatMaskFits(options.choice, opened);
  surroundings.waitFor(outcome.memory);
  outcome.status = Outcome::Status::Done;
  if (options.dryRun) {
    requireThatItDecodes(opened, job.input);
    if (options.choice.mask) weightsOf(options.choice, opened);
    return outcome;
  }
  if (job.output == pipeName) {
    VImage picture = decodePicture(opened, job.input);
    equalize(job, options, depth, samples, picture);
    const MadeWith made{options.madeWith, std::time(nullptr)};
    savePictureToPipe(remembering(made, picture, format), format, save);
    append(outcome.notes, completeMetadata(job.input, picture, nullptr, format, surroundings.askExiftool));
  } else {
    // Opened before the work, so that a target that can't be written doesn't cost the work first.
    TargetFile target(job.output, overwrites, permissionsFor(job));
    VImage picture = decodePicture(opened, job.input);
    equalize(job, options, depth, samples, picture);
    writeTo(target, job, options, format, save, picture, surroundings.askExiftool, outcome.notes);
  }
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return outcome;
}
