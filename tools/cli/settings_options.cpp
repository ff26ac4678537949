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

void setMix(const std::string& option, double mix, SettingsChoice& choice) {
  if (!(mix >= 0 && mix <= 100)) throw SettingsError(option + ": a mix goes from 0 to 100");
  choice.mix = mix;
}

void setRefEdge(const std::string& option, int pixels, SettingsChoice& choice) {
  if (pixels < 0) throw SettingsError(option + ": an edge can't be below 0 pixels");
  choice.refEdge = pixels == 0 ? std::nullopt : std::optional(pixels);
}

void addSettingsOptions(CLI::App& command, SettingsArguments& a) {
  const char* bands = "Bands (five values, finest first, or one for all)";
  add(command, bands, "--contrast", a.contrast, "LIST",
      "Gain of each band in percent, -1000 to 1000; 100 leaves a band as it is (default 100)");
  add(command, bands, "--radius", a.radius, "LIST",
      "Radius of each band in pixels of its level; 0: no low-pass (default 3)");
  add(command, bands, "--threshold", a.threshold, "LIST",
      "Contrast of protected edges, 0 to 255 (default 255,10,10,10,10)");
  add(command, bands, "--edges,--edge", a.edges, "LIST", "Edge protection, on or off (default off,on,on,on,on)");
  addEach(command, bands, "--band", a.bands, "N:WORD=VALUE,...",
          "Values of one band; the words are contrast, radius, threshold and edges");

  const char* whole = "Whole picture";
  add(command, whole, "--factor", a.factor, "NUMBER", "Gain of the coarse residual in percent (default 100)");
  addSwitch(command, whole, "--half", "Add middle grey at the end", "--no-half", "Add none (default)", a.half);
  addSwitch(command, whole, "--luminance", "Work on luminance and keep the colours (default)", "--planes",
            "Work on red, green and blue each", a.luminance);
  add(command, whole, "--cross", a.cross, "PIXELS", "Draw the cross overlay, so many pixels wide (default 0: none)");
  add(command, whole, "--mix", a.mix, "PERCENT", "How much of the result to blend into the original (default 100)");
  add(command, whole, "--mask", a.mask, "IMAGE",
      "Let the result show where this picture is white, the original where it is black; of the same proportions");
  add(command, whole, "--ref-edge", a.refEdge, "PIXELS",
      "The radii are meant for a picture with so long an edge, and scale with the picture (0: take them as they are)");

  const char* settings = "Settings";
  add(command, settings, "-p,--preset", a.preset, "NAME|FILE",
      "Start from a preset (see orbel presets list), or from a settings file (with a slash or .toml in its name)");
  addEach(command, settings, "-s,--set", a.pairs, "KEY=VALUE",
          "One of the plug-in's keys: CON1-5, RAD1-5, THR1-5, EDG1-5, FCTR, HALF, LUMI, WDTH; wins over all else");
  command.add_flag("--print-settings", a.printSettings, "Print all settings as a file for -p, and do nothing else")
      ->group(settings);
}

SettingsChoice chooseSettings(const SettingsArguments& a) {
  SettingsChoice choice;
  Settings& settings = choice.settings;
  if (a.preset) readSettings(presetFile(*a.preset), choice);
  if (a.contrast) settings.setBands("--contrast", "CON", *a.contrast);
  if (a.radius) settings.setBands("--radius", "RAD", *a.radius);
  if (a.threshold) settings.setBands("--threshold", "THR", *a.threshold);
  if (a.edges) settings.setBands("--edges", "EDG", *a.edges);
  if (a.factor) settings.set("--factor", "FCTR", *a.factor);
  if (a.half) settings.setNumber("HALF", *a.half ? 1 : 0);
  if (a.luminance) settings.setNumber("LUMI", *a.luminance ? 1 : 0);
  if (a.cross) settings.set("--cross", "WDTH", *a.cross);
  if (a.mix) setMix("--mix", numberFrom("--mix", *a.mix), choice);
  if (a.mask) choice.mask = a.mask;
  if (a.refEdge) setRefEdge("--ref-edge", integerFrom("--ref-edge", *a.refEdge), choice);
  for (const std::string& band : a.bands) settings.setBand("--band", band);
  for (const std::string& pair : a.pairs) settings.setPair("--set", pair);
  choice.printSettings = a.printSettings;
  return choice;
}

bool printIfAsked(const SettingsChoice& choice) {
  if (choice.printSettings) std::cout << settingsText(choice, "");
  return choice.printSettings;
}

}  // namespace orbel
