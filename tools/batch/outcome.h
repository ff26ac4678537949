// What became of one file.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/failure.h"

namespace orbel {

struct Outcome {
  enum class Status { Done, Failed, Skipped };

  std::string input;
  std::string output;
  Status status = Status::Failed;
  Cause cause = Cause::None;       // of what failed or was skipped, with
  std::string about;               // the file that stood in the way, and
  std::string reason;              // why
  std::vector<std::string> notes;  // on what the output doesn't hold, or holds otherwise
  int width = 0;
  int height = 0;
  int bits = 0;       // of the output's samples
  double memory = 0;  // bytes, as estimated
  double estimatedSeconds = 0;
  double seconds = 0;

  // The line that tells of what failed or was skipped.
  std::string line() const { return about + ": " + reason; }

  double megapixels() const { return 1e-6 * width * height; }
};

// Names that are no UTF-8 lose their odd bytes in the text.
std::string jsonLine(const nlohmann::json& json);

nlohmann::json toJson(const Outcome& outcome);
nlohmann::json toJson(const Failure& failure);  // the part of an outcome's that tells of it
Outcome outcomeFrom(const nlohmann::json& json);

// The text in one line and fit for a terminal: control characters become escapes.
std::string printable(const std::string& text);

}  // namespace orbel
