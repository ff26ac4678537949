#include "settings/settings_file.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace orbel {

namespace fs = std::filesystem;

namespace {

// Far more than any settings take; a picture that was given by mistake isn't read to its end. The parser goes one call
// deeper for each point in a name, and has no limit to that: with 64 kB it can run out of stack.
constexpr std::size_t longestFile = std::size_t{1} << 14;

std::string textOf(const std::string& file) {
  const auto refuse = [&](const std::string& reason) { throw SettingsError(file + ": " + reason); };
  if (std::error_code ignored; fs::is_directory(file, ignored)) refuse(std::generic_category().message(EISDIR));
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) refuse(std::generic_category().message(errno));
  std::string text(longestFile + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad()) refuse(std::generic_category().message(errno));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.size() > longestFile) refuse("is too large for a file of settings");
  return text;
}

// One word of the file with its value; the file and the line go into every refusal.
class Entry {
 public:
  Entry(const std::string& file, const toml::key& key, const toml::node& node)
      : word_(key.str()), node_(node), file_(file), line_(key.source().begin.line) {}

  const std::string& word() const { return word_; }
  std::string place() const { return fmt::format("{}:{}", file_, line_); }

  [[noreturn]] void refuse(const std::string& wanted) const {
    throw SettingsError(place() + ": " + quoted(word_) + " takes " + wanted);
  }

  double value(const toml::node& node, ScriptKind kind) const {
    if (kind == ScriptKind::Flag) {
      if (!node.is_boolean()) refuse("true or false");
      return node.as_boolean()->get() ? 1.0 : 0.0;
    }
    if (kind == ScriptKind::Integer) {
      const std::optional<std::int32_t> number = node.is_integer() ? node.value<std::int32_t>() : std::nullopt;
      if (!number) refuse("a whole number");
      return *number;
    }
    const std::optional<double> number = node.is_number() ? node.value<double>() : std::nullopt;
    if (!number || !std::isfinite(*number)) refuse("a number");
    return *number;
  }
  double value(ScriptKind kind) const { return value(node_, kind); }

  double value(const toml::node& node, const SettingWord& word) const {
    const double number = value(node, word.kind);
    requireInRange(place(), word, number);
    return number;
  }
  double value(const SettingWord& word) const { return value(node_, word); }

  std::string text() const {
    if (!node_.is_string()) refuse("a text in quotes");
    return node_.as_string()->get();
  }

  void setBands(const SettingWord& word, Settings& settings) const {
    const toml::array* const list = node_.as_array();
    if (list != nullptr && list->size() != 5) refuse("one value or five");
    for (std::size_t band = 0; band < 5; ++band) {
      settings.setNumber(word.key + std::to_string(band + 1), value(list == nullptr ? node_ : (*list)[band], word));
    }
  }

 private:
  std::string word_;
  const toml::node& node_;
  const std::string& file_;
  toml::source_index line_;
};

template <std::size_t count>
const SettingWord* find(const SettingWord (&words)[count], const std::string& word) {
  const auto* const found =
      std::find_if(std::begin(words), std::end(words), [&](const SettingWord& known) { return known.word == word; });
  return found == std::end(words) ? nullptr : found;
}

void apply(const Entry& entry, const std::string& file, SettingsChoice& choice, std::string& description) {
  const std::string& word = entry.word();
  const std::string option = entry.place() + ": " + word;
  if (const SettingWord* const bands = find(bandWords, word)) {
    entry.setBands(*bands, choice.settings);
  } else if (const SettingWord* const whole = find(pictureWords, word)) {
    choice.settings.setNumber(whole->key, entry.value(*whole));
  } else if (word == "mix") {
    setMix(option, entry.value(ScriptKind::Float), choice);
  } else if (word == "mask") {
    choice.mask = (fs::path(file).parent_path() / entry.text()).string();
  } else if (word == "ref-edge") {
    setRefEdge(option, static_cast<int>(entry.value(ScriptKind::Integer)), choice);
  } else if (word == "description") {
    description = entry.text();
  } else {
    throw SettingsError(entry.place() + ": there is no setting " + quoted(word));
  }
}

// As a TOML text in quotes, with its escapes.
std::string inQuotes(const std::string& text) {
  std::ostringstream stream;
  stream << toml::table{{"t", text}};
  return stream.str().substr(4);
}

std::string valueText(double value, ScriptKind kind) {
  return kind == ScriptKind::Flag ? (value != 0.0 ? "true" : "false") : fmt::format("{}", value);
}

}  // namespace

std::string readSettings(const std::string& file, SettingsChoice& choice) {
  std::string description;
  try {
    const toml::table table = toml::parse(textOf(file), file);
    for (const auto& [key, node] : table) apply(Entry(file, key, node), file, choice, description);
  } catch (const toml::parse_error& error) {
    throw SettingsError(fmt::format("{}:{}: {}", file, error.source().begin.line, error.description()));
  }
  return description;
}

std::string settingsText(const SettingsChoice& choice, const std::string& description) {
  std::string text;
  if (!description.empty()) text += "description = " + inQuotes(description) + "\n";
  for (const SettingWord& word : bandWords) {
    std::string list;
    for (const char* band : {"1", "2", "3", "4", "5"}) {
      list += (list.empty() ? "" : ", ") + valueText(choice.settings.value(word.key + std::string(band)), word.kind);
    }
    text += fmt::format("{} = [{}]\n", word.word, list);
  }
  for (const SettingWord& word : pictureWords) {
    text += fmt::format("{} = {}\n", word.word, valueText(choice.settings.value(word.key), word.kind));
  }
  text += fmt::format("mix = {}\n", choice.mix);
  if (choice.mask) text += "mask = " + inQuotes(fs::absolute(*choice.mask).string()) + "\n";
  text += fmt::format("ref-edge = {}\n", choice.refEdge.value_or(0));
  return text;
}

}  // namespace orbel
