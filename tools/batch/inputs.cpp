#include "batch/inputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

#include "files/failure.h"
#include "pictures/formats.h"
#include "settings/text_values.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> namesIn(const std::string& list) {
  std::ifstream file;
  if (list != "-") {
    file.open(list);
    if (!file || fs::is_directory(list)) throw Failure(list, "this list can't be read", Cause::Unreadable);
  }
  const std::string text{std::istreambuf_iterator<char>(list == "-" ? std::cin : file), {}};
  const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> names = split(text, end);
  for (std::string& name : names) {  // of a list that was made on Windows
    if (end == '\n' && !name.empty() && name.back() == '\r') name.pop_back();
  }
  names.erase(std::remove(names.begin(), names.end(), ""), names.end());
  return names;
}

// A folder that can't be read, or a link that leads nowhere, is a failure of its own and spoils no other.
void addFolder(const std::string& folder, const fs::path& below, Inputs& inputs) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const fs::path& path = entry->path();
    const std::string file = path.string();
    const fs::path name = below / path.filename();
    std::error_code shownByTheFile;
    if (path.filename().string().front() == '.') continue;
    if (fs::is_directory(path, shownByTheFile)) {
      if (!fs::is_symlink(path, shownByTheFile)) addFolder(file, name, inputs);
    } else if (findFormat(extensionOf(file)) == nullptr) {
      inputs.leftAlone.push_back(file);
    } else {
      inputs.files.push_back({file, name.string()});
    }
  }
  if (error) inputs.unreadable.emplace_back(folder, error.message());
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
    std::error_code shownByTheFile;
    if (arguments.recursive && fs::is_directory(name, shownByTheFile)) {
      const auto before = static_cast<std::ptrdiff_t>(inputs.files.size());
      addFolder(name, "", inputs);
      std::sort(inputs.files.begin() + before, inputs.files.end(),
                [](const Input& a, const Input& b) { return a.file < b.file; });
    } else {
      inputs.files.push_back({name, fs::path(name).filename().string()});
    }
  }
  std::sort(inputs.leftAlone.begin(), inputs.leftAlone.end());
  return inputs;
}

std::string leftAloneText(const Inputs& inputs, bool all) {
  constexpr std::size_t few = 3;
  const std::vector<std::string>& files = inputs.leftAlone;
  const std::size_t named = all || files.size() <= few + 1 ? files.size() : few;
  std::string text = files.size() == 1
                         ? "a file is no picture by its name, and left alone: "
                         : std::to_string(files.size()) + " files are no pictures by their names, and left alone: ";
  for (std::size_t i = 0; i < named; ++i) text += (i == 0 ? "" : ", ") + files[i];
  if (named < files.size()) text += " and " + std::to_string(files.size() - named) + " more (-v names all)";
  const bool raw = std::any_of(files.begin(), files.end(), [](const auto& f) { return isCameraRaw(extensionOf(f)); });
  return raw ? text + "; a camera's raw file: " + developFirst : text;
}

double sizeOfFile(const std::string& file) {
  std::error_code unknown;
  const auto size = fs::file_size(file, unknown);
  return unknown ? 0 : static_cast<double>(size);
}

}  // namespace orbel
