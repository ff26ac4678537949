// orbel: the band equalizer on image files, without Photoshop.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "batch/outcome.h"
#include "cli/commands.h"
#include "plugin/module.h"
#include "settings/settings.h"

namespace orbel {

namespace {

constexpr const char* description =
    "Splits pictures into five bands of detail and a coarse residual, weighs each, and puts them together again.\n"
    "Bands are numbered from the finest (1) to the coarsest (5).";

constexpr const char* notes =
    "orbel IN OUT is short for orbel apply IN -o OUT. orbel COMMAND --help tells about a command.\n"
    "\n"
    "Exit status: 0 all good, 1 a file failed, 2 wrong usage or settings, 3 the plug-in can't be loaded,\n"
    "130 interrupted.";

constexpr AddCommand commands[] = {addApplyCommand,   addSheetCommand,      addBandsCommand, addInfoCommand,
                                   addFormatsCommand, addPresetsCommand,    addKeysCommand,  addGimpCommand,
                                   addJsxCommand,     addCompletionCommand, addManCommand};

// `orbel IN OUT [options]` is typed more often than anything else, and is an apply without the word.
bool isPlainForm(const CLI::App& program, const std::vector<std::string>& arguments) {
  if (arguments.empty()) return false;
  const std::string& first = arguments.front();
  if (first == "-h" || first == "--help" || first == "--help-all" || first == "--version") return false;
  const auto all = program.get_subcommands([](const CLI::App*) { return true; });
  return std::none_of(all.begin(), all.end(), [&](const CLI::App* command) { return command->get_name() == first; });
}

ExitCode run(int argc, char** argv) {
  ExitCode outcome = exitGood;
  CLI::App program(description, "orbel");
  program.footer(notes);
  program.set_version_flag("--version", "orbel " ORBEL_VERSION);
  program.require_subcommand(1);
  for (const AddCommand add : commands) add(program, outcome);

  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (isPlainForm(program, arguments)) arguments.insert(arguments.begin(), {"apply", "--plain"});
  std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
  try {
    program.parse(arguments);
  } catch (const CLI::Success& request) {
    program.exit(request);  // prints the help or the version
  } catch (const CLI::ParseError& error) {
    throw SettingsError(error.what() + std::string(" (orbel --help tells more)"));
  }
  return outcome;
}

// Without a standard output, the next file that is opened would take its place.
void fillStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) return;
  }
}

ExitCode runAndFlush(int argc, char** argv) {
  const ExitCode outcome = run(argc, argv);
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good()) return outcome;
  std::cerr << "orbel: standard output: can't be written, or not all of it\n";
  return outcome == exitGood ? exitFileFailed : outcome;
}

// One line for each failure, whatever stands in names.
void say(const std::exception& error) { std::cerr << "orbel: " << printable(error.what()) << '\n'; }

}  // namespace

}  // namespace orbel

int main(int argc, char** argv) {
  using namespace orbel;
  fillStandardStreams();
  // Over the limit for file sizes, writing then fails like on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return runAndFlush(argc, argv);
  } catch (const SettingsError& error) {
    say(error);
    return exitUsage;
  } catch (const NoPlugin& error) {
    say(error);
    return exitNoPlugin;
  } catch (const std::exception& error) {
    say(error);
    return exitFileFailed;
  }
}
