// Selection of a row of bodies, through the public calls, on processors that the tests pretend.

#include <gtest/gtest.h>

#include <algorithm>

#include "primitives/features.h"
#include "primitives/primitives.h"
#include "support/each_row_test.h"

namespace {

constexpr std::uint64_t none = 0;
constexpr std::uint64_t bit63 = std::uint64_t{1} << 63;
constexpr std::uint64_t upToSse42 = 0xDF;
constexpr std::uint64_t upToAvx = 0x1DF;
constexpr std::uint64_t upToAvx2 = 0x81DF;
constexpr std::uint64_t upToAvx512 = 0x73081DF;
constexpr std::uint64_t upToEr = 0xF081DF;  // AVX-512 F, CD, ER, PF
constexpr std::uint64_t enabled = featureAvxEnabled | featureAvx512Enabled;

// What selection does on a processor of the given features. Only the words of the selection change, no body runs.
class Dispatch : public testing::Test {
 protected:
  void TearDown() override {
    ForcedRow::pretend(featureMask(thisProcessor));
    ippInit();
  }
};

TEST_F(Dispatch, FirstCallSelectsTheBestRowAndServesTheCall) {
  const IppStatus status = ippInit();
  if (isGenuineIntel(thisProcessor)) {
    EXPECT_NE(status, ippStsOtherCpuVendor);
  } else if (thisProcessor.available) {
    EXPECT_EQ(status, ippStsOtherCpuVendor);
  }
  std::int32_t best = 0;
  for (int row = 0; row < rowCount; ++row) {
    if (ForcedRow::machineHas(row)) best = row;
  }
  EXPECT_EQ(ippJumpIndexForMergedLibs, best);

  ippJumpIndexForMergedLibs = -1;
  float value = 1.0F;
  EXPECT_EQ(ippiAddC_32f_C1IR(2.0F, &value, 4, {1, 1}), ippStsNoErr);
  EXPECT_EQ(value, 3.0F);
  EXPECT_EQ(ippJumpIndexForMergedLibs, best);
  ippJumpIndexForMergedLibs = -1;
  void* const block = ippMalloc(10);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(ippJumpIndexForMergedLibs, best);
  ippJumpIndexForMergedLibs = -1;
  ippFree(block);
  EXPECT_EQ(ippJumpIndexForMergedLibs, best);
  ippJumpIndexForMergedLibs = -1;
  EXPECT_EQ(rowInForce(), best);
}

TEST_F(Dispatch, FeaturesOfThisProcessor) {
  std::uint64_t features = 0;
  std::uint32_t leaf1[4] = {};
  EXPECT_EQ(ippGetCpuFeatures(nullptr, leaf1), ippStsNullPtrErr);
  if (!thisProcessor.available) GTEST_SKIP() << "no CPUID";
  EXPECT_EQ(ippGetCpuFeatures(&features, nullptr), ippStsNoErr);
  EXPECT_EQ(features, featureMask(thisProcessor));
  EXPECT_EQ(ippGetCpuFeatures(&features, leaf1), ippStsNoErr);
  EXPECT_EQ(leaf1[0], thisProcessor.leaf(1, 0).eax);
  EXPECT_EQ(leaf1[3], thisProcessor.leaf(1, 0).edx);
}

TEST_F(Dispatch, MaskIsStoredWithoutSelecting) {
  const std::int32_t before = ippJumpIndexForMergedLibs;
  EXPECT_EQ(ippSetCpuFeaturesMask(0x123), ippStsNoErr);
  EXPECT_EQ(ippGetEnabledCpuFeatures(), 0x123U);
  EXPECT_EQ(ippJumpIndexForMergedLibs, before);
}

struct Selection {
  std::uint64_t detected;
  std::uint64_t request;
  IppStatus status;
  int index;
  std::uint64_t enabled;  // afterwards
};

constexpr std::uint64_t everything = upToAvx512 | upToEr | enabled;
constexpr std::uint64_t unknownBit = std::uint64_t{1} << 40;

constexpr Selection selections[] = {
    // An incomplete AVX-512 is no row of its own.
    {everything, upToAvx2 | 0x7200000, ippStsNoErr, 3, upToAvx2 | 0x7200000},
    // Too little for any row.
    {everything, none, ippStsCpuNotSupported, 0, 0x1},
    {everything, 0x2, ippStsCpuNotSupported, 0, 0x3},
    {none, 0x2, ippStsFeatureNotSupported, 0, 0x3},
    // Registers that the system doesn't save.
    {everything & ~featureAvxEnabled, upToAvx2, ippStsFeatureNotSupported, 1, upToSse42},
    {everything & ~featureAvx512Enabled, upToAvx512, ippStsFeatureNotSupported, 3, upToAvx2},
    // Requests beyond the processor: warned, and served all the same.
    {upToSse42 | enabled, upToAvx, ippStsFeatureNotSupported, 2, upToAvx},
    // A bit without a meaning can't be detected either, and the later finding stands.
    {everything, upToAvx2 | unknownBit, ippStsFeatureNotSupported, 3, upToAvx2 | unknownBit},
    {everything | unknownBit, upToAvx2 | unknownBit, ippStsUnknownFeature, 3, upToAvx2 | unknownBit},
    // Bit 63: nothing of the request is checked, and the stored mask (here that of detected) counts as detected.
    {upToSse42, upToAvx512 | bit63, ippStsNoErr, 4, upToAvx512},
};

void expectSelection(const Selection& s) {
  SCOPED_TRACE(testing::Message() << std::hex << s.request << " of " << s.detected);
  ForcedRow::pretend(s.detected);
  EXPECT_EQ(ippSetCpuFeatures(s.request), s.status);
  EXPECT_EQ(ippJumpIndexForMergedLibs, std::min(s.index, rowCount - 1));
  EXPECT_EQ(ippGetEnabledCpuFeatures(), s.enabled);
}

TEST_F(Dispatch, EachRowIsChosenByItsBestFeatures) {
  const struct {
    std::uint64_t best, needed;
    int index;
  } rows[] = {{0x7300000, upToAvx512, 4},
              {0xF00000, upToEr, 3},
              {0x8000, upToAvx2, 3},
              {0x100, upToAvx, 2},
              {0x80, upToSse42, 1},
              {0x40, 0x5F, 0},
              {0x20, 0x3F, 0},
              {0x10, 0x1F, 0},
              {0x8, 0xF, 0},
              {0x4, 0x7, 0}};
  for (const auto& row : rows) {
    expectSelection({everything | 0x20, row.needed, ippStsNoErr, row.index, row.needed});
    // Alone: the enabled mask gains what the row needs.
    expectSelection({everything | 0x20, row.best, ippStsFeaturesCombination, row.index, row.needed});
  }
}

TEST_F(Dispatch, SelectionFollowsTheRules) {
  for (const Selection& s : selections) expectSelection(s);
}

TEST_F(Dispatch, BitSixtyThreeMakesTheStoredMaskTheDetectedOne) {
  ippSetCpuFeaturesMask(upToAvx2 | enabled);
  EXPECT_EQ(ippSetCpuFeatures(upToSse42 | bit63), ippStsNoErr);
  EXPECT_EQ(ippJumpIndexForMergedLibs, std::min(1, rowCount - 1));
  EXPECT_EQ(ippSetCpuFeatures(upToAvx2), ippStsNoErr);
  EXPECT_EQ(ippSetCpuFeatures(upToAvx512), ippStsFeatureNotSupported);
}

}  // namespace
