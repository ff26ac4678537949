#include "files/digest.h"

#include <glib.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace orbel {

std::string sha256Of(const std::string& file) {
  std::error_code none;
  if (!std::filesystem::is_regular_file(file, none)) return "";  // others may never end, or never begin
  std::ifstream stream(file, std::ios::binary);
  GChecksum* const sum = g_checksum_new(G_CHECKSUM_SHA256);
  std::array<char, 1 << 16> buffer{};
  while (stream.read(buffer.data(), buffer.size()) || stream.gcount() > 0) {
    g_checksum_update(sum, reinterpret_cast<const guchar*>(buffer.data()), stream.gcount());
  }
  std::string digest = stream.eof() ? g_checksum_get_string(sum) : "";
  g_checksum_free(sum);
  return digest;
}

}  // namespace orbel
