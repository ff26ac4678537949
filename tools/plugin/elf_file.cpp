#include "plugin/elf_file.h"

#include <elf.h>
#include <link.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <system_error>

namespace orbel {

std::string reasonNotToLoad(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) return std::generic_category().message(errno);
  if (!S_ISREG(status.st_mode)) return "it is not a regular file";
  const auto size = static_cast<std::uint64_t>(status.st_size);
  std::ifstream stream(file, std::ios::binary);
  ElfW(Ehdr) header{};
  stream.read(reinterpret_cast<char*>(&header), sizeof header);
  if (!stream || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return "";
  stream.seekg(static_cast<std::streamoff>(header.e_phoff));
  for (int i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment{};
    stream.read(reinterpret_cast<char*>(&segment), sizeof segment);
    // Apart, because a sum may wrap.
    if (!stream || segment.p_offset > size || segment.p_filesz > size - segment.p_offset)
      return "the file is cut short";
  }
  return "";
}

}  // namespace orbel
