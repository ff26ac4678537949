#include "settings/presets.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "files/program_folder.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

constexpr const char* extension = ".toml";

char lower(unsigned char c) { return static_cast<char>(std::tolower(c)); }

// "Soft Skin" is kept as soft-skin.toml.
std::string stemOf(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), lower);
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string nameOfFile(const fs::path& file) {
  std::string name = file.stem().string();
  std::replace(name.begin(), name.end(), '-', ' ');
  return name;
}

std::optional<fs::path> ownFolder() {
  const auto folder = [](const char* variable) -> std::optional<fs::path> {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (value == nullptr || fs::path(value).is_relative()) return std::nullopt;
    return value;
  };
  if (const auto configuration = folder("XDG_CONFIG_HOME")) return *configuration / "orbel" / "presets";
  if (const auto home = folder("HOME")) return *home / ".config" / "orbel" / "presets";
  return std::nullopt;
}

void collect(const fs::path& folder, bool own, std::map<std::string, Preset>& presets) {
  std::error_code none;  // a folder that isn't there holds no presets
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
    if (entry.path().extension() != extension) continue;
    const std::string name = nameOfFile(entry.path());
    presets.insert_or_assign(name, Preset{name, entry.path().string(), own});
  }
}

}  // namespace

std::vector<Preset> allPresets() {
  std::map<std::string, Preset> byName;
  collect(programData("presets", ORBEL_PRESETS_FOLDER), false, byName);
  if (const auto folder = ownFolder()) collect(*folder, true, byName);
  std::vector<Preset> all;
  all.reserve(byName.size());
  for (const auto& [name, preset] : byName) all.push_back(preset);
  return all;
}

std::string presetFile(const std::string& nameOrFile) {
  if (nameOrFile.find('/') != std::string::npos || fs::path(nameOrFile).extension() == extension) return nameOrFile;
  std::string known;
  for (const Preset& preset : allPresets()) {
    if (stemOf(preset.name) == stemOf(nameOrFile)) return preset.file;
    known += (known.empty() ? "" : ", ") + preset.name;
  }
  throw SettingsError("there is no preset " + quoted(nameOrFile) + "; there are " + (known.empty() ? "none" : known) +
                      ", and files whose names end in " + extension);
}

std::string ownPresetFile(const std::string& name) {
  const bool plain = std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || c >= 0x80 || c == '-' || c == '_' || c == ' ';
  });
  if (name.empty() || !plain) {
    throw SettingsError("a preset's name has letters, digits, hyphens and spaces: " + quoted(name) + " can't be one");
  }
  const auto folder = ownFolder();
  if (!folder) throw SettingsError("there is no home folder to keep presets in: set HOME or XDG_CONFIG_HOME");
  return (*folder / (stemOf(name) + extension)).string();
}

}  // namespace orbel
