// The host's buffers of one exchange.
#pragma once

#include <cstdint>

struct PS_Database {
  void* inData;
  void* outData;
  std::int32_t interleave;   // samples per pixel in the buffers
  std::int32_t inRowBytes;   // bytes from row to row
  std::int32_t outRowBytes;  // bytes from row to row
  std::int32_t width;        // pixels
  std::int32_t height;
  std::int32_t depthCode;  // 0: 8 bits a sample, white 255; 1: 16 bits, white 32768; 2: 32-bit float, white 1.0
};
