#include "primitives/large_pages.h"

#if defined(__linux__)
#include <sys/mman.h>

void preferLargePages(void* block, std::int64_t bytes) {
  constexpr std::uintptr_t largePage = 2U << 20;
  constexpr std::int64_t worthIt = 4 * std::int64_t{largePage};
  if (bytes < worthIt) return;
  // Whole large pages only: around them may lie what isn't ours.
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + largePage - 1) / largePage * largePage;
  const std::uintptr_t end =
      (reinterpret_cast<std::uintptr_t>(block) + static_cast<std::uintptr_t>(bytes)) / largePage * largePage;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // advice: a refusal changes nothing
}
#else
void preferLargePages(void*, std::int64_t) {}
#endif
