// ippGetMaxCacheSizeB: the largest data cache, from CPUID leaf 4, or on older processors from the descriptor bytes of
// leaf 2. Leaves: Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2, CPUID.

#include <algorithm>

#include "primitives/processor.h"

namespace {

struct CacheDescriptor {
  std::uint8_t descriptor;
  std::int32_t kibibytes;
};

// The first match counts, so the largest caches stand first. From the manual's table of leaf 2 descriptors.
constexpr CacheDescriptor tableCache[] = {
    {0xEC, 24576}, {0xEB, 18432}, {0x4D, 16384}, {0xEA, 12288}, {0x4C, 12288}, {0xE4, 8192}, {0x4B, 8192}, {0x47, 8192},
    {0xDE, 6144},  {0x4A, 6144},  {0x4E, 6144},  {0xE3, 4096},  {0xD8, 4096},  {0x49, 4096}, {0x46, 4096}, {0x29, 4096},
    {0xDD, 3072},  {0x48, 3072},  {0xE2, 2048},  {0xD7, 2048},  {0xD2, 2048},  {0x85, 2048}, {0x7D, 2048}, {0x45, 2048},
    {0x25, 2048},  {0xDC, 1536},  {0xD6, 1024},  {0xD1, 1024},  {0x87, 1024},  {0x84, 1024}, {0x7C, 1024}, {0x78, 1024},
    {0x44, 1024},  {0x24, 1024},  {0x23, 1024},  {0xD0, 512},   {0x86, 512},   {0x83, 512},  {0x80, 512},  {0x7F, 512},
    {0x7B, 512},   {0x43, 512},   {0x22, 512},   {0x82, 256},   {0x7A, 256},   {0x42, 256},  {0x21, 256},  {0x79, 128},
    {0x41, 128},   {0x2C, 32},    {0x68, 32},    {0x0E, 24},    {0x0D, 16},    {0x0C, 16},   {0x67, 16},   {0x60, 16},
    {0x0A, 8},     {0x66, 8},
};

std::int32_t fromLeaf4(const CpuidSource& source) {
  std::int64_t largest = 0;
  for (std::uint32_t subLeaf = 0; subLeaf < 32; ++subLeaf) {
    const CpuidRegisters r = source.leaf(4, subLeaf);
    const std::uint32_t type = r.eax & 0x1F;
    if (type == 0) break;
    if (type == 2) continue;  // instructions
    const std::int64_t ways = (r.ebx >> 22) + std::int64_t{1};
    const std::int64_t partitions = ((r.ebx >> 12) & 0x3FF) + 1;
    const std::int64_t lineSize = (r.ebx & 0xFFF) + 1;
    const std::int64_t sets = r.ecx + std::int64_t{1};
    largest = std::max(largest, ways * partitions * lineSize * sets);
  }
  return static_cast<std::int32_t>(std::min<std::int64_t>(largest, INT32_MAX));
}

bool holdsDescriptor(const CpuidRegisters& leaf2, std::uint8_t descriptor) {
  const std::uint32_t words[] = {leaf2.eax & ~0xFFU, leaf2.ebx, leaf2.ecx, leaf2.edx};  // AL is a count
  for (const std::uint32_t word : words) {
    if ((word & 0x80000000) != 0) continue;  // holds no descriptors
    for (int shift = 0; shift < 32; shift += 8) {
      if (((word >> shift) & 0xFF) == descriptor) return true;
    }
  }
  return false;
}

std::int32_t fromLeaf2(const CpuidSource& source) {
  const CpuidRegisters leaf2 = source.leaf(2, 0);
  for (const CacheDescriptor& entry : tableCache) {
    if (holdsDescriptor(leaf2, entry.descriptor)) return entry.kibibytes * 1024;
  }
  return 0;
}

}  // namespace

IppStatus largestCache(const CpuidSource& source, std::int32_t* size) {
  *size = 0;
  if (!isGenuineIntel(source)) return ippStsCpuNotSupported;
  const std::uint32_t highestLeaf = source.leaf(0, 0).eax;
  if (highestLeaf < 2) return ippStsCpuNotSupported;
  *size = highestLeaf >= 4 ? fromLeaf4(source) : fromLeaf2(source);
  return *size > 0 ? ippStsNoErr : ippStsUnknownCacheSize;
}

extern "C" IppStatus ippGetMaxCacheSizeB(std::int32_t* size) {
  // Threads that race through the first call store the same values, the guard last.
  constexpr IppStatus notYetKnown = 1;
  static std::int32_t szCacheMax = -1;
  static IppStatus ownStatus = notYetKnown;
  if (size == nullptr) return ippStsNullPtrErr;
  if (__atomic_load_n(&ownStatus, __ATOMIC_ACQUIRE) == notYetKnown) {
    std::int32_t largest = 0;
    const IppStatus status = largestCache(thisProcessor, &largest);
    __atomic_store_n(&szCacheMax, largest, __ATOMIC_RELAXED);
    __atomic_store_n(&ownStatus, status, __ATOMIC_RELEASE);
  }
  *size = __atomic_load_n(&szCacheMax, __ATOMIC_RELAXED);
  return ownStatus;
}
