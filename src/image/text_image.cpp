// KivImage: plane 0 as a text file, written and read, and all planes as one packed block.
//
// Numbers go through to_chars and from_chars, which know no locale: a host may have set one with a decimal comma.

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <locale>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

#include "image/kiv_image.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#endif

namespace {

namespace fs = std::filesystem;

// The largest sample has 71 characters with 30 decimals, the exact decimal form of a double up to 1100.
constexpr std::size_t longestLine = 4096;

std::string reason(int error) { return std::generic_category().message(error); }

const char* checkedName(const char* name) {
  if (name == nullptr) throw KivFileError("no file name was given");
  return name;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 40;
  std::string result = "\"";
  for (const char c : text.substr(0, longest)) result += c >= ' ' && c <= '~' ? c : '?';
  return result + (text.size() > longest ? "...\"" : "\"");
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// The whole text as one decimal number, inf or nan.
bool parseSample(std::string_view text, float& value) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const char* const end = text.data() + text.size();
  auto [rest, error] = std::from_chars(text.data(), end, value);
  if (error == std::errc::result_out_of_range) {
    // Too large or too small: only a wider type tells which.
    double wide = 0;
    error = std::from_chars(text.data(), end, wide).ec;
    if (std::abs(wide) >= 1) return false;
    value = static_cast<float>(wide);
  }
  return error == std::errc() && rest == end;
}

class LineReader {
 public:
  explicit LineReader(const char* name) : name_(name) {
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    // Opening a pipe that nobody writes to would wait for ever, and the length of one says nothing.
    if (!fs::is_regular_file(status)) throw KivFileError(name_ + ": " + (error ? error.message() : "no regular file"));
    length_ = static_cast<std::int64_t>(fs::file_size(name, error));
    if (error) throw KivFileError(name_ + ": " + error.message());
    file_.pubimbue(std::locale::classic());
    if (file_.open(name, std::ios::in | std::ios::binary) == nullptr) throw KivFileError(name_ + ": " + reason(errno));
  }

  std::int64_t length() const { return length_; }

  // The next line without its ending and without blanks around it. False behind the last one.
  bool next(std::string_view& line) {
    using Traits = std::filebuf::traits_type;
    ++number_;
    line_.clear();
    auto c = file_.sbumpc();
    if (c == Traits::eof()) return false;
    for (; c != Traits::eof() && c != '\n' && c != '\r'; c = file_.sbumpc()) {
      if (line_.size() == longestLine) fail("longer than any number");
      line_.push_back(Traits::to_char_type(c));
    }
    if (c == '\r' && file_.sgetc() == '\n') file_.sbumpc();
    line = withoutBlanks(line_);
    return true;
  }

  std::string_view demand(const char* what) {
    std::string_view line;
    if (!next(line)) fail("the file ends where " + std::string(what) + " is expected");
    return line;
  }

  int demandLength(const char* what) {
    const std::string_view line = demand(what);
    int value = 0;
    const auto [rest, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    if (error != std::errc() || rest != line.data() + line.size() || value < 1) {
      fail(quoted(line) + " where " + what + ", a whole number from 1 to 2147483647, is expected");
    }
    return value;
  }

  // About the present line.
  [[noreturn]] void fail(const std::string& what) const {
    throw KivFileError(name_ + ", line " + std::to_string(number_) + ": " + what);
  }

 private:
  std::string name_;
  std::int64_t length_ = 0;
  std::filebuf file_;
  std::string line_;
  std::int64_t number_ = 0;
};

void readTextImage(const char* name, KivImage& image) {
  LineReader file(name);
  const int height = file.demandLength("the height");
  const int width = file.demandLength("the width");
  const std::string shape = std::to_string(height) + " rows of " + std::to_string(width) + " samples";
  // Each sample takes a digit and a line ending at least.
  if (std::int64_t{height} * width > file.length() / 2) {
    file.fail(shape + " don't fit into the file's " + std::to_string(file.length()) + " bytes");
  }
  const std::string_view planes = file.demand("the number of planes, 1,");
  if (planes != "1") file.fail(quoted(planes) + " where the number of planes, 1, is expected");

  image.Init(width, height, 1);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::string_view line = file.demand("a sample");
      if (!parseSample(line, *image.At(0, x, y))) file.fail(quoted(line) + " where a sample is expected");
    }
  }
  std::string_view line;
  while (file.next(line)) {
    if (!line.empty()) file.fail(quoted(line) + " behind " + shape);
  }
}

