// CPUID and XGETBV of the machine, and the mask of features read from any source of them.
// Leaves and bits: Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2, CPUID.

#include "primitives/processor.h"

#include "primitives/features.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace {

#if defined(__x86_64__)
CpuidRegisters readLeaf(std::uint32_t leaf, std::uint32_t subLeaf) {
  CpuidRegisters r{};
  __cpuid_count(leaf, subLeaf, r.eax, r.ebx, r.ecx, r.edx);
  return r;
}

std::uint64_t readXgetbv() {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (std::uint64_t{high} << 32) | low;
}
#else
CpuidRegisters readLeaf(std::uint32_t, std::uint32_t) { return {}; }
std::uint64_t readXgetbv() { return 0; }
#endif

constexpr bool bit(std::uint32_t word, int position) { return ((word >> position) & 1) != 0; }

}  // namespace

const CpuidSource thisProcessor = {
#if defined(__x86_64__)
    true,
#else
    false,
#endif
    readLeaf, readXgetbv};

bool isGenuineIntel(const CpuidSource& source) {
  if (!source.available) return false;
  const CpuidRegisters r = source.leaf(0, 0);
  return r.ebx == 0x756E6547 && r.edx == 0x49656E69 && r.ecx == 0x6C65746E;  // "Genu", "ineI", "ntel"
}

std::uint64_t featureMask(const CpuidSource& source) {
  std::uint64_t mask = 0;
  const auto set = [&mask](bool present, std::uint64_t feature) { mask |= present ? feature : 0; };

  const CpuidRegisters one = source.leaf(1, 0);
  set(bit(one.edx, 23), featureMmx);
  set(bit(one.edx, 25), featureSse);
  set(bit(one.edx, 26), featureSse2);
  set(bit(one.ecx, 0), featureSse3);
  set(bit(one.ecx, 9), featureSsse3);
  set(bit(one.ecx, 22), featureMovbe);
  set(bit(one.ecx, 19), featureSse41);
  set(bit(one.ecx, 20), featureSse42);
  set(bit(one.ecx, 28), featureAvx);
  set(bit(one.ecx, 25), featureAes);
  set(bit(one.ecx, 1), featureClmul);
  set(bit(one.ecx, 30), featureRdrand);
  set(bit(one.ecx, 29), featureF16c);
  set((one.eax & 0xFF0) == 0xB10, featureSignature);
  if (bit(one.ecx, 27)) {  // without it XGETBV is no instruction
    const std::uint64_t saved = source.xgetbv();
    set(bit(one.ecx, 28) && (saved & 0x6) == 0x6, featureAvxEnabled);
    set((saved & 0xE0) == 0xE0, featureAvx512Enabled);
  }

  if (source.leaf(0, 0).eax >= 7) {
    const CpuidRegisters seven = source.leaf(7, 0);
    set(bit(seven.ebx, 5) && bit(seven.ebx, 3) && bit(seven.ebx, 8) && bit(one.ecx, 12), featureAvx2);
    set(bit(seven.ebx, 19), featureAdx);
    set(bit(seven.ebx, 18), featureRdseed);
    set(bit(seven.ebx, 29), featureSha);
    set(bit(seven.ebx, 16), featureAvx512F);
    set(bit(seven.ebx, 28), featureAvx512Cd);
    set(bit(seven.ebx, 27), featureAvx512Er);
    set(bit(seven.ebx, 26), featureAvx512Pf);
    set(bit(seven.ebx, 30), featureAvx512Bw);
    set(bit(seven.ebx, 17), featureAvx512Dq);
    set(bit(seven.ebx, 31), featureAvx512Vl);
    set(bit(seven.ecx, 1), featureAvx512Vbmi);
    set(bit(seven.ebx, 14), featureMpx);
    set(bit(seven.edx, 3), featureAvx5124Fmaps);
    set(bit(seven.edx, 2), featureAvx5124Vnniw);
    set(bit(seven.ebx, 21), featureAvx512Ifma);
  }

  constexpr std::uint32_t extended = 0x80000001;
  if (source.leaf(0x80000000, 0).eax >= extended) set(bit(source.leaf(extended, 0).ecx, 8), featurePrefetchw);
  return mask;
}
