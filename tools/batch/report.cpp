#include "batch/report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "batch/estimate.h"
#include "batch/inputs.h"

namespace orbel {

namespace {

std::string clock(double seconds) {
  const auto whole = std::lround(seconds);
  if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

constexpr double secondsBeforeBar = 1;

}  // namespace

Report::Report(const ReportOptions& options, std::size_t files, double bytes)
    : options_(options), files_(files), bytes_(bytes) {
  if (options_.progress == Progress::Auto) {
    const bool bar = isatty(STDERR_FILENO) != 0 && !options_.quiet;
    options_.progress = bar ? Progress::Bar : Progress::None;
  }
}

void Report::flush() {
  std::fflush(stdout);
  std::fflush(stderr);
}

double Report::secondsGone() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

double Report::bytesGone() const {
  double bytes = bytesDone_;
  for (const auto& [input, part] : partsDone_) bytes += part * sizeOfFile(input);
  return bytes;
}

double Report::secondsLeft() const {
  const double gone = bytesGone();
  return gone > 0 ? secondsGone() * std::max(0.0, bytes_ / gone - 1) : 0;
}

double Report::megapixelsPerSecond() const { return megapixels_ / std::max(secondsGone(), 1e-3); }

std::string Report::line(const Outcome& o) const {
  if (o.status == Outcome::Status::Skipped) return o.line();
  const std::string shape = fmt::format("{} x {}, {} bits", o.width, o.height, o.bits);
  if (options_.dryRun) {
    return fmt::format("{} -> {} ({}, about {} of memory, {})", o.input, o.output, shape, memoryText(o.memory),
                       timeText(o.estimatedSeconds));
  }
  return fmt::format("{} -> {} ({})", o.input, o.output, shape);
}

void Report::report(const Outcome& o) {
  if (o.status == Outcome::Status::Failed) fmt::print(stderr, "orbel: {}\n", printable(o.line()));
  if (!options_.quiet) {
    for (const std::string& note : o.notes) {
      fmt::print(stderr, "orbel: note on {}: {}\n", printable(o.input), printable(note));
    }
  }
  std::FILE* const results = options_.resultsToErrors ? stderr : stdout;
  if (options_.json) {
    fmt::print(results, "{}", jsonLine(toJson(o)));
  } else if (o.status != Outcome::Status::Failed && !options_.quiet) {
    fmt::print(results, "{}\n", printable(line(o)));
  }
}

void Report::tell(const Outcome& outcome) {
  clearBar();
  partsDone_.erase(outcome.input);
  bytesDone_ += sizeOfFile(outcome.input);
  estimatedSeconds_ += outcome.estimatedSeconds;
  megapixels_ += outcome.status == Outcome::Status::Done ? outcome.megapixels() : 0;
  done_ += outcome.status == Outcome::Status::Done ? 1 : 0;
  failed_ += outcome.status == Outcome::Status::Failed ? 1 : 0;
  skipped_ += outcome.status == Outcome::Status::Skipped ? 1 : 0;
  report(outcome);
  printProgress();
  flush();
  tick();
}

void Report::printProgress() {
  printed_ = secondsGone();
  const std::size_t gone = done_ + failed_ + skipped_;
  if (options_.progress == Progress::Json) {
    fmt::print(stderr, "{}",
               jsonLine({{"files", files_},
                         {"done", gone},
                         {"failed", failed_},
                         {"part", bytes_ > 0 ? std::min(1.0, bytesGone() / bytes_) : 0},
                         {"megapixels_per_second", megapixelsPerSecond()},
                         {"seconds_left", secondsLeft()}}));
  } else if (options_.progress == Progress::Lines) {
    fmt::print(stderr, "{} of {} files, {:.1f} megapixels/s, {} left\n", gone, files_, megapixelsPerSecond(),
               clock(secondsLeft()));
  }
}

void Report::tick() {
  constexpr double secondsBetweenLines = 2;
  const double gone = secondsGone();
  if (options_.progress == Progress::Bar && gone >= secondsBeforeBar) drawBar();
  if (!partsDone_.empty() && gone >= printed_ + secondsBetweenLines) printProgress();
}

void Report::drawBar() {
  constexpr std::size_t cells = 30;
  const std::size_t gone = done_ + failed_ + skipped_;
  const auto full = static_cast<std::size_t>(bytes_ > 0 ? static_cast<double>(cells) * bytesGone() / bytes_ : 0);
  const std::string left = bytesGone() > 0 ? clock(secondsLeft()) + " left" : clock(secondsGone());
  fmt::print(stderr, "\r\033[K[{:=<{}}{: <{}}] {} of {} files, {:.1f} megapixels/s, {}", "", std::min(full, cells), "",
             cells - std::min(full, cells), gone, files_, megapixelsPerSecond(), left);
  std::fflush(stderr);
  barIsThere_ = true;
}

void Report::clearBar() {
  if (barIsThere_) fmt::print(stderr, "\r\033[K");
  barIsThere_ = false;
}

void Report::summarize() {
  clearBar();
  const std::size_t left = files_ - done_ - failed_ - skipped_;
  if (files_ < 2 || options_.quiet) return;
  if (options_.json) return;
  std::FILE* const results = options_.resultsToErrors ? stderr : stdout;
  fmt::print(results, "{} done, {} failed, {} skipped", done_, failed_, skipped_);
  if (left > 0) fmt::print(results, ", {} not begun", left);
  if (options_.dryRun) {
    fmt::print(results, "; {} one after the other", timeText(estimatedSeconds_));
  } else if (done_ > 0) {
    fmt::print(results, "; {:.1f} megapixels/s in {}", megapixelsPerSecond(), clock(secondsGone()));
  }
  fmt::print(results, "\n");
}

}  // namespace orbel
