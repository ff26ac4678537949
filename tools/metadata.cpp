#include "metadata.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

namespace {

namespace fs = std::filesystem;

Metadata without(const Metadata& a, const Metadata& b) {
  return {a.icc && !b.icc, a.exif && !b.exif, a.xmp && !b.xmp, a.iptc && !b.iptc};
}
bool any(const Metadata& m) { return m.icc || m.exif || m.xmp || m.iptc; }

std::string list(const Metadata& m) {
  std::string text;
  const auto add = [&](bool there, const char* name) {
    if (there) text += (text.empty() ? "" : ", ") + std::string(name);
  };
  add(m.icc, "colour profile");
  add(m.exif, "EXIF");
  add(m.xmp, "XMP");
  add(m.iptc, "IPTC");
  return text;
}

Metadata both(const Metadata& a, const Metadata& b) { return without(a, without(a, b)); }

// Whether the file may hold metadata that the library doesn't see.
bool mayHoldMore(const vips::VImage& picture) {
  const std::string loader = picture.get_string(VIPS_META_LOADER);
  for (const char* readWhole : {"jpeg", "webp", "ppm"}) {
    if (loader.rfind(readWhole, 0) == 0) return false;
  }
  // PNG files without any will have none of the hidden kind either; asking costs a fifth of a second.
  return loader.rfind("png", 0) != 0 || any(metadataOf(picture));
}

enum class Repair { Done, Failed, NotInstalled };

// The written file keeps its inode, which its writer has open. What is present there already stays as it is: exiftool
// would write it in its own way.
Repair runExiftool(const std::string& input, const std::string& written, const Metadata& present, bool lenient) {
  std::vector<std::string> words = {"exiftool", "-q", "-q", "-overwrite_original_in_place", "-tagsFromFile",
                                    // Absolute: a name may begin with a hyphen.
                                    fs::absolute(input).string(), "-all:all", fs::absolute(written).string()};
  if (lenient) words.insert(words.begin() + 1, "-m");
  if (present.exif) words.insert(words.end() - 1, "--EXIF:all");
  if (present.xmp) words.insert(words.end() - 1, "--XMP:all");
  std::vector<char*> raw;
  raw.reserve(words.size() + 1);
  for (std::string& word : words) raw.push_back(word.data());
  raw.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
  }
  pid_t process = -1;
  const int error = posix_spawnp(&process, words.front().c_str(), &actions, nullptr, raw.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return Repair::NotInstalled;
  int status = 0;
  waitpid(process, &status, 0);
  return status == 0 ? Repair::Done : Repair::Failed;
}

// Small faults in the input stop exiftool at times, and at other times being lenient with them makes it skip EXIF (in
// WebP files of the image library's, which have a header too many).
Repair repair(const std::string& input, const std::string& written, const Metadata& present) {
  const Repair strict = runExiftool(input, written, present, false);
  return strict == Repair::Failed ? runExiftool(input, written, present, true) : strict;
}

}  // namespace

Metadata metadataOf(const vips::VImage& picture) {
  const auto has = [&](const char* name) { return picture.get_typeof(name) != 0; };
  return {has(VIPS_META_ICC_NAME), has(VIPS_META_EXIF_NAME) || has("exif-ifd0-Make"), has(VIPS_META_XMP_NAME),
          has(VIPS_META_IPTC_NAME) || has(droppedIptc)};
}

Notes completeMetadata(const std::string& input, const vips::VImage& picture, const std::string& written,
                       const FileFormat& format) {
  const Metadata there = metadataOf(picture);
  Metadata lost = without(there, format.kept);
  const bool more = mayHoldMore(picture);
  Notes notes;
  if (input != pipeName && any(format.repaired) && (more || any(both(lost, format.repaired)))) {
    switch (repair(input, written, both(there, format.kept))) {
      case Repair::Done:
        lost = without(lost, format.repaired);
        break;
      case Repair::Failed:
        notes.emplace_back("exiftool could not copy the metadata");
        break;
      case Repair::NotInstalled:
        notes.emplace_back(any(lost) ? "missing without exiftool (package libimage-exiftool-perl): " + list(lost)
                                     : "without exiftool (package libimage-exiftool-perl) EXIF or IPTC may be missing");
        lost = {};
        break;
    }
  }
  if (any(lost)) notes.push_back(format.name + " files can't hold here: " + list(lost));
  return notes;
}
