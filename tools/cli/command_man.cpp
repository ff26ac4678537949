// orbel man: the manual page, made from the help. It is for the build and the packages, and hidden from the help.

#include <fmt/format.h>

#include <cstdio>
#include <string>

#include "cli/commands.h"
#include "cli/option_table.h"

namespace orbel {

namespace {

// Text as troff takes it: hyphens are hyphens, backslashes show, and no line begins with a command.
std::string troff(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '-' || c == '\\') result += c == '-' ? "\\" : "\\e";
    if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n')) result += "\\&";
    if (c != '\\') result += c;
  }
  return result;
}

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return text;
}

void printOption(const OptionEntry& option) {
  std::string names;
  for (const std::string& name : option.names) names += (names.empty() ? "" : ", ") + ("\\fB" + troff(name) + "\\fR");
  if (!option.value.empty()) names += (names.empty() ? "\\fI" : " \\fI") + troff(option.value) + "\\fR";
  fmt::print(".TP\n{}\n{}\n", names, troff(option.text));
}

void printCommand(const CommandEntry& command, const std::string& programFooter) {
  if (command.name.empty()) {
    fmt::print(".SH OPTIONS\n");
  } else {
    const char* const end = command.text.back() == '.' ? "" : ".";
    fmt::print(".SH {}\n.B orbel {}\n.PP\n{}{}\n", troff(upper("orbel " + command.name)), troff(command.name),
               troff(command.text), end);
  }
  std::string group;
  for (const OptionEntry& option : command.options) {
    if (option.group != group && option.group != "Options") fmt::print(".SS {}\n", troff(option.group));
    group = option.group;
    printOption(option);
  }
  // A command without a footer has the program's.
  if (!command.footer.empty() && (command.name.empty() || command.footer != programFooter))
    fmt::print(".PP\n.nf\n{}\n.fi\n", troff(command.footer));
}

void printPage(const CLI::App& program) {
  const std::vector<CommandEntry> table = commandTable(program);
  fmt::print(".TH ORBEL 1 \"\" \"orbel {}\" \"User Commands\"\n", ORBEL_VERSION);
  fmt::print(".SH NAME\norbel \\- equalizer for the detail in photographs\n");
  fmt::print(".SH SYNOPSIS\n.B orbel\n.I IN OUT\n[options]\n.br\n.B orbel\n.I COMMAND\n[options]\n");
  fmt::print(".SH DESCRIPTION\n{}\n", troff(table.front().text));
  for (const CommandEntry& command : table) printCommand(command, table.front().footer);
}

}  // namespace

void addManCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand("man", "Print the manual page");
  command->group("");
  command->callback([&program] { printPage(program); });
}

}  // namespace orbel
