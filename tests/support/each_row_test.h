// Tests on every row of bodies that the machine has.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "support/forced_row.h"

// check() with each row in force.
template <typename Check>
void onEachRow(Check check) {
  for (int row = 0; row < rowCount; ++row) {
    if (!ForcedRow::machineHas(row)) continue;
    SCOPED_TRACE(ForcedRow::nameOf(row));
    const ForcedRow forced(row);
    check();
  }
}

// Tests that run once per row, which is in force.
class EachRow : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (!ForcedRow::machineHas(GetParam())) GTEST_SKIP() << "no row " << ForcedRow::nameOf(GetParam()) << " here";
    forced.emplace(GetParam());
  }

 private:
  std::optional<ForcedRow> forced;
};

inline auto allRows() { return testing::Range(0, rowCount); }
inline std::string rowName(const testing::TestParamInfo<int>& info) { return ForcedRow::nameOf(info.param); }
