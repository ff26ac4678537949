// orbel gimp: the presets for GIMP's dialog of the equalizer.

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

#include "cli/commands.h"
#include "files/failure.h"
#include "files/text_file.h"
#include "settings/gimp_presets.h"
#include "settings/presets.h"
#include "settings/settings_file.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

struct GimpArguments {
  std::vector<std::string> presets;
  std::optional<std::string> output;
  std::string version = "2.10";
};

std::vector<GimpPreset> gimpPresets(std::vector<std::string> names) {
  if (names.empty()) {
    for (const Preset& preset : allPresets()) names.push_back(preset.name);
  }
  std::vector<GimpPreset> presets;
  for (const std::string& name : names) {
    const std::string file = presetFile(name);
    std::string shown = fs::path(file).stem().string();
    for (char& c : shown) c = c == '-' ? ' ' : c;
    presets.push_back({shown, Settings()});
    readSettings(file, presets.back().settings);
  }
  return presets;
}

void install(const GimpArguments& arguments) {
  const std::string file = arguments.output ? *arguments.output : gimpPresetsFile(arguments.version);
  std::string before;
  if (fs::exists(file)) {
    std::ifstream stream(file, std::ios::binary);
    before.assign(std::istreambuf_iterator<char>(stream), {});
    if (!stream) throw Failure(file, "can't be read", Cause::Unreadable);
  }
  const GimpMerge merge = mergedGimpPresets(file, before, gimpPresets(arguments.presets));
  for (const std::string& name : merge.left) {
    std::cerr << fmt::format("orbel: GIMP has a preset '{}' already, which stays as it is\n", name);
  }
  if (const fs::path folder = fs::path(file).parent_path(); !folder.empty()) fs::create_directories(folder);
  if (merge.text != before) writeTextFile(file, merge.text, true);
  std::cout << file << '\n';
}

}  // namespace

void addGimpCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command =
      program.add_subcommand("gimp", "Put the presets into GIMP's dialog, beside those that are saved there");
  const auto arguments = std::make_shared<GimpArguments>();
  command->add_option("-p,--preset", arguments->presets, "Presets or settings files (default: all presets)")
      ->type_name("NAME");
  command->add_option("-o,--output", arguments->output, "File to add them to (default: GIMP's own)")->type_name("FILE");
  command->add_option("--gimp", arguments->version, "GIMP's version, as its folder is called")
      ->type_name("VERSION")
      ->capture_default_str();
  command->callback([arguments] { install(*arguments); });
}

}  // namespace orbel
