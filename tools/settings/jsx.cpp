#include "settings/jsx.h"

#include <fmt/format.h>

#include "pictures/finish.h"

namespace orbel {

namespace {

const char* putterOf(ScriptKind kind) {
  return kind == ScriptKind::Float ? "putDouble" : kind == ScriptKind::Flag ? "putBoolean" : "putInteger";
}

std::string putLine(const ScriptKey& key, const SettingsChoice& choice) {
  const std::string name = nameOf(key.code);
  const double number = choice.settings.value(name);
  std::string value = fmt::format("{}", number);
  if (key.kind == ScriptKind::Flag) value = number != 0 ? "true" : "false";
  if (choice.refEdge && name.rfind("RAD", 0) == 0) value += " * scale";
  return fmt::format("  settings.{}(charIDToTypeID(\"{}\"), {}); // {}\n", putterOf(key.kind), name, value, key.name);
}

}  // namespace

std::string photoshopScript(const SettingsChoice& choice) {
  if (isBlended(choice)) {
    throw SettingsError(
        "a Photoshop script has no --mix and no --mask: run it on a copy of the layer, and use the "
        "layer's opacity and mask");
  }
  // In the language of ExtendScript, which is that of 1999.
  std::string script =
      "// Orbel Band Equalizer on the active document. Run it with File > Scripts > Browse.\n"
      "(function () {\n";
  if (choice.refEdge) {
    script += fmt::format(
        "  // The radii are meant for a picture with a long edge of {0} pixels.\n"
        "  var document = app.activeDocument;\n"
        "  var scale = Math.max(document.width.as(\"px\"), document.height.as(\"px\")) / {0};\n",
        *choice.refEdge);
  }
  script += "  var settings = new ActionDescriptor();\n";
  for (const ScriptKey& key : scriptKeys) script += putLine(key, choice);
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
      filterScope, nameOf(filterEventId));
  return script;
}

}  // namespace orbel
