#include "settings_options.h"

void addSettingsOptions(CLI::App& command, SettingsArguments& a) {
  const char* bands = "Bands";
  const auto list = [&](const char* name, std::optional<std::string>& target, const char* text) {
    command.add_option(name, target, text)->group(bands)->type_name("LIST");
  };
  list("--contrast", a.contrast, "Gain of each band in percent; 100 leaves a band as it is (default 100)");
  list("--radius", a.radius, "Radius of each band in pixels of its level (default 3)");
  list("--threshold", a.threshold, "Contrast of protected edges, 0 to 255 (default 255,10,10,10,10)");
  list("--edge", a.edge, "Edge protection, on or off (default off,on,on,on,on)");
  const char* whole = "Whole picture";
  command.add_option("--factor", a.factor, "Gain of the coarse residual in percent (default 100)")
      ->group(whole)
      ->type_name("NUMBER");
  command.add_flag("--half", a.half, "Add middle grey at the end")->group(whole);
  auto* luminance = command.add_flag("--luminance", a.luminance, "Work on luminance and keep the colours (default)");
  luminance->group(whole);
  command.add_flag("--planes", a.planes, "Work on red, green and blue each")->group(whole)->excludes(luminance);
  command.add_option("--cross", a.cross, "Draw the cross overlay, so many pixels wide (default 0: none)")
      ->group(whole)
      ->type_name("PIXELS");
  command
      .add_option("-s,--set", a.pairs,
                  "One of the plug-in's keys: CON1-5, RAD1-5, THR1-5, EDG1-5, FCTR, HALF, LUMI, WDTH")
      ->group("Keys")
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false);
}

SettingsChoice chooseSettings(const SettingsArguments& a) {
  SettingsChoice choice;
  Settings& settings = choice.settings;
  if (a.contrast) settings.setBands("--contrast", "CON", *a.contrast);
  if (a.radius) settings.setBands("--radius", "RAD", *a.radius);
  if (a.threshold) settings.setBands("--threshold", "THR", *a.threshold);
  if (a.edge) settings.setBands("--edge", "EDG", *a.edge);
  if (a.factor) settings.set("--factor", "FCTR", *a.factor);
  if (a.cross) settings.set("--cross", "WDTH", *a.cross);
  if (a.half) settings.set("--half", "HALF", "on");
  if (a.luminance) settings.set("--luminance", "LUMI", "on");
  if (a.planes) settings.set("--planes", "LUMI", "off");
  for (const std::string& pair : a.pairs) settings.setPair("--set", pair);
  return choice;
}
