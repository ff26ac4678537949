// Runs tests on a chosen row of bodies. The choice outlives an ippInit in the code under test.
#pragma once

#include <gtest/gtest.h>

#include "primitives/primitives.h"
#include "primitives/processor.h"
#include "primitives/rows.h"

// For the length of its life the given row is in force; afterwards it is again the one that ippInit chooses.
class ForcedRow {
 public:
  // Never call it for a row that the machine lacks.
  explicit ForcedRow(int row) {
    pretend(rules[row].features);
    EXPECT_EQ(ippJumpIndexForMergedLibs, row);
  }
  ~ForcedRow() {
    pretend(featureMask(thisProcessor));
    ippInit();
  }
  ForcedRow(const ForcedRow&) = delete;
  ForcedRow& operator=(const ForcedRow&) = delete;

  static bool machineHas(int row) {
    return row == 0 || (featureMask(thisProcessor) & rules[row].features) == rules[row].features;
  }
  static const char* nameOf(int row) { return rules[row].name; }

  // Makes the mask the detected one, so that selection follows from it alone.
  static void pretend(std::uint64_t features) {
    ippSetCpuFeaturesMask(features);
    ippSetCpuFeatures(features | (std::uint64_t{1} << 63));
  }

 private:
  struct Rule {
    const char* name;
    std::uint64_t features;  // what its bodies use, and that the system saves the registers
  };
  static constexpr Rule rules[] = {{"n8_", 0x7}, {"y8_", 0xDF}, {"e9_", 0x3DF}, {"l9_", 0x83DF}, {"k0_", 0x2073083DF}};
};

// Base of tests that run once per row.
class EachRow : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (!ForcedRow::machineHas(GetParam())) GTEST_SKIP() << "no row " << ForcedRow::nameOf(GetParam()) << " here";
  }
};

inline auto allRows() { return testing::Range(0, rowCount); }
inline std::string rowName(const testing::TestParamInfo<int>& info) { return ForcedRow::nameOf(info.param); }
