// Many files, each in a process of its own: a plug-in serves one run at a time in a process, and a file that brings its
// process down takes no other with it.
#pragma once

#include <vector>

#include "batch/job.h"
#include "batch/report.h"
#include "files/exit_code.h"

namespace orbel {

struct BatchOptions {
  unsigned processes = 1;  // at the same time
  double memory = 0;       // bytes that they may have together; fewer run at a time rather than more memory
  bool failFast = false;   // begin no more files after one that failed
  bool verbose = false;
};

// Does the jobs, tells of each, and returns what the program ends with. On SIGINT, SIGTERM and SIGHUP the files in hand
// are given up, and nothing is left of them.
ExitCode runBatch(const std::vector<Job>& jobs, const JobOptions& work, const BatchOptions& batch, Report& report);

}  // namespace orbel
