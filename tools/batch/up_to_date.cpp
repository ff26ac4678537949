#include "batch/up_to_date.h"

#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "batch/remembered.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

// Some file systems count times in steps of two seconds.
constexpr std::time_t leastDifference = 2;

std::optional<fs::file_time_type> timeOf(const std::string& file) {
  std::error_code missing;
  const auto time = fs::last_write_time(file, missing);
  return missing ? std::nullopt : std::optional(time);
}

// As far as times tell. Equal ones say that the result was made at once.
bool isOlder(const Job& job, const JobOptions& options) {
  const auto written = timeOf(job.output);
  const auto read = timeOf(job.input);
  if (!written || !read || *written < *read) return true;
  const auto mask = options.settings.mask ? timeOf(*options.settings.mask) : std::nullopt;
  return mask && *written < *mask;
}

bool isUntouched(const MadeWith& made, const std::string& result) {
  struct stat file {};
  return stat(result.c_str(), &file) == 0 && std::abs(file.st_mtime - made.time) <= leastDifference;
}

// Empty when the job has to be done.
std::string reasonNotTo(const Job& job, const std::optional<MadeWith>& made, const JobOptions& options) {
  const bool otherwise = made && made->settings != options.madeWith;
  if (!otherwise) return job.output + " is up to date" + (made ? "" : ", by its time alone");
  if (job.overwrite || isUntouched(*made, job.output)) return "";
  return job.output + " was made with other settings, and somebody has changed it since; -f overwrites it";
}

}  // namespace

void leaveOutWhatIsUpToDate(Plan& plan, const JobOptions& options) {
  std::vector<Job> jobs;
  std::vector<bool> newer;  // than what they are made of
  std::vector<std::string> results;
  for (const Job& job : plan.jobs) {
    newer.push_back(job.update && !isOlder(job, options));
    if (newer.back()) results.push_back(job.output);
  }
  const auto told = madeWithOf(results);
  auto next = told.begin();
  for (std::size_t i = 0; i < newer.size(); ++i) {
    Job& job = plan.jobs[i];
    const std::string reason = newer[i] ? reasonNotTo(job, *next++, options) : "";
    if (reason.empty()) {
      jobs.push_back(std::move(job));
    } else {
      plan.outcomes.push_back(outcomeOf(job, Outcome::Status::Skipped, Failure(job.input, reason, Cause::UpToDate)));
    }
  }
  plan.jobs = std::move(jobs);
}

}  // namespace orbel
