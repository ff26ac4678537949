#include "cli/option_table.h"

namespace orbel {

namespace {

OptionEntry entryOf(const CLI::Option& option) {
  OptionEntry entry;
  for (const std::string& name : option.get_snames()) entry.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) entry.names.push_back("--" + name);
  if (entry.names.empty()) entry.value = option.get_name();
  if (option.get_type_size() != 0 && !entry.names.empty()) entry.value = option.get_type_name();
  entry.text = option.get_description();
  entry.group = option.get_group();
  return entry;
}

void add(const CLI::App& command, const std::string& name, std::vector<CommandEntry>& table) {
  CommandEntry entry;
  entry.name = name;
  entry.text = command.get_description();
  entry.footer = command.get_footer();
  for (const CLI::Option* option : command.get_options({})) {
    if (!option->get_group().empty()) entry.options.push_back(entryOf(*option));
  }
  table.push_back(entry);
  for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
    if (!sub->get_group().empty()) add(*sub, name.empty() ? sub->get_name() : name + " " + sub->get_name(), table);
  }
}

}  // namespace

std::vector<CommandEntry> commandTable(const CLI::App& program) {
  std::vector<CommandEntry> table;
  add(program, "", table);
  return table;
}

}  // namespace orbel
