#include "files/program_folder.h"

#include <filesystem>

namespace orbel {

namespace fs = std::filesystem;

std::string programData(const std::string& beside, const std::string& installed) {
  std::error_code ignored;  // without /proc the bare name is left, and the message about it
  const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  const fs::path near = folder / beside;
  const fs::path far = (folder / installed).lexically_normal();
  return (fs::exists(near, ignored) || !fs::exists(far, ignored) ? near : far).string();
}

}  // namespace orbel
