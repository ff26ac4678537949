#include "settings/settings_json.h"

#include <cstdint>

namespace orbel {

using nlohmann::ordered_json;

ordered_json valueJson(double value, ScriptKind kind) {
  if (kind == ScriptKind::Flag) return value != 0;
  if (kind == ScriptKind::Integer) return static_cast<std::int32_t>(value);
  return value;
}

ordered_json settingsJson(const SettingsChoice& choice) {
  ordered_json json;
  for (const SettingWord& word : bandWords) {
    for (const char* band : {"1", "2", "3", "4", "5"}) {
      json[word.word].push_back(valueJson(choice.settings.value(word.key + std::string(band)), word.kind));
    }
  }
  for (const SettingWord& word : pictureWords) json[word.word] = valueJson(choice.settings.value(word.key), word.kind);
  json["mix"] = choice.mix;
  json["mask"] = choice.mask ? ordered_json(*choice.mask) : ordered_json();
  json["ref-edge"] = choice.refEdge ? ordered_json(*choice.refEdge) : ordered_json();
  return json;
}

std::string jsonText(const ordered_json& json) {
  return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace orbel
