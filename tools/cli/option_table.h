// The program's commands and options as plain data, read from their one description, for shells and for the manual.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace orbel {

struct OptionEntry {
  std::vector<std::string> names;  // with their hyphens; empty for a positional
  std::string value;               // what it takes, as in the help; empty for a flag
  std::string text;
  std::string group;
};

struct CommandEntry {
  std::string name;  // "apply", "presets list"; empty for the program
  std::string text;
  std::string footer;
  std::vector<OptionEntry> options;
};

// The program first, then its commands, each followed by its own. Hidden ones are left out.
std::vector<CommandEntry> commandTable(const CLI::App& program);

}  // namespace orbel
