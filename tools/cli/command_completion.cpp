// orbel completion: what a shell needs to complete orbel's commands and options.

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

#include "cli/commands.h"
#include "cli/option_table.h"

namespace orbel {

namespace {

// Descriptions of one line, as lists have room for.
std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::vector<const CommandEntry*> commandsBelow(const CommandEntry& command, const std::vector<CommandEntry>& table) {
  const std::string prefix = command.name.empty() ? "" : command.name + " ";
  std::vector<const CommandEntry*> found;
  for (const CommandEntry& other : table) {
    const bool below = other.name.size() > prefix.size() && other.name.rfind(prefix, 0) == 0;
    if (below && other.name.find(' ', prefix.size()) == std::string::npos) found.push_back(&other);
  }
  return found;
}

// Words that may follow a command: its options, and the commands below it.
std::string wordsAfter(const CommandEntry& command, const std::vector<CommandEntry>& table) {
  std::string words;
  for (const CommandEntry* other : commandsBelow(command, table)) {
    words += other->name.substr(other->name.rfind(' ') + 1) + " ";
  }
  for (const OptionEntry& option : command.options) {
    for (const std::string& name : option.names) words += name + " ";
  }
  return words;
}

// What orbel IN OUT is short for.
const CommandEntry& plainForm(const std::vector<CommandEntry>& table) {
  return *std::find_if(table.begin(), table.end(), [](const CommandEntry& entry) { return entry.name == "apply"; });
}

// The longest command whose words begin the line decides; files complete everywhere.
void printBash(const std::vector<CommandEntry>& table) {
  fmt::print(
      "# bash completion for orbel: source <(orbel completion bash)\n"
      "_orbel() {{\n"
      "  local words current=${{COMP_WORDS[COMP_CWORD]}}\n"
      "  case \"${{COMP_WORDS[1]-}} ${{COMP_WORDS[2]-}} \" in\n");
  for (auto entry = table.rbegin(); entry != table.rend(); ++entry) {
    const std::string pattern = entry->name.empty() ? "*" : "\"" + entry->name + " \"*";
    std::string words = wordsAfter(*entry, table);
    if (entry->name.empty()) words += wordsAfter(plainForm(table), table);
    fmt::print("    {}) words='{}' ;;\n", pattern, words);
  }
  fmt::print(
      "  esac\n"
      "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\"; [[ $current == -* ]] || compgen -f -- "
      "\"$current\")\n"
      "}}\n"
      "complete -o filenames -F _orbel orbel\n");
}

std::string escaped(const std::string& text, const std::string& special) {
  std::string result;
  for (const char c : text) {
    if (special.find(c) != std::string::npos) result += '\\';
    result += c;
  }
  return result;
}

// In single quotes of the shell.
std::string quotedForShell(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

void printZshOptions(const CommandEntry& command) {
  for (const OptionEntry& option : command.options) {
    for (const std::string& name : option.names) {
      fmt::print(" {}", quotedForShell(name + ":" + escaped(option.text, ":")));
    }
  }
}

void printZsh(const std::vector<CommandEntry>& table) {
  fmt::print(
      "#compdef orbel\n"
      "# zsh completion for orbel: orbel completion zsh > a folder of $fpath/_orbel\n"
      "_orbel() {{\n"
      "  local -a options commands\n"
      "  local at\n"
      "  case \"${{words[2]}} ${{words[3]}} \" in\n");
  for (auto entry = table.rbegin(); entry != table.rend(); ++entry) {
    fmt::print("    {}) options=(", entry->name.empty() ? "*" : "'" + entry->name + " '*");
    printZshOptions(*entry);
    if (entry->name.empty()) printZshOptions(plainForm(table));
    std::string commands;
    for (const CommandEntry* other : commandsBelow(*entry, table)) {
      const std::string word = other->name.substr(other->name.rfind(' ') + 1);
      commands += " " + quotedForShell(word + ":" + escaped(firstLine(other->text), ":"));
    }
    fmt::print(" ) commands=({} ) at={} ;;\n", commands, entry->name.empty() ? 2 : 3);
  }
  fmt::print(
      "  esac\n"
      "  (( CURRENT == at )) && _describe -t commands command commands\n"
      "  [[ $PREFIX == -* ]] && _describe -o option options\n"
      "  _files\n"
      "}}\n"
      "# The file is loaded by the first completion, or sourced.\n"
      "if [[ $funcstack[1] == _orbel ]]; then _orbel \"$@\"; else compdef _orbel orbel; fi\n");
}

// Where a command's options and the commands below it come in: behind its words, and behind the name of a picture those
// of the plain form.
std::string fishCondition(const std::string& command) {
  if (command.empty()) return "__fish_use_subcommand";
  std::string condition;
  std::string word;
  std::istringstream words(command);
  while (words >> word) condition += (condition.empty() ? "" : "; and ") + ("__fish_seen_subcommand_from " + word);
  return condition;
}

void printFishOptions(const CommandEntry& command, const std::string& when) {
  for (const OptionEntry& option : command.options) {
    if (option.names.empty()) continue;
    std::string names;
    for (const std::string& name : option.names)
      names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    fmt::print("complete -c orbel -n {}{}{} -d {}\n", quotedForShell(when), names, option.value.empty() ? "" : " -r",
               quotedForShell(option.text));
  }
}

void printFish(const std::vector<CommandEntry>& table) {
  fmt::print("# fish completion for orbel: orbel completion fish > ~/.config/fish/completions/orbel.fish\n");
  std::string top;
  for (const CommandEntry* command : commandsBelow(table.front(), table)) top += " " + command->name;
  for (const CommandEntry& command : table) {
    std::string below;
    for (const CommandEntry* other : commandsBelow(command, table)) {
      below += " " + other->name.substr(other->name.rfind(' ') + 1);
    }
    const std::string when = fishCondition(command.name);
    for (const CommandEntry* other : commandsBelow(command, table)) {
      const std::string none = command.name.empty() ? "" : "; and not __fish_seen_subcommand_from" + below;
      fmt::print("complete -c orbel -n {} -a {} -d {}\n", quotedForShell(when + none),
                 other->name.substr(other->name.rfind(' ') + 1), quotedForShell(firstLine(other->text)));
    }
    printFishOptions(command, when);
  }
  printFishOptions(plainForm(table), "not __fish_use_subcommand; and not __fish_seen_subcommand_from" + top);
}

void addShell(CLI::App& command, const char* shell, void (*print)(const std::vector<CommandEntry>&),
              const CLI::App& program) {
  command.add_subcommand(shell, std::string("For ") + shell)->callback([print, &program] {
    print(commandTable(program));
  });
}

}  // namespace

void addCompletionCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand("completion", "Print what a shell needs to complete the options");
  command->require_subcommand(1);
  addShell(*command, "bash", printBash, program);
  addShell(*command, "zsh", printZsh, program);
  addShell(*command, "fish", printFish, program);
}

}  // namespace orbel
