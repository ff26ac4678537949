#include "batch/made_with.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "files/digest.h"
#include "pictures/xmp_packet.h"
#include "settings/settings_json.h"

namespace orbel {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr const char* recipeMark = "# made with ";
constexpr const char* timeWord = "time";

// Of a text: far more than there is to tell. A picture may come from anywhere, and JSON is printed by recursion.
constexpr std::size_t mostToTell = 4096;

// Other kinds may never end, or never begin.
bool isFile(const std::string& name) {
  std::error_code none;
  return fs::is_regular_file(name, none);
}

std::string asciiOf(const json& object) { return object.dump(-1, ' ', true, json::error_handler_t::replace); }

std::string bareName(const std::string& file) { return fs::path(file).filename().string(); }

}  // namespace

json settingsOf(const JobOptions& options, const std::optional<std::string>& plugin) {
  json settings = settingsJson(options.settings);
  if (const auto& mask = options.settings.mask) {
    settings["mask"] = {{"name", bareName(*mask)}, {"sha256", sha256Of(*mask)}};
  }
  if (options.samples) settings["depth"] = depthOf(*options.samples);
  if (options.save.quality) settings["quality"] = *options.save.quality;
  if (options.save.compression) settings["compression"] = *options.save.compression;
  if (const auto& crop = options.crop) settings["crop"] = {crop->width, crop->height, crop->x, crop->y};
  if (options.hostDepth) settings["host-depth"] = *options.hostDepth;
  if (plugin) settings["plugin"] = bareName(*plugin);
  return json::parse(asciiOf(settings));  // as it will be read: a name may hold bytes that are no text
}

std::string textOf(const MadeWith& made) {
  json all = made.settings;
  all[timeWord] = made.time;
  return asciiOf(all);
}

std::optional<MadeWith> madeWithFrom(const std::string& text) {
  if (text.size() > mostToTell) return std::nullopt;
  json all = json::parse(text, nullptr, false);
  if (!all.is_object() || !all.contains(timeWord) || !all[timeWord].is_number_integer()) return std::nullopt;
  MadeWith made;
  made.time = all[timeWord];
  all.erase(timeWord);
  made.settings = std::move(all);
  return made;
}

Picture remembering(const MadeWith& made, const Picture& picture, const FileFormat& format) {
  if (!format.kept.xmp) return picture;
  const std::string old = xmpOf(picture);
  const auto packet = withProperty(format.saver.wantsBareXmp ? unwrapped(old) : old, textOf(made));
  return packet && packet->size() <= format.saver.mostXmp ? withXmp(picture, *packet) : picture;
}

std::optional<MadeWith> madeWithIn(const Picture& picture) {
  const auto text = propertyIn(xmpOf(picture));
  return text ? madeWithFrom(*text) : std::nullopt;
}

std::string recipeOf(const std::string& result) { return result + ".toml"; }

std::optional<MadeWith> madeWithInRecipe(const std::string& result) {
  const std::string file = recipeOf(result);
  if (!isFile(file)) return std::nullopt;
  std::ifstream recipe(file);
  const std::string mark = recipeMark;
  for (std::string line; std::getline(recipe, line);) {
    if (line.rfind(mark, 0) == 0) return madeWithFrom(line.substr(mark.size()));
  }
  return std::nullopt;
}

std::string recipeLine(const MadeWith& made) { return recipeMark + textOf(made) + "\n"; }

}  // namespace orbel
