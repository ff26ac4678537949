// What a batch tells while it runs and at its end.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "batch/outcome.h"

namespace orbel {

enum class Progress { Auto, Bar, Lines, Json, None };

struct ReportOptions {
  Progress progress = Progress::Auto;  // Auto: a bar where the error output is a terminal
  bool quiet = false;                  // errors only
  bool json = false;                   // results as JSON, one object a line
  bool dryRun = false;
  bool resultsToErrors = false;  // a picture goes to the standard output
};

class Report {
 public:
  // bytes: the size of all files together, by which the time that is left is told.
  Report(const ReportOptions& options, std::size_t files, double bytes);

  // Of one file. Results go to the standard output; failures, notes and progress to the error output.
  void tell(const Outcome& outcome);

  // Of the whole, where there was more than one file.
  void summarize();

  // So much of a file's work is done, 0 to 1.
  void tellPart(const std::string& input, double part) { partsDone_[input] = part; }

  // From time to time: keeps the bar alive.
  void tick();

  // Leaves nothing in a buffer.
  static void flush();

 private:
  double secondsGone() const;
  double bytesGone() const;  // with those of files that are in work
  double secondsLeft() const;
  double megapixelsPerSecond() const;
  std::string line(const Outcome& outcome) const;
  void report(const Outcome& outcome);
  void drawBar();
  void clearBar();
  void printProgress();

  ReportOptions options_;
  std::size_t files_;
  double bytes_;
  double bytesDone_ = 0;
  std::map<std::string, double> partsDone_;
  double megapixels_ = 0;
  double estimatedSeconds_ = 0;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
  std::size_t skipped_ = 0;
  bool barIsThere_ = false;
  double printed_ = 0;  // the seconds that had gone by then
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace orbel
