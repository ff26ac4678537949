// Memory for images and buffers: 64-byte aligned blocks. The eight bytes below a block hold the address that the
// system's allocator gave.

#include <cstdlib>

#include "primitives/alignment.h"
#include "primitives/lanes.h"
#include "primitives/large_pages.h"
#include "primitives/primitives.h"

namespace ROW {
namespace {

constexpr std::int64_t alignment = 64;
constexpr std::int64_t overhead = alignment + 8;

void* allocate(std::int64_t length) {
  if (length < 1 || length + overhead > INT32_MAX) return nullptr;
  void* allocated = malloc(static_cast<std::size_t>(length + overhead));
  if (allocated == nullptr) return nullptr;
  const std::uintptr_t last = reinterpret_cast<std::uintptr_t>(allocated) + overhead - 1;
  void** block = reinterpret_cast<void**>(last - last % alignment);
  preferLargePages(block, length);
  block[-1] = allocated;
  return block;
}

void release(void* block) {
  if (block != nullptr) free(static_cast<void**>(block)[-1]);
}

void* allocateImage(int width, int height, int elementBytes, std::int32_t* step) {
  if (step == nullptr) return nullptr;
  *step = 0;
  const std::int64_t rowBytes = std::int64_t{width} * elementBytes;
  if (width < 1 || height < 1 || rowBytes > INT32_MAX) return nullptr;
  const std::int64_t rounded = roundUp(rowBytes, alignment);
  if (rounded > INT32_MAX) return nullptr;  // a row within 63 bytes of the limit: no step could say its size
  *step = static_cast<std::int32_t>(rounded);
  return allocate(rounded * height);
}

}  // namespace

void* ippMalloc(std::int32_t length) { return allocate(length); }
unsigned char* ippsMalloc_8u(std::int32_t length) { return static_cast<unsigned char*>(allocate(length)); }

unsigned char* ippiMalloc_8u_C1(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return static_cast<unsigned char*>(allocateImage(width, height, 1, step));
}
unsigned short* ippiMalloc_16u_C1(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return static_cast<unsigned short*>(allocateImage(width, height, 2, step));
}
float* ippiMalloc_32f_C1(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return static_cast<float*>(allocateImage(width, height, 4, step));
}
float* ippiMalloc_32f_C3(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return static_cast<float*>(allocateImage(width, height, 12, step));
}

void ippFree(void* block) { release(block); }
void ippsFree(void* block) { release(block); }
void ippiFree(void* block) { release(block); }

}  // namespace ROW
