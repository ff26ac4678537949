// orbel keys: the plug-in's keys, as -s and scripts take them.

#include <fmt/format.h>

#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "settings/settings_json.h"

namespace orbel {

namespace {

const char* typeOf(ScriptKind kind) {
  return kind == ScriptKind::Float ? "number" : kind == ScriptKind::Flag ? "on or off" : "whole number";
}

// orbel draws no overlay unless it is asked for one.
double defaultOf(const ScriptKey& key) { return Settings().value(nameOf(key.code)); }

void printKeys(bool asJson) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const ScriptKey& key : scriptKeys) {
    const nlohmann::ordered_json value = valueJson(defaultOf(key), key.kind);
    if (asJson) {
      list.push_back({{"key", nameOf(key.code)}, {"name", key.name}, {"type", typeOf(key.kind)}, {"default", value}});
    } else {
      const std::string text =
          key.kind == ScriptKind::Flag ? (value ? "on" : "off") : fmt::format("{}", defaultOf(key));
      std::cout << fmt::format("{}  {:<16} {:<13} default {}\n", nameOf(key.code), key.name, typeOf(key.kind), text);
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