struct FileClose {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileClose>;

// Opened for writing; null where something of that name is there. The mode "x" of fopen isn't known everywhere.
File createNew(const std::string& name) {
#if defined(_WIN32)
  const int descriptor = _open(name.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
  return File(descriptor < 0 ? nullptr : _fdopen(descriptor, "wb"));
#else
  return File(std::fopen(name.c_str(), "wbx"));
#endif
}

// Grows in a temporary file beside the target and takes its place when it is complete.
class NewFile {
 public:
  explicit NewFile(const char* name) : name_(name), target_(name) {}
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    file_.reset();
    std::error_code error;
    if (!temporary_.empty()) fs::remove(temporary_, error);
  }

  void open() {
    std::error_code error;
    const fs::file_status status = fs::status(target_, error);
    if (status.type() == fs::file_type::none) fail(error.message());
    // A link stays, and what it points to is written, though it isn't there yet.
    while (fs::is_symlink(fs::symlink_status(target_, error))) {
      target_ = target_.parent_path() / fs::read_symlink(target_, error);
      if (error) fail(error.message());
    }
    const bool replaces = fs::exists(status);
    if (replaces) {
      if (!fs::is_regular_file(status)) fail("no regular file");
      // A rename would get past a file that may not be written.
      if (File(std::fopen(target_.string().c_str(), "r+b")) == nullptr) fail(reason(errno));
    }
    for (int attempt = 0; file_ == nullptr; ++attempt) {
      const fs::path candidate = target_.parent_path() / (".kiv-image-" + std::to_string(attempt) + ".tmp");
      file_ = createNew(candidate.string());
      if (file_ != nullptr) temporary_ = candidate;
      if (file_ == nullptr && (errno != EEXIST || attempt == 100)) fail(reason(errno));
    }
    if (replaces) fs::permissions(temporary_, status.permissions(), error);
    if (replaces && error) fail(error.message());
  }

  void write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) fail(reason(errno));
  }

  void replaceTarget() {
    if (std::fclose(file_.release()) != 0) fail(reason(errno));
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) fail(error.message());
    temporary_.clear();
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw KivFileError(name_ + ": " + what); }

  std::string name_;  // as given, for messages
  fs::path target_;
  fs::path temporary_;
  File file_;
};

void writeTextImage(const char* name, const KivImage& image) {
  if (image.channels < 1 || image.size.width < 1 || image.size.height < 1) {
    throw KivFileError(std::string(name) + ": an empty image can't be written");
  }
  NewFile file(name);
  file.open();
  file.write(std::to_string(image.size.height) + "\n" + std::to_string(image.size.width) + "\n1\n");
  char line[128];
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x) {
      const double sample = *image.At(0, x, y);
      char* const end = std::to_chars(line, line + sizeof line - 1, sample, std::chars_format::fixed, 30).ptr;
      *end = '\n';
      file.write({line, static_cast<std::size_t>(end + 1 - line)});
    }
  }
  file.replaceTarget();
}

// What the standard library throws, in terms of this one.
template <typename Work>
void translatingErrors(const char* name, Work work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    throw NO_MEMORY_ERROR();
  } catch (const std::system_error& error) {
    throw KivFileError(std::string(name) + ": " + error.code().message());
  }
}

}  // namespace

KivImage::KivImage(const char* fileName) : KivImage() {
  translatingErrors(checkedName(fileName), [&] { readTextImage(fileName, *this); });
}

void KivImage::Write(const char* fileName) const {
  translatingErrors(checkedName(fileName), [&] { writeTextImage(fileName, *this); });
}

void KivImage::CopyToMatlab(float* dst) const {
  for (int plane = 0; plane < channels; ++plane) {
    for (int y = 0; y < size.height; ++y) dst = std::copy_n(At(plane, 0, y), size.width, dst);
  }
}
