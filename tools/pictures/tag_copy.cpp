#include "pictures/tag_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

namespace orbel {

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

// A file that is open, by a name without any character that means something to exiftool: it takes % for codes, drops
// blanks at the end, and can't be told of line ends at all.
class OpenFile {
 public:
  OpenFile(const std::string& file, int flags) : descriptor_(open(file.c_str(), flags | O_CLOEXEC)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  std::string name() const { return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

std::string folderOf(const std::string& file) {
  const fs::path folder = fs::path(file).parent_path();
  return folder.empty() ? "." : folder.string();
}

// A minute, and more for what takes long to be read and written on a slow disk.
double patienceFor(const std::string& input, const std::string& written) {
  constexpr double slowestBytesPerSecond = 1e6;
  std::error_code unknown;
  const auto bytes =
      static_cast<double>(fs::file_size(input, unknown)) + static_cast<double>(fs::file_size(written, unknown));
  return 60 + (unknown ? 0 : bytes / slowestBytesPerSecond);
}

// What exiftool gives as the reason, without the name that it knows the file by.
std::string errorIn(const std::string& text) {
  const std::string mark = "Error: ";
  const std::size_t at = text.find(mark);
  if (at == std::string::npos) return "it gave no reason";
  const std::string line = text.substr(at + mark.size(), text.find('\n', at) - at - mark.size());
  return line.substr(0, line.find(" - /proc/"));
}

Words joined(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

Words copying(const TagCopyOptions& options) {
  Words words = {"-all:all", "--IPTC:all"};
  if (options.leavesExif) words.emplace_back("--EXIF:all");
  if (!options.takesXmp || !options.xmpByTags) words.emplace_back("--XMP:all");
  if (options.takesXmp && !options.xmpByTags) words.emplace_back("-XMP");
  if (options.takesIptc) words.emplace_back("-IPTC");
  if (options.isHasty) words.emplace_back("-fast");
  return words;
}

bool answered(const ExiftoolAnswer& answer) { return answer.status == ExiftoolAnswer::Status::Done; }

// By what it was told to write at its end. It removes what it could not finish.
bool succeeded(const ExiftoolAnswer& answer) {
  return answered(answer) && answer.text.find("status 0\n") != std::string::npos;
}

}  // namespace

TagCopy copyTags(const std::string& input, TargetFile& target, const TagCopyOptions& options, const AskExiftool& ask) {
  const OpenFile source(input, O_RDONLY);
  const OpenFile folder(folderOf(target.temporary()), O_PATH | O_DIRECTORY);
  const auto inFolder = [&](const std::string& file) {
    return folder.name() + "/" + fs::path(file).filename().string();
  };
  const std::string written = inFolder(target.temporary());
  const double seconds = patienceFor(input, target.temporary());

  const Words rewrite = joined(joined({"-tagsFromFile", source.name()}, copying(options)),
                               {"-o", inFolder(target.rewritten()), written, "-echo3", "status ${status}"});
  ExiftoolAnswer answer = ask({rewrite, seconds});
  // Small faults in the input stop exiftool at times, and at other times being lenient with them makes it skip EXIF (in
  // WebP files of the image library's, which have a header too many).
  if (answered(answer) && !succeeded(answer)) answer = ask({joined(rewrite, {"-m"}), seconds});

  TagCopy copy;
  copy.installed = answer.status != ExiftoolAnswer::Status::NotInstalled;
  if (!answered(answer)) {
    copy.error = answer.text;
    return copy;
  }
  if (succeeded(answer)) {
    target.takeRewritten();
  } else {
    copy.error = errorIn(answer.text);
  }
  const ExiftoolAnswer tags = ask({joined(readingOfTags(), {source.name(), written}), seconds});
  if (answered(tags)) copy.losses = tagLosses(tags.text, source.name(), written);
  return copy;
}

std::string xmpPacketIn(const std::string& input, const AskExiftool& ask) {
  const OpenFile source(input, O_RDONLY);
  // As JSON, which has what is no UTF-8 behind a word of its own.
  const ExiftoolAnswer answer = ask({{"-q", "-q", "-j", "-b", "-XMP", source.name()}, patienceFor(input, input)});
  const auto files = answered(answer) ? nlohmann::json::parse(answer.text, nullptr, false) : nlohmann::json();
  if (!files.is_array() || files.size() != 1 || !files[0].contains("XMP") || !files[0]["XMP"].is_string()) return "";
  std::string packet = files[0]["XMP"];
  return packet.rfind("base64:", 0) == 0 ? "" : packet;
}

}  // namespace orbel
