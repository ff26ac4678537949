#include "inputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

#include "failure.h"
#include "formats.h"
#include "text_values.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> namesIn(const std::string& list) {
  std::ifstream file;
  if (list != "-") {
    file.open(list);
    if (!file) throw Failure(list, "this list can't be read");
  }
  const std::string text{std::istreambuf_iterator<char>(list == "-" ? std::cin : file), {}};
  const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> names = split(text, end);
  names.erase(std::remove(names.begin(), names.end(), ""), names.end());
  return names;
}

void addFolder(const std::string& folder, Inputs& inputs) {
  std::vector<Input> found;
  try {
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator(); ++entry) {
      const bool hidden = entry->path().filename().string().front() == '.';
      if (hidden && entry->is_directory()) entry.disable_recursion_pending();
      if (hidden || entry->is_directory()) continue;
      const std::string file = entry->path().string();
      if (findFormat(extensionOf(file)) == nullptr) {
        ++inputs.leftAlone;
      } else {
        found.push_back({file, entry->path().lexically_relative(folder).string()});
      }
    }
  } catch (const fs::filesystem_error& error) {
    throw Failure(error.path1().string(), error.code().message());
  }
  std::sort(found.begin(), found.end(), [](const Input& a, const Input& b) { return a.file < b.file; });
  inputs.files.insert(inputs.files.end(), found.begin(), found.end());
}

}  // namespace

Inputs listInputs(const InputArguments& arguments) {
  std::vector<std::string> names = arguments.names;
  if (arguments.list) {
    const std::vector<std::string> more = namesIn(*arguments.list);
    names.insert(names.end(), more.begin(), more.end());
  }
  Inputs inputs;
  for (const std::string& name : names) {
    if (arguments.recursive && fs::is_directory(name)) {
      addFolder(name, inputs);
    } else {
      inputs.files.push_back({name, fs::path(name).filename().string()});
    }
  }
  return inputs;
}

double sizeOfFile(const std::string& file) {
  std::error_code unknown;
  const auto size = fs::file_size(file, unknown);
  return unknown ? 0 : static_cast<double>(size);
}
