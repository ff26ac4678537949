// Where results go.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/inputs.h"
#include "batch/job.h"
#include "batch/outcome.h"

namespace orbel {

struct NamingArguments {
  std::optional<std::string> output;     // a file, a folder, a pattern with %s (and %e), or "-"
  std::optional<std::string> extension;  // of the output
  bool inPlace = false;
  bool overwrite = false;
  bool update = false;  // only what is not up to date
};

struct Plan {
  std::vector<Job> jobs;
  std::vector<Outcome> outcomes;  // what needs no work: skipped, or impossible
};

// The jobs for the inputs, each with an output of its own:
//   a file's name      for one input;
//   a folder           each under its own name, and under its folders when it was found below one;
//   a pattern          %s being the name without extension, and its folders, and %e in the last part the extension;
//   nothing            NAME_orbel.EXT beside the input, or the input itself, in place.
// The extension is that of --ext, else of the file or pattern, else of the input; where the input's format can only be
// read, tif.
//
// With recursive, the results of earlier runs are no inputs: what lies in the output's folder, where that is below the
// folder that was given, and what has the name of another input's output. Throws SettingsError when the output doesn't
// suit the inputs, or two files would get the same.
Plan planJobs(const Inputs& inputs, const NamingArguments& arguments, bool recursive);

}  // namespace orbel
