// orbel apply: the equalizer on image files.

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "batch/batch.h"
#include "batch/inputs.h"
#include "batch/made_with.h"
#include "batch/naming.h"
#include "batch/report.h"
#include "batch/up_to_date.h"
#include "cli/commands.h"
#include "cli/page_option.h"
#include "cli/settings_options.h"
#include "cli/work_limits.h"
#include "files/failure.h"
#include "files/machine.h"
#include "plugin/module.h"

namespace orbel {

namespace {

namespace fs = std::filesystem;

struct ApplyArguments {
  InputArguments inputs;
  NamingArguments naming;
  SettingsArguments settings;
  ReportOptions report;
  BatchOptions batch;
  JobOptions job;
  bool plain = false;  // the last name is the output
  bool noBackup = false;
  std::optional<SampleType> samples;
  std::optional<unsigned> jobs;
  std::optional<unsigned> threads;
  Limits limits;
  std::optional<std::string> plugin;
};

constexpr const char* notes =
    "Examples:\n"
    "  orbel in.jpg out.jpg --contrast 100,150,130,100,100\n"
    "      more texture, into a new file\n"
    "  orbel apply *.tif -o done/ -j 2 --contrast 100,140,160,130,110\n"
    "      many pictures into a folder, two at a time\n"
    "  orbel apply -r photos -o 'web/%s.jpg' -d u8 --quality 90 -u\n"
    "      a tree of folders as JPEG; again later, for those that are new or have changed, or with other settings\n"
    "  orbel apply --in-place --recipe portrait.png --radius 6 --edges on\n"
    "      in its place; the original stays as portrait.png_original, the settings as portrait.png.toml\n"
    "  orbel apply in.tif -o details.tif --factor 0 --half --planes --host-depth 32\n"
    "      detail alone, around middle grey\n"
    "\n"
    "--plugin and --host-depth play a module as Photoshop would. It gets 8-bit files as they are and 16-bit files as\n"
    "floats, because its host's 16 bits have 32769 levels only and a file's 65536; --host-depth 16 does as the host.\n"
    "It knows radii in pixels alone: a reference edge is turned into scaled radii.\n"
    "What a format can't hold is told in a note; exiftool, where it is installed, puts back what the image library\n"
    "leaves out.";

// Words, and the values that they stand for. (CLI11's own transformer takes those values for words, too.)
template <typename Value>
CLI::Validator oneOf(const std::vector<std::pair<std::string, Value>>& words) {
  return {[words](std::string& text) -> std::string {
            std::string known;
            for (const auto& [word, value] : words) {
              if (text == word) {
                text = std::to_string(static_cast<int>(value));
                return "";
              }
              known += (known.empty() ? "" : ", ") + word;
            }
            return orbel::quoted(text) + " is none of " + known;
          },
          ""};
}

Rectangle partFrom(const std::string& option, const std::string& text) {
  std::vector<std::string> numbers = split(text, '+');
  const std::vector<std::string> sides = split(numbers.front(), 'x');
  if (numbers.size() != 3 || sides.size() != 2) {
    throw SettingsError(option + ": " + orbel::quoted(text) + " is no WxH+X+Y in pixels");
  }
  const auto number = [&](const std::string& digits) { return integerFrom(option + " " + text, digits); };
  const Rectangle part = {number(numbers[1]), number(numbers[2]), number(sides[0]), number(sides[1])};
  if (part.width < 1 || part.height < 1 || part.x < 0 || part.y < 0) {
    throw SettingsError(option + ": " + orbel::quoted(text) + " is no part of a picture");
  }
  return part;
}

void describeInputs(CLI::App& command, ApplyArguments& a) {
  command.add_option("IN", a.inputs.names, "Pictures, or folders with -r; - is the standard input")->type_name("");
  const char* group = "Input";
  command.add_flag("-r,--recursive", a.inputs.recursive, "Take the pictures in folders, and in the folders therein")
      ->group(group);
  command
      .add_option("--from-list", a.inputs.list,
                  "Take the names in this file, or - for the standard input: one a line, or ended by zero bytes")
      ->group(group)
      ->type_name("FILE");
  addPageOption(command, a.job.page)->group(group);
}

void describeOutput(CLI::App& command, ApplyArguments& a) {
  const char* group = "Output";
  const std::vector<std::pair<std::string, SampleType>> depths = {
      {"u8", SampleType::bytes}, {"u16", SampleType::words}, {"float", SampleType::floats}};
  command
      .add_option(
          "-o,--output", a.naming.output,
          "File, folder, or pattern in which %s stands for the name and %e for the extension; - is the standard "
          "output (default: NAME_orbel.EXT beside the input)")
      ->group(group)
      ->type_name("OUT");
  command.add_flag("-f,--force", a.naming.overwrite, "Overwrite files that are there")->group(group);
  command
      .add_flag("-u,--update", a.naming.update,
                "Leave out what is up to date; overwrite what is older, or was made with other settings")
      ->group(group);
  auto* inPlace = command.add_flag("--in-place", a.naming.inPlace, "Overwrite the input, and keep it as NAME_original");
  inPlace->group(group);
  inPlace->excludes("--page");  // the others would be lost
  command.add_flag("--no-backup", a.noBackup, "Keep no original")->group(group)->needs(inPlace);
  command.add_option("--ext", a.naming.extension, "Extension of the output, which tells its format")
      ->group(group)
      ->type_name("EXT");
  command.add_option("-d,--depth", a.samples, "Samples of the output: u8, u16 or float (default: as the input)")
      ->group(group)
      ->type_name("DEPTH")
      ->transform(oneOf(depths));
  command
      .add_option_function<std::string>(
          "--crop", [&a](const std::string& text) { a.job.crop = partFrom("--crop", text); },
          "Write this part of the result alone, as the whole would have it: WxH+X+Y, of the picture as it is shown")
      ->group(group)
      ->type_name("PART");
  command.add_option("--quality", a.job.save.quality, "For JPEG, WebP, HEIF and JPEG 2000, 1 to 100 (default 95)")
      ->group(group)
      ->type_name("N")
      ->check(CLI::Range(1, 100).description(""));
  command
      .add_option("--compression", a.job.save.compression,
                  "TIFF: none, lzw, deflate, packbits, zstd; PNG: 0 to 9; WebP, HEIF, JPEG 2000: lossy, lossless; "
                  "all: keep, as the input (the default)")
      ->group(group)
      ->type_name("HOW");
  command.add_flag("--recipe", a.job.writesRecipe, "Write the settings beside the picture, as OUT.toml")->group(group);
}

void describeWork(CLI::App& command, ApplyArguments& a) {
  const char* group = "Work";
  const auto positive = CLI::Range(1U, 4096U).description("");
  command
      .add_flag("--dry-run", a.job.dryRun,
                "Write nothing; say what would be done, and the time and memory for it; pictures are read to their end")
      ->group(group);
  command.add_option("-j,--jobs", a.jobs, "Files at the same time (default 1)")
      ->group(group)
      ->type_name("N")
      ->check(positive);
  command.add_option("-t,--threads", a.threads, "Threads for each (default: the processors, shared out)")
      ->group(group)
      ->type_name("N")
      ->check(positive);
  addLimitOptions(command, a.limits, group);
  command.add_flag("--fail-fast", a.batch.failFast, "Begin no more files after one that failed")->group(group);
  command
      .add_option("--host-depth", a.job.hostDepth,
                  "Play the plug-in module as a host would, on a document of 8, 16 or 32 bits")
      ->group(group)
      ->type_name("BITS")
      ->transform(oneOf<int>({{"8", 8}, {"16", 16}, {"32", 32}}));
  command.add_option("--plugin", a.plugin, "Play this plug-in module as a host would, in place of the engine")
      ->group(group)
      ->type_name("FILE");
}

void describeMessages(CLI::App& command, ApplyArguments& a) {
  const char* group = "Messages";
  const std::vector<std::pair<std::string, Progress>> kinds = {{"auto", Progress::Auto},
                                                               {"bar", Progress::Bar},
                                                               {"lines", Progress::Lines},
                                                               {"json", Progress::Json},
                                                               {"none", Progress::None}};
  command
      .add_option("--progress", a.report.progress,
                  "bar, lines, json or none, on the error output (default auto: a bar on a terminal)")
      ->group(group)
      ->type_name("KIND")
      ->transform(oneOf(kinds));
  command.add_flag("--json", a.report.json, "Results as JSON, an object a line")->group(group);
  auto* quiet = command.add_flag("-q,--quiet", a.report.quiet, "Say nothing but errors");
  quiet->group(group);
  command
      .add_flag("-v,--verbose", a.batch.verbose,
                "Show the image library's warnings as well, and all files that are left alone")
      ->group(group)
      ->excludes(quiet);
}

double totalSize(const std::vector<Job>& jobs) {
  double bytes = 0;
  for (const Job& job : jobs) bytes += sizeOfFile(job.input);
  return bytes;
}

void takePlainForm(ApplyArguments& a) {
  if (!a.plain || a.naming.output) return;
  const std::vector<std::string>& names = a.inputs.names;
  if (names.size() != 2) {
    throw SettingsError("without a command it is: orbel IN OUT; for one picture or many: orbel apply " +
                        (names.empty() ? "IN" : names.front()) + (names.size() > 2 ? " ... -o FOLDER" : " -o OUT"));
  }
  a.naming.output = a.inputs.names.back();
  a.inputs.names.pop_back();
}

void requireWritable(const std::string& extension) {
  try {
    writableFormat(extension, "--ext " + extension);
  } catch (const Failure& wrong) {
    throw SettingsError(wrong.what());
  }
}

void shareOutMachine(ApplyArguments& a) {
  a.batch.processes = a.jobs.value_or(1);
  a.job.threads = static_cast<int>(a.threads.value_or(std::max(1U, processorCount() / a.batch.processes)));
  a.batch.memory = a.job.mostMemory = a.limits.mostMemory();
  a.job.mostMinutes = a.limits.mostMinutes;
}

// Among the results where programs read them, else in a line.
void tellOfLeftAlone(const Inputs& inputs, const ApplyArguments& a, Plan& plan) {
  if (a.report.json) {
    for (const std::string& file : inputs.leftAlone) {
      Job job;
      job.input = file;
      plan.outcomes.push_back(
          outcomeOf(job, Outcome::Status::Skipped, Failure(file, "is no picture by its name", Cause::NoPicture)));
    }
  } else if (!inputs.leftAlone.empty() && !a.report.quiet) {
    fmt::print(stderr, "orbel: {}\n", printable(leftAloneText(inputs, a.batch.verbose)));
  }
}

ExitCode apply(ApplyArguments& a) {
  a.job.settings = chooseSettings(a.settings);
  if (printIfAsked(a.settings, a.job.settings)) return exitGood;
  takePlainForm(a);
  shareOutMachine(a);
  if (isBlended(a.job.settings) && a.job.hostDepth.value_or(32) != 32) {
    throw SettingsError("--mix and --mask blend floats: they go with --host-depth 32 alone");
  }
  if (a.plugin || a.job.hostDepth) requireThatKeysSay(a.job.settings.run, "the plug-in");
  if (a.naming.extension) requireWritable(*a.naming.extension);
  if (a.inputs.names.empty() && !a.inputs.list) throw SettingsError("no picture is named (orbel --help tells more)");
  a.job.samples = a.samples;
  a.job.keepsOriginal = a.naming.inPlace && !a.noBackup;
  a.report.dryRun = a.job.dryRun;
  a.report.resultsToErrors = a.naming.output == pipeName;

  const Inputs inputs = listInputs(a.inputs);
  Plan plan = planJobs(inputs, a.naming, a.inputs.recursive);
  a.job.madeWith = settingsOf(a.job, a.plugin);
  leaveOutWhatIsUpToDate(plan, a.job);
  // The host's bits are the plug-in's: without --plugin, of the one that comes with orbel.
  if (a.plugin || a.job.hostDepth) a.job.plugin = loadEntry(a.plugin.value_or(ownModule()));
  tellOfLeftAlone(inputs, a, plan);
  Report report(a.report, plan.jobs.size() + plan.outcomes.size(), totalSize(plan.jobs));
  for (const Outcome& outcome : plan.outcomes) report.tell(outcome);
  for (const Job& job : plan.jobs) {
    if (a.job.dryRun || !job.makesFolder) continue;
    std::error_code shownByTheFile;
    fs::create_directories(fs::path(job.output).parent_path(), shownByTheFile);
  }
  const ExitCode code = runBatch(plan.jobs, a.job, a.batch, report);
  report.summarize();
  const bool anyFailed = std::any_of(plan.outcomes.begin(), plan.outcomes.end(),
                                     [](const Outcome& o) { return o.status == Outcome::Status::Failed; });
  return code == exitGood && anyFailed ? exitFileFailed : code;
}

}  // namespace

void addApplyCommand(CLI::App& program, ExitCode& outcome) {
  CLI::App* command = program.add_subcommand("apply", "Equalize pictures");
  command->footer(notes);
  const auto arguments = std::make_shared<ApplyArguments>();
  ApplyArguments& a = *arguments;
  command->add_flag("--plain", a.plain)->group("");
  describeInputs(*command, a);
  describeOutput(*command, a);
  addSettingsOptions(*command, a.settings);
  describeWork(*command, a);
  describeMessages(*command, a);
  command->callback([arguments, &outcome] { outcome = apply(*arguments); });
}

}  // namespace orbel
