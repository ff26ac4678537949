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

  double value(const toml::node& node, orbel_key_kind kind) const {
    if (kind == ORBEL_KEY_FLAG) {
      if (!node.is_boolean()) refuse("true or false");
      return node.as_boolean()->get() ? 1.0 : 0.0;
    }
    if (kind == ORBEL_KEY_INTEGER) {
      const std::optional<std::int32_t> number = node.is_integer() ? node.value<std::int32_t>() : std::nullopt;
      if (!number) refuse("a whole number");
      return *number;
    }
    const std::optional<double> number = node.is_number() ? node.value<double>() : std::nullopt;
    if (!number || !std::isfinite(*number)) refuse("a number");
    return *number;
  }
  double value(orbel_key_kind kind) const { return value(node_, kind); }

  std::string text() const {
    if (!node_.is_string()) refuse("a text in quotes");
    return node_.as_string()->get();
  }

  void set(const std::string& key, const toml::node& node, Settings& settings) const {
    setInRange(settings, place(), key, value(node, kindOf(key)));
  }
  void set(const std::string& key, Settings& settings) const { set(key, node_, settings); }

  void setBands(const SettingWord& word, Settings& settings) const {
    const toml::array* const list = node_.as_array();
    if (list != nullptr && list->size() != ORBEL_BANDS) refuse("one value or five");
    for (int band = 1; band <= ORBEL_BANDS; ++band) {
      set(keyOf(word, band), list == nullptr ? node_ : (*list)[static_cast<std::size_t>(band) - 1], settings);
    }
  }

 private:
  std::string word_;
  const toml::node& node_;
  const std::string& file_;
  toml::source_index line_;
};

void apply(const Entry& entry, const std::string& file, Settings& settings, std::string& description) {
  const std::string& word = entry.word();
  const std::string option = entry.place() + ": " + word;
  if (const SettingWord* const bands = bandWord(word)) {
    entry.setBands(*bands, settings);
  } else if (const SettingWord* const whole = pictureWord(word)) {
    entry.set(whole->key, settings);
  } else if (isSaid(mixWord, word)) {
    setMix(settings, option, entry.value(ORBEL_KEY_NUMBER));
  } else if (isSaid(maskWord, word)) {
    settings.mask = (fs::path(file).parent_path() / entry.text()).string();
  } else if (isSaid(referenceEdgeWord, word)) {
    setReferenceEdge(settings, option, static_cast<int>(entry.value(ORBEL_KEY_INTEGER)));
  } else if (isSaid(formWord, word)) {
    setForm(settings, option, entry.text());
  } else if (isSaid(limitWord, word)) {
    settings.run.limit = entry.value(ORBEL_KEY_FLAG) != 0 ? 1 : 0;
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

std::string valueText(const Settings& settings, const std::string& key) {
  const double value = valueOf(settings, key);
  return kindOf(key) == ORBEL_KEY_FLAG ? (value != 0.0 ? "true" : "false") : fmt::format("{}", value);
}

}  // namespace

std::string readSettings(const std::string& file, Settings& settings) {
  std::string description;
  try {
    const toml::table table = toml::parse(textOf(file), file);
    for (const auto& [key, node] : table) apply(Entry(file, key, node), file, settings, description);
  } catch (const toml::parse_error& error) {
    throw SettingsError(fmt::format("{}:{}: {}", file, error.source().begin.line, error.description()));
  }
  return description;
}

std::string settingsText(const Settings& settings, const std::string& description) {
  std::string text;
  if (!description.empty()) text += "description = " + inQuotes(description) + "\n";
  for (const SettingWord& word : bandWords) {
    std::string list;
    for (int band = 1; band <= ORBEL_BANDS; ++band) {
      list += (list.empty() ? "" : ", ") + valueText(settings, keyOf(word, band));
    }
    text += fmt::format("{} = [{}]\n", word.word, list);
  }
  for (const SettingWord& word : pictureWords) {
    text += fmt::format("{} = {}\n", word.word, valueText(settings, word.key));
  }
  text += fmt::format("{} = {}\n", mixWord.word, settings.run.mix);
  if (settings.mask) text += "mask = " + inQuotes(fs::absolute(*settings.mask).string()) + "\n";
  text += fmt::format("{} = {}\n", referenceEdgeWord.word, settings.run.reference_edge);
  text += fmt::format("{} = \"{}\"\n", formWord.word, formOf(settings));
  text += fmt::format("{} = {}\n", limitWord.word, settings.run.limit != 0);
  return text;
}

}  // namespace orbel
