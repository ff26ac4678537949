// orbel completion: what a shell needs to complete orbel's commands and options.

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "option_table.h"

namespace {

// Words that may follow a command: its options, and the commands below it.
std::string wordsAfter(const CommandEntry& command, const std::vector<CommandEntry>& table) {
  std::string words;
  const std::string prefix = command.name.empty() ? "" : command.name + " ";
  for (const CommandEntry& other : table) {
    const bool below = other.name.size() > prefix.size() && other.name.rfind(prefix, 0) == 0;
    if (below && other.name.find(' ', prefix.size()) == std::string::npos) {
      words += other.name.substr(prefix.size()) + " ";
    }
  }
  for (const OptionEntry& option : command.options) {
    for (const std::string& name : option.names) words += name + " ";
  }
  return words;
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
    fmt::print("    {}) words='{}' ;;\n", pattern, wordsAfter(*entry, table));
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

void printZsh(const std::vector<CommandEntry>& table) {
  fmt::print(
      "#compdef orbel\n"
      "# zsh completion for orbel: orbel completion zsh > a folder of $fpath/_orbel\n"
      "_orbel() {{\n"
      "  local -a options commands\n"
      "  case \"${{words[2]}} ${{words[3]}} \" in\n");
  for (auto entry = table.rbegin(); entry != table.rend(); ++entry) {
    fmt::print("    {}) options=(", entry->name.empty() ? "*" : "'" + entry->name + " '*");
    for (const OptionEntry& option : entry->options) {
      for (const std::string& name : option.names) {
        fmt::print(" {}", quotedForShell(name + ":" + escaped(option.text, ":")));
      }
    }
    fmt::print(" )");
    std::string commands;
    if (entry->name.empty()) {
      for (const CommandEntry& other : table) {
        const bool top = !other.name.empty() && other.name.find(' ') == std::string::npos;
        if (top) commands += " " + quotedForShell(other.name + ":" + escaped(other.text, ":"));
      }
    }
    if (!commands.empty()) fmt::print(" commands=({} )", commands);
    fmt::print(" ;;\n");
  }
  fmt::print(
      "  esac\n"
      "  (( CURRENT == 2 )) && _describe -t commands command commands\n"
      "  [[ $PREFIX == -* ]] && _describe -o option options\n"
      "  _files\n"
      "}}\n"
      "(( $+functions[compdef] )) && compdef _orbel orbel\n");
}

void printFish(const std::vector<CommandEntry>& table) {
  fmt::print("# fish completion for orbel: orbel completion fish > ~/.config/fish/completions/orbel.fish\n");
  for (const CommandEntry& command : table) {
    const std::string first = command.name.substr(0, command.name.find(' '));
    if (!command.name.empty()) {
      const bool top = first == command.name;
      const std::string when = top ? "__fish_use_subcommand" : "__fish_seen_subcommand_from " + first;
      fmt::print("complete -c orbel -n {} -a {} -d {}\n", quotedForShell(when),
                 top ? command.name : command.name.substr(first.size() + 1), quotedForShell(command.text));
    }
    if (first != command.name) continue;
    for (const OptionEntry& option : command.options) {
      if (option.names.empty()) continue;
      std::string names;
      for (const std::string& name : option.names)
        names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
      const std::string when = command.name.empty() ? "__fish_use_subcommand" : "__fish_seen_subcommand_from " + first;
      fmt::print("complete -c orbel -n {}{}{} -d {}\n", quotedForShell(when), names, option.value.empty() ? "" : " -r",
                 quotedForShell(option.text));
    }
  }
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
