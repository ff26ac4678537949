// Settings as JSON, with the words of settings files.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "settings/settings.h"

namespace orbel {

nlohmann::ordered_json settingsJson(const Settings& settings);

// A key's value, with its type.
nlohmann::ordered_json valueJson(const Settings& settings, const std::string& key);

// For standard output, with a line end. Bytes that are no UTF-8 become replacement characters.
std::string jsonText(const nlohmann::ordered_json& json);

}  // namespace orbel
