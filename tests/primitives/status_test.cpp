// Checks of arguments in their order, beyond those that pointwise_test.cpp asks of all. Each call breaks two
// neighbouring rules at once: the earlier one decides. A refused call leaves its target alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "primitives/primitives.h"

namespace {

const float src[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
float dst[16];
float* const none = nullptr;

class Statuses : public testing::Test {
 protected:
  void SetUp() override { std::fill(std::begin(dst), std::end(dst), 77.0F); }
  void TearDown() override { EXPECT_EQ(std::count(std::begin(dst), std::end(dst), 77.0F), 16); }
};

template <typename T>
using Same = typename std::common_type<T>::type;  // not deduced

template <typename... Parameters>
void expectStepsChecked(IppStatus (*function)(const float*, int, float*, int, IppiSize, Parameters...),
                        Same<Parameters>... parameters) {
  EXPECT_EQ(function(src, 0, dst, 4, {1, 1}, parameters...), -16);
  EXPECT_EQ(function(src, 4, dst, -4, {1, 1}, parameters...), -16);
}

TEST_F(Statuses, Steps) {
  for (const auto function : {ippiAbs_32f_C1R, ippiSqrt_32f_C1R, ippiLn_32f_C1R}) expectStepsChecked(function);
  for (const auto function : {ippiThreshold_GT_32f_C1R, ippiThreshold_LT_32f_C1R}) expectStepsChecked(function, 1);
  expectStepsChecked(ippiThreshold_LTValGTVal_32f_C1R, 2, 0, 1, 0);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(dst, 0, {1, 1}, 2, 0, 1, 0), -16);
  for (const auto function : {ippiAbs_32f_C1IR, ippiExp_32f_C1IR, ippiLn_32f_C1IR}) {
    EXPECT_EQ(function(dst, 0, {1, 1}), -16);
  }
  EXPECT_EQ(ippiDiv_32f_C1R(src, 0, src, 4, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDiv_32f_C1R(src, 4, src, 0, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDiv_32f_C1R(src, 4, src, 4, dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1R(src, 0, 0, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1R(src, 4, 0, dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1IR(0, dst, 0, {1, 1}), -16);
}

TEST_F(Statuses, Parameters) {
  unsigned char byte = 77;
  EXPECT_EQ(ippiDivC_32f_C1R(src, 4, -0.0F, dst, 4, {1, 1}), -10);
  EXPECT_EQ(ippiDivC_32f_C1IR(0, dst, 4, {1, 1}), -10);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1R(src, 4, dst, 4, {1, 1}, 2, 0, 1, 0), -19);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(dst, 4, {1, 1}, 2, 0, 1, 0), -19);
  EXPECT_EQ(ippiScale_8u32f_C1R(nullptr, 4, dst, 4, {0, 1}, 1, 1), -12);
  EXPECT_EQ(ippiScale_32f8u_C1R(none, 4, &byte, 4, {0, 1}, 2, 1), -12);
  EXPECT_EQ(ippiTranspose_32f_C1R(dst, 8, dst, 8, {2, 1}), -6);
  EXPECT_EQ(ippsSet_8u(1, nullptr, 0), -8);
  EXPECT_EQ(ippsSet_8u(1, &byte, 0), -6);
  EXPECT_EQ(byte, 77);
  for (const auto& [type, status] : {std::pair{12, -50}, {-1, -50}, {11, -14}, {1, -14}}) {
    EXPECT_EQ(ippiAlphaCompC_32f_C1R(src, 4, src, 4, dst, 4, {1, 1}, 1, 1, type), status) << type;
    EXPECT_EQ(ippiAlphaCompC_32f_C1R(src, 4, src, 4, dst, 4, {0, 1}, 1, 1, type), -6);
  }
}

struct Padding {
  int srcStep;
  IppiSize srcRoi;
  int dstStep;
  IppiSize dstRoi;
  int top, left;
  IppStatus expected;
};

TEST_F(Statuses, Borders) {
  const Padding paddings[] = {
      {0, {0, 1}, 8, {2, 2}, 0, 0, -16}, {4, {0, 1}, 0, {2, 2}, 0, 0, -16},        {4, {0, 1}, 8, {2, 2}, 0, 0, -6},
      {4, {1, 0}, 8, {2, 2}, 0, 0, -6},  {4, {1, 1}, 8, {0, 2}, 0, 0, -6},         {4, {1, 1}, 8, {2, 0}, 0, 0, -6},
      {4, {1, 1}, 8, {2, 2}, -1, 0, -6}, {4, {1, 1}, 8, {2, 2}, 0, -1, -6},        {4, {1, 1}, 8, {2, 2}, 2, 0, -6},
      {4, {1, 1}, 8, {2, 2}, 0, 2, -6},  {4, {1, 1}, 8, {2, 2}, 0, INT32_MAX, -6},
  };
  for (const Padding& p : paddings) {
    for (const auto function : {ippiCopyReplicateBorder_32f_C1R, ippiCopyMirrorBorder_32f_C1R}) {
      EXPECT_EQ(function(src, p.srcStep, p.srcRoi, dst, p.dstStep, p.dstRoi, p.top, p.left), p.expected);
      EXPECT_EQ(function(none, p.srcStep, p.srcRoi, dst, p.dstStep, p.dstRoi, p.top, p.left), -8);
      EXPECT_EQ(function(src, p.srcStep, p.srcRoi, none, p.dstStep, p.dstRoi, p.top, p.left), -8);
    }
    EXPECT_EQ(ippiCopyConstBorder_32f_C1R(src, p.srcStep, p.srcRoi, dst, p.dstStep, p.dstRoi, p.top, p.left, 0),
              p.expected);
    const int step = std::min(p.srcStep, p.dstStep);
    EXPECT_EQ(ippiCopyReplicateBorder_32f_C1IR(dst, step, p.srcRoi, p.dstRoi, p.top, p.left), p.expected);
    EXPECT_EQ(ippiCopyReplicateBorder_32f_C1IR(none, step, p.srcRoi, p.dstRoi, p.top, p.left), -8);
  }
}

}  // namespace
