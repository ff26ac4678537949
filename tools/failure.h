// What stops a run: the file it is about, and the reason in one line.
#pragma once

#include <stdexcept>
#include <string>

struct Failure : std::runtime_error {
  Failure(const std::string& file, const std::string& reason) : std::runtime_error(file + ": " + reason) {}
};
