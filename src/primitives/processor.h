// What the processor can do, and which row of bodies follows from it. The functions take their source of facts as an
// argument, so that tests can play any processor.
#pragma once

#include <cstdint>

#include "primitives/primitives.h"

// EAX, EBX, ECX, EDX of one CPUID leaf.
struct CpuidRegisters {
  std::uint32_t eax, ebx, ecx, edx;
};

// A source of CPUID leaves. leaf 0 must give the highest leaf and the vendor; available is false without CPUID.
struct CpuidSource {
  bool available;
  CpuidRegisters (*leaf)(std::uint32_t leaf, std::uint32_t subLeaf);
  std::uint64_t (*xgetbv)();  // register 0; called only where leaf 1 says that the system uses XSAVE
};

// The processor that this code runs on.
extern const CpuidSource thisProcessor;

bool isGenuineIntel(const CpuidSource& source);

// The mask of features, with the bits of features.h.
std::uint64_t featureMask(const CpuidSource& source);

// The largest data cache: the status and size of ippGetMaxCacheSizeB.
IppStatus largestCache(const CpuidSource& source, std::int32_t* size);

// ippInit for the first call of any other function: its status is dropped.
void ippSafeInit();

// ippJumpIndexForMergedLibs as threads may read it while another one stores the same value.
inline std::int32_t jumpIndex() { return __atomic_load_n(&ippJumpIndexForMergedLibs, __ATOMIC_RELAXED); }
