// One file from its reading to its writing.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "pictures/exiftool.h"
#include "pictures/image_file.h"
#include "batch/outcome.h"
#include "plugin/plugin_host.h"
#include "cli/settings_options.h"

namespace orbel {

struct Job {
  std::string input;
  std::string output;
  std::string extension;     // of the format to write
  bool overwrite = false;    // whatever is there
  bool update = false;       // overwrite what is out of date
  bool makesFolder = false;  // of the output, where there is none
  bool overwriteRecipe = false;
  Notes notes{};  // that are known beforehand
};

struct WorkOptions {
  SettingsChoice choice;
  nlohmann::json madeWith;  // what results remember of all this
  PluginEntry entry = nullptr;
  std::optional<VipsBandFormat> samples;  // of the output; as the input's if not given
  std::optional<int> hostDepth;           // the least that loses nothing if not given
  SaveOptions save;
  std::optional<int> page;  // of the inputs
  bool keepsOriginal = false;
  bool writesRecipe = false;
  bool dryRun = false;
  double mostMinutes = 10;
  double mostMemory = 0;  // bytes; 0: no limit
  unsigned threads = 1;   // for the estimate of time
};

// The outcome of a job that wasn't done.
Outcome settled(const Job& job, Outcome::Status status, const Failure& why);

// What a job needs of the process that began it.
struct Surroundings {
  std::function<void(double)> waitFor;  // called with bytes of memory before they are taken; returns when they are free
  AskExiftool askExiftool;
};

// Does the job; in a dry run all but the work itself and the writing: the picture is read to its end. Throws Failure,
// and std::bad_alloc.
Outcome work(const Job& job, const WorkOptions& options, const Surroundings& surroundings);

}  // namespace orbel
