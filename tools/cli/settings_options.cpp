#include "cli/settings_options.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "settings/presets.h"
#include "settings/settings_file.h"

namespace orbel {

namespace {

using Text = std::optional<std::string>;

CLI::Option* add(CLI::App& command, const char* group, const char* names, Text& target, const char* type,
                 const char* text) {
  return command.add_option(names, target, text)->group(group)->type_name(type);
}

void addEach(CLI::App& command, const char* group, const char* names, std::vector<std::string>& target,
             const char* type, const char* text) {
  command.add_option(names, target, text)->group(group)->type_name(type)->allow_extra_args(false);
}

// Two flags, of which one says yes and the other no.
void addSwitch(CLI::App& command, const char* group, const char* yes, const char* yesText, const char* no,
               const char* noText, std::optional<bool>& target) {
  CLI::Option* const on = command
                              .add_flag_callback(
                                  yes, [&target] { target = true; }, yesText)
                              ->group(group);
  command
      .add_flag_callback(
          no, [&target] { target = false; }, noText)
      ->group(group)
      ->excludes(on);
}

}  // namespace

void addSettingsOptions(CLI::App& command, SettingsArguments& a) {
  const char* bands = "Bands (five values, finest first, or one for all)";
  add(command, bands, "--gain,--contrast", a.gain, "LIST",
      "Gain of each band in percent, -1000 to 1000; 100 leaves a band as it is (default 100)");
  add(command, bands, "--radius", a.radius, "LIST",
      "Radius of each band in pixels of its level; 0: no low-pass (default 3)");
  add(command, bands, "--threshold", a.threshold, "LIST",
      "Contrast of protected edges, 0 to 255 (default 255,10,10,10,10)");
  add(command, bands, "--edges,--edge", a.edges, "LIST", "Edge protection, on or off (default off,on,on,on,on)");
  addEach(command, bands, "--band", a.bands, "N:WORD=VALUE,...",
          "Values of one band; the words are gain, radius, threshold and edges");

  const char* whole = "Whole picture";
  add(command, whole, "--residual,--factor", a.residual, "NUMBER",
      "Gain of the coarse residual in percent (default 100)");
  addSwitch(command, whole, "--half", "Add middle grey at the end", "--no-half", "Add none (default)", a.half);
  addSwitch(command, whole, "--luminance", "Work on luminance and keep the colours (default)", "--planes",
            "Work on red, green and blue each", a.luminance);
  add(command, whole, "--overlay,--cross", a.overlay, "PIXELS",
      "Draw an overlay of two diagonals and a stripe, so many pixels wide (default 0: none)");
  add(command, whole, "--mix", a.mix, "PERCENT", "How much of the result to blend into the original (default 100)");
  add(command, whole, "--mask", a.mask, "IMAGE",
      "Let the result show where this picture is white, the original where it is black; of the same proportions");
  add(command, whole, "--reference-edge,--ref-edge", a.referenceEdge, "PIXELS",
      "The settings are meant for a picture with so long an edge: the same look at every size (0: for this picture)");
  add(command, whole, "--form", a.form, "FORM",
      "pyramid, the plug-in's own, or wavelets, which draw no halos however much bands are raised (default pyramid)");
  addSwitch(command, whole, "--limit", "Drive no colour beyond black or white", "--no-limit",
            "Clip what is beyond them (default)", a.limit);

  const char* settings = "Settings";
  add(command, settings, "-p,--preset", a.preset, "NAME|FILE",
      "Start from a preset (see orbel presets list), or from a settings file (with a slash or .toml in its name)");
  addEach(command, settings, "-s,--set", a.pairs, "KEY=VALUE",
          "One of the plug-in's keys: CON1-5, RAD1-5, THR1-5, EDG1-5, FCTR, HALF, LUMI, WDTH; wins over all else");
  command.add_flag("--print-settings", a.printSettings, "Print all settings as a file for -p, and do nothing else")
      ->group(settings);
}

Settings chooseSettings(const SettingsArguments& a) {
  Settings settings;
  const auto bands = [&](const char* option, const char* word, const Text& values) {
    if (values) setBands(settings, option, *bandWord(word), *values);
  };
  if (a.preset) readSettings(presetFile(*a.preset), settings);
  bands("--gain", "gain", a.gain);
  bands("--radius", "radius", a.radius);
  bands("--threshold", "threshold", a.threshold);
  bands("--edges", "edges", a.edges);
  if (a.residual) setKey(settings, "--residual", "FCTR", *a.residual);
  if (a.half) settings.run.half = *a.half ? 1 : 0;
  if (a.luminance) settings.run.luminance = *a.luminance ? 1 : 0;
  if (a.overlay) setKey(settings, "--overlay", "WDTH", *a.overlay);
  if (a.mix) setMix(settings, "--mix", numberFrom("--mix", *a.mix));
  if (a.mask) settings.mask = a.mask;
  if (a.referenceEdge) {
    setReferenceEdge(settings, "--reference-edge", integerFrom("--reference-edge", *a.referenceEdge));
  }
  if (a.form) setForm(settings, "--form", *a.form);
  if (a.limit) settings.run.limit = *a.limit ? 1 : 0;
  for (const std::string& band : a.bands) setBand(settings, "--band", band);
  for (const std::string& pair : a.pairs) setPair(settings, "--set", pair);
  return settings;
}

bool printIfAsked(const SettingsArguments& arguments, const Settings& settings) {
  if (arguments.printSettings) std::cout << settingsText(settings, "");
  return arguments.printSettings;
}

}  // namespace orbel
