// Tests that run once per row of bodies.
#pragma once

#include <gtest/gtest.h>

#include "support/forced_row.h"

class EachRow : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (!ForcedRow::machineHas(GetParam())) GTEST_SKIP() << "no row " << ForcedRow::nameOf(GetParam()) << " here";
  }
};

inline auto allRows() { return testing::Range(0, rowCount); }
inline std::string rowName(const testing::TestParamInfo<int>& info) { return ForcedRow::nameOf(info.param); }
