// A block of the primitives' memory that is released when it leaves scope.
#pragma once

#include <cstdint>
#include <memory>

#include "image/kiv_image.h"

struct ScratchRelease {
  void operator()(void* block) const { ippFree(block); }
};

using Scratch = std::unique_ptr<void, ScratchRelease>;

// Null when the block can't be had; for parallel regions, which no exception may leave.
inline Scratch tryScratch(std::int64_t bytes) {
  return Scratch(bytes > INT32_MAX ? nullptr : ippMalloc(static_cast<std::int32_t>(bytes)));
}

inline Scratch makeScratch(std::int64_t bytes) {
  Scratch block = tryScratch(bytes);
  if (block == nullptr) throw NO_MEMORY_ERROR();
  return block;
}
