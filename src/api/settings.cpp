#include "api/settings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "api/door.h"
#include "equalizer/setting_keys.h"

namespace {

// One member of the record, of either kind.
struct Place {
  double* number;
  std::int32_t* whole;

  double get() const { return number != nullptr ? *number : *whole; }
  void set(double value) const {
    if (number != nullptr) {
      *number = value;
    } else {
      *whole = static_cast<std::int32_t>(value);
    }
  }
};

Place placeOf(orbel_settings& s, const ScriptKey& key) {
  orbel_band& band = s.bands[key.band];
  switch (key.member) {
    case SettingMember::gain:
      return {&band.gain, nullptr};
    case SettingMember::radius:
      return {&band.radius, nullptr};
    case SettingMember::threshold:
      return {&band.threshold, nullptr};
    case SettingMember::edges:
      return {nullptr, &band.edges};
    case SettingMember::residual:
      return {&s.residual, nullptr};
    case SettingMember::half:
      return {nullptr, &s.half};
    case SettingMember::luminance:
      return {nullptr, &s.luminance};
    case SettingMember::overlay:
      break;
  }
  return {nullptr, &s.overlay};
}

struct Range {
  const char* name;
  double least;
  double most;
};

constexpr double largestGain = 1000;
constexpr double longestSide = 32767;

Range rangeOf(SettingMember member) {
  switch (member) {
    case SettingMember::gain:
      return {"gain", -largestGain, largestGain};
    case SettingMember::radius:
      return {"radius", 0, longestSide};
    case SettingMember::threshold:
      return {"threshold", 0, 255};
    case SettingMember::edges:
      return {"edges", 0, 1};
    case SettingMember::residual:
      return {"residual", -largestGain, largestGain};
    case SettingMember::half:
      return {"half", 0, 1};
    case SettingMember::luminance:
      return {"luminance", 0, 1};
    case SettingMember::overlay:
      break;
  }
  return {"overlay", 0, longestSide};
}

bool isOfBand(SettingMember member) { return member < SettingMember::residual; }

void require(double value, const Range& range, const std::string& place) {
  if (value >= range.least && value <= range.most) return;
  throw Refusal{ORBEL_BAD_SETTING,
                place + " is " + textOf(value) + "; allowed is " + textOf(range.least) + " to " + textOf(range.most)};
}

const ScriptKey* findKey(const char* name) {
  if (name == nullptr) return nullptr;
  const auto* const found = std::find_if(std::begin(scriptKeys), std::end(scriptKeys), [&](const ScriptKey& key) {
    return std::strcmp(nameOf(key).text, name) == 0;
  });
  return found == std::end(scriptKeys) ? nullptr : found;
}

constexpr std::array<ScriptKeyName, scriptKeyCount> keyNames = [] {
  std::array<ScriptKeyName, scriptKeyCount> names{};
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = nameOf(scriptKeys[i]);
  return names;
}();

}  // namespace

orbel_settings requireSettings(const orbel_settings* settings) {
  orbel_settings s = requireRecord(settings, "settings");
  for (const ScriptKey& key : scriptKeys) {
    const Range range = rangeOf(key.member);
    const std::string place =
        isOfBand(key.member) ? "bands[" + std::to_string(key.band) + "]." + range.name : range.name;
    require(placeOf(s, key).get(), range, place);
  }
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    require(s.bands[i].reserved, {"reserved", 0, 0}, "bands[" + std::to_string(i) + "].reserved");
  }
  require(s.mix, {"mix", 0, 100}, "mix");
  require(s.reference_edge, {"reference_edge", 0, longestSide}, "reference_edge");
  require(s.form, {"form", ORBEL_PYRAMID, ORBEL_WAVELETS}, "form");
  require(s.limit, {"limit", 0, 1}, "limit");
  return s;
}

ScaledParameters parametersOf(const orbel_settings& settings) {
  OrbelBandEqualizerGuiParams gui{};
  for (int i = 0; i < levelCount; ++i) {
    const orbel_band& band = settings.bands[i];
    gui.contrast[i] = static_cast<float>(band.gain);
    gui.radius[i] = static_cast<float>(band.radius);
    gui.threshold[i] = static_cast<float>(band.threshold);
    gui.edge[i] = band.edges != 0;
  }
  gui.factor = static_cast<float>(settings.residual);
  return ScaledParameters(gui);
}

bool takeApartAlike(const orbel_settings& a, const orbel_settings& b) {
  const auto alike = [](const orbel_band& x, const orbel_band& y) {
    return x.radius == y.radius && x.threshold == y.threshold && x.edges == y.edges;
  };
  return a.luminance == b.luminance && a.reference_edge == b.reference_edge && a.form == b.form &&
         std::equal(std::begin(a.bands), std::end(a.bands), std::begin(b.bands), alike);
}

orbel_status orbel_settings_init(orbel_settings* settings, size_t size) {
  const orbel_status status = initRecord(settings, size);
  if (status != ORBEL_OK) return status;
  for (const ScriptKey& key : scriptKeys) placeOf(*settings, key).set(key.fallback);
  settings->overlay = 0;  // a fresh record of the plug-in draws it
  settings->mix = 100;
  return ORBEL_OK;
}

orbel_status orbel_settings_check(const orbel_settings* settings, char* message, size_t capacity) {
  orbel_options options{};
  options.size = sizeof options;
  options.message = message;
  options.message_capacity = capacity;
  return guarded(&options, [&](const orbel_options&) { requireSettings(settings); });
}

const char* orbel_key(int32_t number) {
  return number < 0 || number >= scriptKeyCount ? nullptr : keyNames[static_cast<std::size_t>(number)].text;
}

orbel_status orbel_settings_get(const orbel_settings* settings, const char* key, double* value) {
  const std::optional<orbel_settings> known = recordOf(settings);
  const ScriptKey* const found = findKey(key);
  if (!known || found == nullptr || value == nullptr) return ORBEL_BAD_ARGUMENT;
  orbel_settings copy = *known;
  *value = placeOf(copy, *found).get();
  return ORBEL_OK;
}

orbel_status orbel_settings_set(orbel_settings* settings, const char* key, double value) {
  const ScriptKey* const found = findKey(key);
  if (!recordOf(settings) || found == nullptr) return ORBEL_BAD_ARGUMENT;
  // What no integer can hold is no value of it; a range is the check's business.
  const bool fits = found->kind == ScriptKind::Float || (std::trunc(value) == value && std::abs(value) <= 2147483647.0);
  if (!fits) return ORBEL_BAD_SETTING;
  placeOf(*settings, *found).set(value);
  return ORBEL_OK;
}

orbel_status orbel_key_kind_of(const char* key, orbel_key_kind* kind) {
  const ScriptKey* const found = findKey(key);
  if (found == nullptr) return ORBEL_BAD_ARGUMENT;
  if (kind != nullptr) {
    *kind = found->kind == ScriptKind::Float  ? ORBEL_KEY_NUMBER
            : found->kind == ScriptKind::Flag ? ORBEL_KEY_FLAG
                                              : ORBEL_KEY_INTEGER;
  }
  return ORBEL_OK;
}

orbel_status orbel_key_range(const char* key, double* least, double* most) {
  const ScriptKey* const found = findKey(key);
  if (found == nullptr || least == nullptr || most == nullptr) return ORBEL_BAD_ARGUMENT;
  const Range range = rangeOf(found->member);
  *least = range.least;
  *most = range.most;
  return ORBEL_OK;
}
