#include "work_limits.h"

#include "commands.h"
#include "machine.h"

double Limits::mostMemory() const { return memory ? static_cast<double>(*memory) : availableMemory(); }

void addLimitOptions(CLI::App& command, Limits& limits, const char* group) {
  command
      .add_option("--memory", limits.memory,
                  "Memory for all of the work, as 800M or 4G (default: what the machine has to offer)")
      ->group(group)
      ->type_name("BYTES")
      ->transform(CLI::AsSizeValue(true).description(""));
  command
      .add_option("--max-minutes", limits.mostMinutes,
                  "Refuse a picture that would take longer by the estimate; 0: no limit (default 10)")
      ->group(group)
      ->type_name("N")
      ->check(CLI::NonNegativeNumber.description(""));
}
