// orbel jsx: settings as a script for Photoshop.

#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/settings_options.h"
#include "files/text_file.h"
#include "settings/jsx.h"

namespace orbel {

namespace {

struct JsxArguments {
  SettingsArguments settings;
  std::optional<std::string> output;
  bool force = false;
};

void writeScript(const JsxArguments& arguments) {
  const Settings settings = chooseSettings(arguments.settings);
  if (printIfAsked(arguments.settings, settings)) return;
  const std::string script = photoshopScript(settings);
  if (arguments.output) {
    writeTextFile(*arguments.output, script, arguments.force);
  } else {
    std::cout << script;
  }
}

}  // namespace

void addJsxCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand("jsx", "Write the settings as a script for Photoshop");
  const auto arguments = std::make_shared<JsxArguments>();
  command->add_option("-o,--output", arguments->output, "File to write (default: standard output)")->type_name("FILE");
  command->add_flag("-f,--force", arguments->force, "Replace a file that is there");
  addSettingsOptions(*command, arguments->settings);
  command->callback([arguments] { writeScript(*arguments); });
}

}  // namespace orbel
