// orbel presets list, show, save, check.

#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "cli/settings_options.h"
#include "files/text_file.h"
#include "settings/presets.h"
#include "settings/settings_file.h"
#include "settings/settings_json.h"

namespace orbel {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

namespace {

struct PresetsArguments {
  bool json = false;
  std::vector<std::string> names;
  std::string name;
  std::string description;
  bool force = false;
  SettingsArguments settings;
};

ordered_json presetJson(const Preset& preset) {
  return {{"name", preset.name}, {"file", preset.file}, {"own", preset.own}};
}

// A preset that can't be read is listed with the reason, and spoils no other.
void list(const PresetsArguments& arguments, ExitCode& outcome) {
  ordered_json all = ordered_json::array();
  for (const Preset& preset : allPresets()) {
    ordered_json entry = presetJson(preset);
    std::string note;
    try {
      Settings settings;
      note = readSettings(preset.file, settings);
      entry["description"] = note;
    } catch (const SettingsError& error) {
      note = error.what();
      entry["error"] = note;
      outcome = exitUsage;
    }
    all.push_back(entry);
    if (!arguments.json) std::cout << fmt::format("{:<15} {}{}\n", preset.name, note, preset.own ? " (your own)" : "");
  }
  if (arguments.json) std::cout << jsonText(all);
}

void show(const PresetsArguments& arguments) {
  Settings settings;
  const std::string file = presetFile(arguments.name);
  const std::string description = readSettings(file, settings);
  if (!arguments.json) {
    std::cout << "# " << file << '\n' << settingsText(settings, description);
    return;
  }
  std::cout << jsonText({{"file", file}, {"description", description}, {"settings", settingsJson(settings)}});
}

void save(const PresetsArguments& arguments) {
  const Settings settings = chooseSettings(arguments.settings);
  if (printIfAsked(arguments.settings, settings)) return;
  const std::string text = settingsText(settings, arguments.description);
  const std::string file = ownPresetFile(arguments.name);
  fs::create_directories(fs::path(file).parent_path());
  writeTextFile(file, text, arguments.force);
  if (arguments.json) {
    std::cout << jsonText({{"file", file}});
  } else {
    std::cout << file << '\n';
  }
}

void check(const PresetsArguments& arguments, ExitCode& outcome) {
  ordered_json all = ordered_json::array();
  for (const std::string& name : arguments.names) {
    std::string problem;
    try {
      Settings settings;
      readSettings(presetFile(name), settings);
    } catch (const SettingsError& error) {
      problem = error.what();
      outcome = exitUsage;
    }
    ordered_json entry = {{"preset", name}, {"good", problem.empty()}};
    if (!problem.empty()) entry["error"] = problem;
    all.push_back(entry);
    if (!arguments.json && problem.empty()) std::cout << name << ": good\n";
    if (!arguments.json && !problem.empty()) std::cerr << "orbel: " << problem << '\n';
  }
  if (arguments.json) std::cout << jsonText(all);
}

}  // namespace

void addPresetsCommand(CLI::App& program, ExitCode& outcome) {
  CLI::App* const command = program.add_subcommand("presets", "List, show, save and check presets");
  command->require_subcommand(1);
  const auto arguments = std::make_shared<PresetsArguments>();
  const auto add = [&](const char* name, const char* text) {
    CLI::App* const added = command->add_subcommand(name, text);
    added->add_flag("--json", arguments->json, "Print JSON");
    return added;
  };
  CLI::App* const lister = add("list", "What presets there are, and what each is for");
  lister->callback([arguments, &outcome] { list(*arguments, outcome); });

  CLI::App* const shower = add("show", "A preset's settings");
  shower->add_option("NAME", arguments->name, "Preset, or settings file")->required();
  shower->callback([arguments] { show(*arguments); });

  CLI::App* const saver = add("save", "Keep settings as a preset of your own");
  saver->add_option("NAME", arguments->name, "Name of the preset")->required();
  saver->add_option("--description", arguments->description, "What it is for, in a sentence");
  saver->add_flag("-f,--force", arguments->force, "Replace a preset of that name");
  addSettingsOptions(*saver, arguments->settings);
  saver->callback([arguments] { save(*arguments); });

  CLI::App* const checker = add("check", "Say whether presets or settings files are good");
  checker->add_option("NAME", arguments->names, "Presets, or settings files")->required();
  checker->callback([arguments, &outcome] { check(*arguments, outcome); });
}

}  // namespace orbel
