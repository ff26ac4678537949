#include "cli/work_limits.h"

#include "cli/commands.h"
#include "files/machine.h"
#include "settings/text_values.h"

namespace orbel {

double Limits::mostMemory() const { return memory ? static_cast<double>(*memory) : availableMemory(); }

void addLimitOptions(CLI::App& command, Limits& limits, const char* group) {
  command
      .add_option("--memory", limits.memory,
                  "Memory for all of the work, as 800M or 4G (default: what the machine has to offer)")
      ->group(group)
      ->type_name("BYTES")
      ->transform(CLI::AsSizeValue(true).description(""))
      // Before that one, which takes -1 for the largest number.
      ->transform(CLI::Validator(
          [](const std::string& text) {
            return text.find('-') == std::string::npos ? "" : orbel::quoted(text) + " is not a size of memory";
          },
          ""));
  command
      .add_option("--max-minutes", limits.mostMinutes,
                  "Refuse a picture that would take longer by the estimate; 0: no limit (default 10)")
      ->group(group)
      ->type_name("N")
      ->check([](const std::string& text) {
        return numberFrom("--max-minutes", text) < 0 ? orbel::quoted(text) + " is below 0" : "";
      });
}

}  // namespace orbel
