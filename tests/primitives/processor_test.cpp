// Features and cache sizes of processors that the test plays.

#include "primitives/processor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <utility>

#include "primitives/features.h"

namespace {

// The processor that is played: leaves that it doesn't list are 0.
struct Played {
  std::map<std::pair<std::uint32_t, std::uint32_t>, CpuidRegisters> leaves;
  std::uint64_t saved = 0;
  bool xgetbvAllowed = true;
};
Played played;

CpuidRegisters playedLeaf(std::uint32_t leaf, std::uint32_t subLeaf) {
  const auto found = played.leaves.find({leaf, subLeaf});
  return found != played.leaves.end() ? found->second : CpuidRegisters{};
}
std::uint64_t playedXgetbv() {
  EXPECT_TRUE(played.xgetbvAllowed) << "no instruction of a processor whose system doesn't use XSAVE";
  return played.saved;
}
constexpr CpuidSource source = {true, playedLeaf, playedXgetbv};

CpuidRegisters vendor(std::uint32_t highestLeaf, const char* name) {
  CpuidRegisters r{highestLeaf, 0, 0, 0};
  std::memcpy(&r.ebx, name, 4);
  std::memcpy(&r.edx, name + 4, 4);
  std::memcpy(&r.ecx, name + 8, 4);
  return r;
}

class Processor : public testing::Test {
 protected:
  void SetUp() override {
    played = {};
    played.leaves[{0, 0}] = vendor(7, "GenuineIntel");
    played.leaves[{0x80000000, 0}] = {0x80000008, 0, 0, 0};
  }
};

constexpr std::uint32_t bit(int position) { return std::uint32_t{1} << position; }

TEST_F(Processor, EachFeatureHasItsBit) {
  const struct {
    std::uint32_t leaf;
    CpuidRegisters registers;
    std::uint64_t feature;
  } features[] = {
      {1, {0, 0, 0, bit(23)}, 0x1},        {1, {0, 0, 0, bit(25)}, 0x2},
      {1, {0, 0, 0, bit(26)}, 0x4},        {1, {0, 0, bit(0), 0}, 0x8},
      {1, {0, 0, bit(9), 0}, 0x10},        {1, {0, 0, bit(22), 0}, 0x20},
      {1, {0, 0, bit(19), 0}, 0x40},       {1, {0, 0, bit(20), 0}, 0x80},
      {1, {0, 0, bit(28), 0}, 0x100},      {1, {0, 0, bit(25), 0}, 0x400},
      {1, {0, 0, bit(1), 0}, 0x800},       {1, {0, 0, bit(30), 0}, 0x2000},
      {1, {0, 0, bit(29), 0}, 0x4000},     {7, {0, bit(19), 0, 0}, 0x10000},
      {7, {0, bit(18), 0, 0}, 0x20000},    {0x80000001, {0, 0, bit(8), 0}, 0x40000},
      {7, {0, bit(29), 0, 0}, 0x80000},    {7, {0, bit(16), 0, 0}, 0x100000},
      {7, {0, bit(28), 0, 0}, 0x200000},   {7, {0, bit(27), 0, 0}, 0x400000},
      {7, {0, bit(26), 0, 0}, 0x800000},   {7, {0, bit(30), 0, 0}, 0x1000000},
      {7, {0, bit(17), 0, 0}, 0x2000000},  {7, {0, bit(31), 0, 0}, 0x4000000},
      {7, {0, 0, bit(1), 0}, 0x8000000},   {7, {0, bit(14), 0, 0}, 0x10000000},
      {7, {0, 0, 0, bit(3)}, 0x20000000},  {7, {0, 0, 0, bit(2)}, 0x40000000},
      {1, {0xF0B1F, 0, 0, 0}, 0x80000000}, {7, {0, bit(21), 0, 0}, 0x100000000},
  };
  played.xgetbvAllowed = false;
  for (const auto& f : features) {
    played.leaves[{f.leaf, 0}] = f.registers;
    EXPECT_EQ(featureMask(source), f.feature);
    played.leaves.erase({f.leaf, 0});
  }
}

TEST_F(Processor, Avx2NeedsItsCompanions) {
  const std::uint32_t all = bit(5) | bit(3) | bit(8);
  played.leaves[{1, 0}].ecx = bit(12);
  for (const std::uint32_t missing : {bit(5), bit(3), bit(8)}) {
    played.leaves[{7, 0}].ebx = all & ~missing;
    EXPECT_EQ(featureMask(source), 0U);
  }
  played.leaves[{7, 0}].ebx = all;
  EXPECT_EQ(featureMask(source), featureAvx2);
  played.leaves[{1, 0}].ecx = 0;
  EXPECT_EQ(featureMask(source), 0U);
}

TEST_F(Processor, SavedRegisters) {
  played.leaves[{1, 0}].ecx = bit(27) | bit(28);
  const std::pair<std::uint64_t, std::uint64_t> cases[] = {{0x0, 0},
                                                           {0x2, 0},
                                                           {0x6, featureAvxEnabled},
                                                           {0xC6, featureAvxEnabled},
                                                           {0xE0, featureAvx512Enabled},
                                                           {0xE6, featureAvxEnabled | featureAvx512Enabled}};
  for (const auto& [saved, enabled] : cases) {
    played.saved = saved;
    EXPECT_EQ(featureMask(source), featureAvx | enabled) << saved;
  }
  played.leaves[{1, 0}].ecx = bit(27);
  EXPECT_EQ(featureMask(source), featureAvx512Enabled);
}

TEST_F(Processor, LeavesBeyondTheHighestAreNotRead) {
  played.leaves[{0, 0}].eax = 6;
  played.leaves[{0x80000000, 0}].eax = 0x80000000;
  played.leaves[{7, 0}] = {~0U, ~0U, ~0U, ~0U};
  played.leaves[{0x80000001, 0}] = {~0U, ~0U, ~0U, ~0U};
  EXPECT_EQ(featureMask(source), 0U);
}

// EBX and ECX of leaf 4.
CpuidRegisters cache(std::uint32_t type, std::uint32_t ways, std::uint32_t lineSize, std::uint32_t sets) {
  return {type, ((ways - 1) << 22) | (lineSize - 1), sets - 1, 0};
}

// The status and the size of the largest cache.
std::pair<IppStatus, std::int32_t> cacheOf(const CpuidSource& from = source) {
  std::int32_t size = -1;
  const IppStatus status = largestCache(from, &size);
  return {status, size};
}
std::pair<IppStatus, std::int32_t> found(std::int32_t size) { return {ippStsNoErr, size}; }
std::pair<IppStatus, std::int32_t> none(IppStatus status) { return {status, 0}; }

TEST_F(Processor, LargestDataCacheOfLeaf4) {
  played.leaves[{4, 0}] = cache(2, 64, 64, 65536);  // instructions
  EXPECT_EQ(cacheOf(), none(ippStsUnknownCacheSize));
  played.leaves[{4, 1}] = cache(1, 8, 64, 64);
  played.leaves[{4, 2}] = cache(3, 16, 64, 8192);
  played.leaves[{4, 2}].ebx |= 1U << 12;  // two partitions
  played.leaves[{4, 3}] = cache(3, 4, 64, 1024);
  played.leaves[{4, 5}] = cache(3, 32, 64, 65536);  // behind the end of the list
  EXPECT_EQ(cacheOf(), found(16 * 2 * 64 * 8192));

  played.leaves[{0, 0}] = vendor(1, "GenuineIntel");
  EXPECT_EQ(cacheOf(), none(ippStsCpuNotSupported));
  played.leaves[{0, 0}] = vendor(7, "AuthenticAMD");
  EXPECT_EQ(cacheOf(), none(ippStsCpuNotSupported));
  EXPECT_EQ(cacheOf({false, playedLeaf, playedXgetbv}), none(ippStsCpuNotSupported));
}

TEST_F(Processor, CacheDescriptorsOfLeaf2) {
  played.leaves[{0, 0}] = vendor(3, "GenuineIntel");
  played.leaves[{2, 0}] = {0x01, 0x00000000, 0, 0};
  EXPECT_EQ(cacheOf(), none(ippStsUnknownCacheSize));
  played.leaves[{2, 0}] = {0x0C404401, 0, 0, 0x00000043};  // 1 MiB of level 2, 16 KiB and 512 KiB
  EXPECT_EQ(cacheOf(), found(1024 * 1024));
  played.leaves[{2, 0}] = {0x00000045, 0x80000044, 0, 0x43000000};  // the lowest byte and the second word don't count
  EXPECT_EQ(cacheOf(), found(512 * 1024));
}

TEST_F(Processor, CacheSizeOfThisOne) {
  EXPECT_EQ(ippGetMaxCacheSizeB(nullptr), ippStsNullPtrErr);
  for (int call = 0; call < 2; ++call) {  // the second one is remembered
    std::int32_t size = -1;
    const IppStatus status = ippGetMaxCacheSizeB(&size);
    EXPECT_EQ(std::pair(status, size), cacheOf(thisProcessor));
  }
}

}  // namespace
