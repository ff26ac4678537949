// orbel apply: the equalizer on image files.

#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "estimate.h"
#include "failure.h"
#include "image_file.h"
#include "module.h"
#include "plugin_host.h"
#include "settings_options.h"
#include "target_file.h"

namespace {

struct ApplyArguments {
  std::vector<std::string> inputs;
  std::optional<std::string> output;
  bool plain = false;  // the last input is the output
  SettingsArguments settings;
  std::optional<std::string> plugin;
  bool force = false;
  bool quiet = false;
  bool verbose = false;
};

// Returns what was done, in a line.
std::string equalizeFile(const ApplyArguments& arguments, const Settings& settings) {
  const std::string& input = arguments.inputs.front();
  const std::string& output = *arguments.output;
  const FileFormat& format = formatOf(output);
  vips::VImage picture = loadPicture(input);
  requireThatFormatHolds(format, picture, output);
  requireThatWindowsFit(input, settings, picture.width(), picture.height());
  if (!arguments.force) {
    requireShortWork(input, settings, picture.width(), picture.height(), std::thread::hardware_concurrency());
  }
  const PluginEntry entry = loadEntry(arguments.plugin ? *arguments.plugin : ownModule());
  // Opened before the work, so that a target that can't be written doesn't cost the work first.
  TargetFile target(output);

  Document document;
  try {
    document = documentOf(picture);
    runPlugin(entry, settings.script(), document);
  } catch (const PluginRefusal& refusal) {
    throw Failure(input, refusal.what());
  } catch (const std::bad_alloc&) {
    throw Failure(input, "not enough memory for a picture of this size");
  }
  putDocument(document, picture);

  savePicture(picture, format, target.descriptor(), output);
  target.replace();
  return input + " -> " + output + " (" + std::to_string(document.width) + " x " + std::to_string(document.height) +
         ", " + std::to_string(document.depth) + " bits)";
}

void apply(ApplyArguments& arguments) {
  if (arguments.plain && !arguments.output) {
    if (arguments.inputs.size() != 2) throw SettingsError("the plain form is: orbel IN OUT (orbel --help tells more)");
    arguments.output = arguments.inputs.back();
    arguments.inputs.pop_back();
  }
  const SettingsChoice choice = chooseSettings(arguments.settings);
  const ImageLibrary library("orbel", arguments.verbose);
  removeTemporaryOnSignals();
  const std::string done = equalizeFile(arguments, choice.settings);
  if (!arguments.quiet) std::cout << done << '\n';
}

}  // namespace

void addApplyCommand(CLI::App& program, ExitCode&) {
  CLI::App* command = program.add_subcommand("apply", "Equalize pictures");
  const auto arguments = std::make_shared<ApplyArguments>();
  ApplyArguments& a = *arguments;
  command->add_option("IN", a.inputs, "Pictures to read")->required();
  command->add_option("-o,--output", a.output, "Picture to write")->type_name("FILE");
  command->add_flag("--plain", a.plain)->group("");
  addSettingsOptions(*command, a.settings);
  const char* work = "Work";
  command->add_option("--plugin", a.plugin, "Plug-in module to run (default: the one in orbel's own folder)")
      ->group(work)
      ->type_name("FILE");
  command->add_flag("--force", a.force, "Run also when it will take more than ten minutes")->group(work);
  const char* talk = "Messages";
  command->add_flag("--quiet", a.quiet, "Say nothing but errors")->group(talk);
  command->add_flag("--verbose", a.verbose, "Show the image library's warnings as well")->group(talk);
  command->callback([arguments] { apply(*arguments); });
}
