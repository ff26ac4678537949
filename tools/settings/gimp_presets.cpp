#include "settings/gimp_presets.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <set>

namespace orbel {

namespace {

constexpr const char* configName = "GimpGegl-orbel-band-equalizer-config";

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

const char* yes(bool is) { return is ? "yes" : "no"; }

std::string entryOf(const GimpPreset& preset) {
  const orbel_settings& run = preset.settings.run;
  if (run.overlay != 0 || preset.settings.mask) {
    throw SettingsError("preset '" + preset.name + "': GIMP's dialog has no overlay and no mask");
  }
  std::string text = fmt::format("({} {}\n", configName, quoted(preset.name));
  const auto number = [&](const std::string& word, double value) { text += fmt::format("    ({} {})\n", word, value); };
  const auto flag = [&](const std::string& word, bool value) {
    text += fmt::format("    ({} {})\n", word, yes(value));
  };
  bool edges = false;
  for (const orbel_band& band : run.bands) edges = edges || band.edges != 0;
  text += "    (time 0)\n";
  for (int i = 0; i < ORBEL_BANDS; ++i) number(fmt::format("gain-{}", i + 1), run.bands[i].gain);
  number("residual", run.residual);
  flag("protect-edges", edges);
  text += fmt::format("    (form {})\n", formOf(preset.settings));
  flag("luminance", run.luminance != 0);
  flag("limit", run.limit != 0);
  flag("half", run.half != 0);
  text += fmt::format("    (reference-edge {})\n", run.reference_edge);
  number("mix", run.mix);
  flag("details", false);
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    const orbel_band& band = run.bands[i];
    number(fmt::format("radius-{}", i + 1), band.radius);
    number(fmt::format("threshold-{}", i + 1), band.threshold);
    // With none of them protected the switch above is off, and these say what it switches on.
    flag(fmt::format("edges-{}", i + 1), !edges || band.edges != 0);
  }
  text.back() = ')';
  return text + '\n';
}

// Steps over a string, whose first quote is at `at`, to behind its last.
std::size_t behindString(const std::string& text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '"'; ++at) at += text[at] == '\\' ? 1 : 0;
  return at + 1;
}

std::string unquoted(const std::string& text, std::size_t from, std::size_t behind) {
  std::string result;
  for (std::size_t at = from + 1; at + 1 < behind; ++at) {
    if (text[at] == '\\') ++at;
    result += text[at];
  }
  return result;
}

// The first string of each entry: its name.
std::set<std::string> namesIn(const std::string& file, const std::string& text) {
  std::set<std::string> names;
  int depth = 0;
  bool named = false;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '#') {
      at = std::min(text.find('\n', at), text.size());
    } else if (c == '"') {
      const std::size_t behind = behindString(text, at);
      if (behind > text.size() || depth == 0) throw SettingsError(file + ": this is no file of GIMP's presets");
      if (depth == 1 && !named) names.insert(unquoted(text, at, behind));
      named = true;
      at = behind;
    } else {
      if (c == '(' && depth++ == 0) named = false;
      const bool outside = depth == 0 && std::isspace(static_cast<unsigned char>(c)) == 0;
      if (outside || (c == ')' && --depth < 0)) throw SettingsError(file + ": this is no file of GIMP's presets");
      ++at;
    }
  }
  if (depth != 0) throw SettingsError(file + ": this is no file of GIMP's presets: a bracket is not closed");
  return names;
}

}  // namespace

std::string gimpPresetsFile(const std::string& version) {
  const auto folder = [](const char* variable) -> std::filesystem::path {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): nobody sets it
    return value != nullptr && *value == '/' ? value : "";
  };
  std::filesystem::path configuration = folder("XDG_CONFIG_HOME");
  if (configuration.empty() && !folder("HOME").empty()) configuration = folder("HOME") / ".config";
  if (configuration.empty()) throw SettingsError("there is no home folder: say the file with -o");
  return (configuration / "GIMP" / version / "filters" / (std::string(configName) + ".settings")).string();
}

GimpMerge mergedGimpPresets(const std::string& file, const std::string& text, const std::vector<GimpPreset>& presets) {
  const std::set<std::string> names = namesIn(file, text);
  GimpMerge merge{text.empty() ? "# settings of orbel:band-equalizer\n" : text, {}};
  if (merge.text.back() != '\n') merge.text += '\n';
  for (const GimpPreset& preset : presets) {
    const std::string entry = entryOf(preset);
    if (text.find(entry) != std::string::npos) continue;
    if (names.count(preset.name) != 0) {
      merge.left.push_back(preset.name);
    } else {
      merge.text += '\n' + entry;
    }
  }
  return merge;
}

}  // namespace orbel
