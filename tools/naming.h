// Where results go.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "inputs.h"
#include "outcome.h"
#include "work.h"

struct NamingArguments {
  std::optional<std::string> output;     // a file, a folder, a pattern with %s, or "-"
  std::optional<std::string> extension;  // of the output
  bool inPlace = false;
  bool overwrite = false;
  bool update = false;  // only where the output is older than the input, or isn't there
};

struct Plan {
  std::vector<Job> jobs;
  std::vector<Outcome> settled;      // what needs no work: skipped, or impossible
  std::vector<std::string> folders;  // that the jobs write into, and that may not be there yet
};

// The jobs for the inputs, each with an output of its own:
//   a file's name      for one input;
//   a folder           each under its own name, and under its folders when it was found below one;
//   a pattern          %s being the name without extension, and its folders;
//   nothing            NAME_orbel.EXT beside the input, or the input itself, in place.
// The extension is that of --ext, else of the file or pattern, else of the input; where the input's format can only be
// read, tif. Throws SettingsError when the output doesn't suit the inputs.
Plan planJobs(const Inputs& inputs, const NamingArguments& arguments, bool recursive);
