// orbel keys: the plug-in's keys, as -s and scripts take them.

#include <fmt/format.h>

#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "settings/settings_json.h"

namespace orbel {

namespace {

const char* typeOf(orbel_key_kind kind) {
  return kind == ORBEL_KEY_NUMBER ? "number" : kind == ORBEL_KEY_FLAG ? "on or off" : "whole number";
}

// "gain 1", "half": the member that a key sets.
std::string memberOf(const std::string& key) {
  for (const SettingWord& word : bandWords) {
    if (key.rfind(word.key, 0) == 0) return word.word + std::string(" ") + key.back();
  }
  for (const SettingWord& word : pictureWords) {
    if (key == word.key) return word.word;
  }
  return "";
}

void printKeys(bool asJson) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  const Settings defaults;
  for (int i = 0; i < ORBEL_KEYS; ++i) {
    const std::string key = orbel_key(i);
    const nlohmann::ordered_json value = valueJson(defaults, key);
    double least = 0;
    double most = 0;
    orbel_key_range(key.c_str(), &least, &most);
    if (asJson) {
      list.push_back({{"key", key},
                      {"name", memberOf(key)},
                      {"type", typeOf(kindOf(key))},
                      {"default", value},
                      {"least", least},
                      {"most", most}});
    } else {
      const bool flag = kindOf(key) == ORBEL_KEY_FLAG;
      const std::string text = flag ? (value ? "on" : "off") : fmt::format("{}", valueOf(defaults, key));
      const std::string range = flag ? "" : fmt::format(", {} to {}", least, most);
      std::cout << fmt::format("{}  {:<12} {:<13} default {}{}\n", key, memberOf(key), typeOf(kindOf(key)), text,
                               range);
    }
  }
  if (asJson) std::cout << jsonText(list);
}

}  // namespace

void addKeysCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand("keys", "List the plug-in's 24 keys");
  const auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "Print JSON");
  command->callback([json] { printKeys(*json); });
}

}  // namespace orbel
