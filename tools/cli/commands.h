// The subcommands of orbel, each in a file command_NAME.cpp of its own.
#pragma once

#include <CLI/CLI.hpp>

#include "files/exit_code.h"

namespace orbel {

// Each adds its subcommand to the program. Its work is done in the command's callback, once the command line has been
// parsed; it may throw SettingsError (exit 2), NoPlugin (exit 3) or any other exception (exit 1), or put an exit code
// in `outcome`, which lives as long as the program's description.
using AddCommand = void (*)(CLI::App& program, ExitCode& outcome);

void addApplyCommand(CLI::App& program, ExitCode& outcome);
void addBandsCommand(CLI::App& program, ExitCode& outcome);
void addCompletionCommand(CLI::App& program, ExitCode& outcome);
void addFormatsCommand(CLI::App& program, ExitCode& outcome);
void addGimpCommand(CLI::App& program, ExitCode& outcome);
void addInfoCommand(CLI::App& program, ExitCode& outcome);
void addJsxCommand(CLI::App& program, ExitCode& outcome);
void addKeysCommand(CLI::App& program, ExitCode& outcome);
void addManCommand(CLI::App& program, ExitCode& outcome);
void addPresetsCommand(CLI::App& program, ExitCode& outcome);
void addSheetCommand(CLI::App& program, ExitCode& outcome);

}  // namespace orbel
