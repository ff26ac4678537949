// One file, from its reading to its writing: check, decode, equalize, write.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "batch/outcome.h"
#include "pictures/exiftool.h"
#include "pictures/picture.h"
#include "pictures/save.h"
#include "plugin/plugin_host.h"
#include "settings/settings.h"

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

struct JobOptions {
  Settings settings;
  nlohmann::json madeWith;            // what results remember of all this
  PluginEntry plugin = nullptr;       // a module to play as a host does, instead of the engine
  std::optional<int> hostDepth;       // of a module's document; the least that loses nothing if not given
  std::optional<SampleType> samples;  // of the output; as the input's if not given
  SaveOptions save;
  std::optional<int> page;        // of the inputs
  std::optional<Rectangle> crop;  // of the picture as it is shown: what is written of the result
  bool keepsOriginal = false;
  bool writesRecipe = false;
  bool dryRun = false;
  double mostMinutes = 10;
  double mostMemory = 0;  // bytes; 0: no limit
  int threads = 0;        // 0: as many as there are processors
};

// The outcome of a job that wasn't done.
Outcome outcomeOf(const Job& job, Outcome::Status status, const Failure& why);

// What a job needs of the process that began it.
struct Surroundings {
  std::function<void(double)> waitFor;  // called with bytes of memory before they are taken; returns when they are free
  AskExiftool askExiftool;
  std::function<void(double)> tellPart;  // of the work that is done, 0 to 1, now and then
};

// Does the job; in a dry run all but the work itself and the writing: the picture is read to its end. Throws Failure,
// and std::bad_alloc.
Outcome doJob(const Job& job, const JobOptions& options, const Surroundings& surroundings);

}  // namespace orbel
