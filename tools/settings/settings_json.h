// Settings as JSON, with the words of settings files.
#pragma once

#include <nlohmann/json.hpp>

#include "settings/settings_choice.h"

namespace orbel {

nlohmann::ordered_json settingsJson(const SettingsChoice& choice);

// A value with the type that its key has.
nlohmann::ordered_json valueJson(double value, ScriptKind kind);

// For standard output, with a line end. Bytes that are no UTF-8 become replacement characters.
std::string jsonText(const nlohmann::ordered_json& json);

}  // namespace orbel
