#include "batch/remembered.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <system_error>

#include "files/child_process.h"
#include "files/write_all.h"
#include "pictures/library.h"
#include "settings/text_values.h"

namespace orbel {

namespace {

std::optional<MadeWith> tellingOf(const std::string& result) {
  try {
    Notes notes;
    if (auto made = madeWithIn(openPicture(result, notes))) return made;
  } catch (const std::exception&) {  // no picture of ours
  }
  return madeWithInRecipe(result);
}

// A line for each of the results from the first on; an empty one for what tells nothing.
[[noreturn]] void tellAll(const std::vector<std::string>& results, std::size_t first, int pipe, pid_t parent) {
  endWith(parent, 0);
  try {
    const ImageLibrary library("orbel", false);
    for (std::size_t i = first; i < results.size(); ++i) {
      const auto made = tellingOf(results[i]);
      const std::string line = (made ? textOf(*made) : "") + "\n";
      writeAll(pipe, line.data(), line.size(), results[i]);
    }
  } catch (const std::exception&) {  // the parent goes on behind the last line
  }
  _exit(0);
}

std::string allFrom(int pipe) {
  std::string text;
  std::array<char, 1 << 12> buffer{};
  for (;;) {
    const ssize_t count = read(pipe, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

// What a new process tells of the results from the first on, as far as it comes.
std::string listen(const std::vector<std::string>& results, std::size_t first) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "no pipe to a new process");
  const pid_t self = getpid();
  const pid_t process = fork();
  if (process == 0) tellAll(results, first, ends[1], self);
  close(ends[1]);
  std::string told = process < 0 ? "" : allFrom(ends[0]);
  close(ends[0]);
  if (process < 0) throw std::system_error(errno, std::generic_category(), "no new process");
  endOf(process);
  return told;
}

}  // namespace

std::vector<std::optional<MadeWith>> madeWithOf(const std::vector<std::string>& results) {
  std::vector<std::optional<MadeWith>> all;
  while (all.size() < results.size()) {
    std::vector<std::string> lines = split(listen(results, all.size()), '\n');
    lines.pop_back();  // what is no whole line
    for (const std::string& line : lines) all.push_back(madeWithFrom(line));
    if (all.size() < results.size()) all.emplace_back();  // the one that brought it down
  }
  return all;
}

}  // namespace orbel
