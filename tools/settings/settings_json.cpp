#include "settings/settings_json.h"

#include <cstdint>

namespace orbel {

using nlohmann::ordered_json;

ordered_json valueJson(const Settings& settings, const std::string& key) {
  const double value = valueOf(settings, key);
  switch (kindOf(key)) {
    case ORBEL_KEY_FLAG:
      return value != 0;
    case ORBEL_KEY_INTEGER:
      return static_cast<std::int32_t>(value);
    case ORBEL_KEY_NUMBER:
      break;
  }
  return value;
}

ordered_json settingsJson(const Settings& settings) {
  ordered_json json;
  for (const SettingWord& word : bandWords) {
    for (int band = 1; band <= ORBEL_BANDS; ++band) json[word.word].push_back(valueJson(settings, keyOf(word, band)));
  }
  for (const SettingWord& word : pictureWords) json[word.word] = valueJson(settings, word.key);
  json[mixWord.word] = settings.run.mix;
  json[maskWord.word] = settings.mask ? ordered_json(*settings.mask) : ordered_json();
  const int edge = settings.run.reference_edge;
  json[referenceEdgeWord.word] = edge != 0 ? ordered_json(edge) : ordered_json();
  json[formWord.word] = formOf(settings);
  json[limitWord.word] = settings.run.limit != 0;
  return json;
}

std::string jsonText(const ordered_json& json) {
  return json.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace orbel
