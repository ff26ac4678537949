#include "settings/jsx.h"

#include <fmt/format.h>

#include "host/script_keys.h"

namespace orbel {

namespace {

const char* putterOf(ScriptKind kind) {
  return kind == ScriptKind::Float ? "putDouble" : kind == ScriptKind::Flag ? "putBoolean" : "putInteger";
}

std::string textOf(std::uint32_t code) {
  std::string text;
  for (const int shift : {24, 16, 8, 0}) text += static_cast<char>(code >> shift & 0xFF);
  return text;
}

std::string putLine(const ScriptKey& key, const Settings& settings) {
  const std::string name = nameOf(key).text;
  const double number = valueOf(settings, name);
  std::string value = fmt::format("{}", number);
  if (key.kind == ScriptKind::Flag) value = number != 0 ? "true" : "false";
  if (settings.run.reference_edge != 0 && key.member == SettingMember::radius) value += " * scale";
  return fmt::format("  settings.{}(charIDToTypeID(\"{}\"), {}); // {}\n", putterOf(key.kind), name, value, key.name);
}

}  // namespace

std::string photoshopScript(const Settings& settings) {
  requireThatKeysSay(settings.run, "a Photoshop script");
  if (isBlended(settings)) {
    throw SettingsError(
        "a Photoshop script has no --mix and no --mask: run it on a copy of the layer, and use the "
        "layer's opacity and mask");
  }
  const std::string eventId = textOf(filterEventId);
  // In the language of ExtendScript, which is that of 1999.
  std::string script =
      "// Orbel Band Equalizer on the active document. Run it with File > Scripts > Browse.\n"
      "(function () {\n";
  if (settings.run.reference_edge != 0) {
    script += fmt::format(
        "  // The radii are meant for a picture with a long edge of {0} pixels.\n"
        "  var document = app.activeDocument;\n"
        "  var scale = Math.max(document.width.as(\"px\"), document.height.as(\"px\")) / {0};\n",
        settings.run.reference_edge);
  }
  script += "  var settings = new ActionDescriptor();\n";
  for (const ScriptKey& key : scriptKeys) script += putLine(key, settings);
  script += fmt::format(
      "  try {{\n"
      "    // Photoshop knows a filter with a scope of its own by that scope.\n"
      "    executeAction(stringIDToTypeID(\"{}\"), settings, DialogModes.NO);\n"
      "  }} catch (error) {{\n"
      "    // Hosts without scopes know it by its event.\n"
      "    try {{\n"
      "      executeAction(charIDToTypeID(\"{}\"), settings, DialogModes.NO);\n"
      "    }} catch (ignored) {{\n"
      "      throw error;\n"
      "    }}\n"
      "  }}\n"
      "}})();\n",
      filterScope, eventId);
  return script;
}

}  // namespace orbel
