// Codes of four characters, the first in the top byte.
#pragma once

#include <cstdint>

constexpr std::uint32_t fourCharacters(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}
