// Which files a command works on.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orbel {

struct Input {
  std::string file;
  std::string below;  // its path below the folder that was given, or its bare name
};

struct InputArguments {
  std::vector<std::string> names;
  std::optional<std::string> list;  // file with more names, or "-"
  bool recursive = false;
};

struct Inputs {
  std::vector<Input> files;
  std::vector<std::pair<std::string, std::string>> unreadable;  // folders, and why
  std::vector<std::string> leftAlone;                           // files in folders that are no pictures by their names
};

// The named files and those of the list, in that order; with recursive, in the place of a folder the pictures below it,
// by their names' extensions, in the order of names. Hidden files and folders, and what was kept as NAME_original,
// don't count; links to folders aren't followed. A list has one name a line, or names that end with zero bytes (find
// -print0). Throws Failure when the list can't be read.
Inputs listInputs(const InputArguments& arguments);

// A line about what was left alone: how many, and which, or a few of them.
std::string leftAloneText(const Inputs& inputs, bool all);

// In bytes; 0 where it is unknown.
double sizeOfFile(const std::string& file);

}  // namespace orbel
