#include <gtest/gtest.h>

#include <vector>

#include "primitives/primitives.h"

namespace {

TEST(Dispatch, FirstCallSelectsARowAndServesTheCall) {
  ippJumpIndexForMergedLibs = -1;
  float value = 1.0F;
  EXPECT_EQ(ippiAddC_32f_C1IR(2.0F, &value, 4, {1, 1}), ippStsNoErr);
  EXPECT_EQ(value, 3.0F);
  EXPECT_GE(ippJumpIndexForMergedLibs, 0);
}

}  // namespace
