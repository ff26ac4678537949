// The order of the argument checks. Each call breaks two neighbouring rules at once: the earlier one decides. A refused
// call leaves its target alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "primitives/primitives.h"

namespace {

const float src[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
float dst[16];
unsigned char bytes[16];
unsigned short words[16];
float* const none = nullptr;

template <typename T>
using Same = typename std::common_type<T>::type;  // not deduced

// Of an image function: nulls before the size, the size before the step where steps are checked.
template <typename Source, typename Target, typename... Parameters>
void expectCommonOrder(IppStatus (*function)(const Source*, int, Target*, int, IppiSize, Parameters...),
                       const Source* source, Target* target, Same<Parameters>... parameters) {
  EXPECT_EQ(function(nullptr, 0, target, 4, {0, 1}, parameters...), -8);
  EXPECT_EQ(function(source, 0, nullptr, 4, {1, 0}, parameters...), -8);
  EXPECT_EQ(function(source, 0, target, 4, {0, 1}, parameters...), -6);
  EXPECT_EQ(function(source, 4, target, 0, {1, -1}, parameters...), -6);
}
template <typename... Parameters>
void expectStepsChecked(IppStatus (*function)(const float*, int, float*, int, IppiSize, Parameters...),
                        Same<Parameters>... parameters) {
  expectCommonOrder(function, src, dst, parameters...);
  EXPECT_EQ(function(src, 0, dst, 4, {1, 1}, parameters...), -16);
  EXPECT_EQ(function(src, 4, dst, -4, {1, 1}, parameters...), -16);
}

class Statuses : public testing::Test {
 protected:
  void SetUp() override {
    std::fill(std::begin(dst), std::end(dst), 77.0F);
    std::fill(std::begin(bytes), std::end(bytes), static_cast<unsigned char>(77));
    std::fill(std::begin(words), std::end(words), static_cast<unsigned short>(77));
  }
  void TearDown() override {
    EXPECT_EQ(std::count(std::begin(dst), std::end(dst), 77.0F), 16);
    EXPECT_EQ(std::count(std::begin(bytes), std::end(bytes), 77), 16);
    EXPECT_EQ(std::count(std::begin(words), std::end(words), 77), 16);
  }
};

TEST_F(Statuses, Arithmetic) {
  for (const auto function : {ippiAdd_32f_C1R, ippiSub_32f_C1R, ippiMul_32f_C1R, ippiDiv_32f_C1R}) {
    EXPECT_EQ(function(none, 4, src, 4, dst, 4, {0, 0}), -8);
    EXPECT_EQ(function(src, 4, none, 4, dst, 4, {0, 0}), -8);
    EXPECT_EQ(function(src, 4, src, 4, none, 4, {0, 0}), -8);
    EXPECT_EQ(function(src, 0, src, 0, dst, 0, {0, 1}), -6);
    EXPECT_EQ(function(src, 0, src, 0, dst, 0, {1, 0}), -6);
  }
  for (const auto function : {ippiAdd_32f_C1IR, ippiSub_32f_C1IR, ippiMul_32f_C1IR}) {
    expectCommonOrder(function, src, dst);
  }
  for (const auto function : {ippiAddC_32f_C1R, ippiSubC_32f_C1R, ippiMulC_32f_C1R, ippiDivC_32f_C1R}) {
    EXPECT_EQ(function(none, 4, 0, dst, 4, {0, 1}), -8);
    EXPECT_EQ(function(src, 4, 0, none, 4, {0, 1}), -8);
    EXPECT_EQ(function(src, 0, 0, dst, 0, {1, 0}), -6);
  }
  for (const auto function : {ippiAddC_32f_C1IR, ippiSubC_32f_C1IR, ippiMulC_32f_C1IR, ippiDivC_32f_C1IR}) {
    EXPECT_EQ(function(0, none, 4, {0, 1}), -8);
    EXPECT_EQ(function(0, dst, 0, {0, 1}), -6);
  }

  EXPECT_EQ(ippiDiv_32f_C1R(src, 0, src, 4, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDiv_32f_C1R(src, 4, src, 0, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDiv_32f_C1R(src, 4, src, 4, dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1R(src, 0, 0, dst, 4, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1R(src, 4, 0, dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1R(src, 4, -0.0F, dst, 4, {1, 1}), -10);
  EXPECT_EQ(ippiDivC_32f_C1IR(0, dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiDivC_32f_C1IR(0, dst, 4, {1, 1}), -10);
  EXPECT_EQ(ippsDivCRev_32f_I(1, none, 0), -8);
  EXPECT_EQ(ippsDivCRev_32f_I(1, dst, 0), -6);
}

TEST_F(Statuses, FunctionsAndStatistics) {
  float result = 77.0F;
  expectStepsChecked(ippiAbs_32f_C1R);
  expectStepsChecked(ippiSqrt_32f_C1R);
  expectStepsChecked(ippiLn_32f_C1R);
  EXPECT_EQ(ippiAbs_32f_C1IR(none, 4, {0, 1}), -8);
  EXPECT_EQ(ippiAbs_32f_C1IR(dst, 0, {0, 1}), -6);
  EXPECT_EQ(ippiAbs_32f_C1IR(dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiExp_32f_C1IR(none, 4, {0, 1}), -8);
  EXPECT_EQ(ippiExp_32f_C1IR(dst, 0, {0, 1}), -6);
  EXPECT_EQ(ippiExp_32f_C1IR(dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiLn_32f_C1IR(none, 4, {0, 1}), -8);
  EXPECT_EQ(ippiLn_32f_C1IR(dst, 0, {0, 1}), -6);
  EXPECT_EQ(ippiLn_32f_C1IR(dst, 0, {1, 1}), -16);
  EXPECT_EQ(ippiMin_32f_C1R(none, 4, {0, 1}, &result), -8);
  EXPECT_EQ(ippiMin_32f_C1R(src, 4, {0, 1}, nullptr), -8);
  EXPECT_EQ(ippiMin_32f_C1R(src, 4, {0, 1}, &result), -6);
  EXPECT_EQ(ippiMax_32f_C1R(none, 4, {0, 1}, &result), -8);
  EXPECT_EQ(ippiMax_32f_C1R(src, 4, {0, 1}, nullptr), -8);
  EXPECT_EQ(ippiMax_32f_C1R(src, 4, {1, 0}, &result), -6);
  EXPECT_EQ(result, 77.0F);
}

TEST_F(Statuses, Thresholds) {
  expectStepsChecked(ippiThreshold_GT_32f_C1R, 1);
  expectStepsChecked(ippiThreshold_LT_32f_C1R, 1);
  expectStepsChecked(ippiThreshold_LTValGTVal_32f_C1R, 2, 0, 1, 0);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1R(src, 4, dst, 4, {1, 1}, 2, 0, 1, 0), -19);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(none, 4, {0, 1}, 2, 0, 1, 0), -8);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(dst, 0, {0, 1}, 2, 0, 1, 0), -6);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(dst, 0, {1, 1}, 2, 0, 1, 0), -16);
  EXPECT_EQ(ippiThreshold_LTValGTVal_32f_C1IR(dst, 4, {1, 1}, 2, 0, 1, 0), -19);
}

TEST_F(Statuses, Conversions) {
  const unsigned char* noBytes = nullptr;
  expectCommonOrder(ippiConvert_8u32f_C1R, bytes, dst);
  expectCommonOrder(ippiConvert_16u32f_C1R, words, dst);
  expectCommonOrder(ippiConvert_32f8u_C1R, src, bytes, ippRndZero);
  expectCommonOrder(ippiConvert_32f16u_C1R, src, words, ippRndNear);
  expectCommonOrder(ippiScale_8u32f_C1R, bytes, dst, 0, 1);
  expectCommonOrder(ippiScale_32f8u_C1R, src, bytes, 0, 1);
  EXPECT_EQ(ippiScale_8u32f_C1R(noBytes, 4, dst, 4, {0, 1}, 1, 1), -12);
  EXPECT_EQ(ippiScale_32f8u_C1R(none, 4, bytes, 4, {0, 1}, 2, 1), -12);
}

TEST_F(Statuses, Copies) {
  float* const planes[] = {dst, dst + 4, dst + 8};
  const float* const sources[] = {src, src + 4, src + 8};
  expectCommonOrder(ippiCopy_32f_C1R, src, dst);
  EXPECT_EQ(ippiCopy_32f_C3P3R(none, 4, planes, 4, {0, 1}), -8);
  EXPECT_EQ(ippiCopy_32f_C3P3R(src, 4, nullptr, 4, {0, 1}), -8);
  EXPECT_EQ(ippiCopy_32f_C3P3R(src, 4, planes, 4, {0, 1}), -6);
  EXPECT_EQ(ippiCopy_32f_P3C3R(nullptr, 4, dst, 4, {0, 1}), -8);
  EXPECT_EQ(ippiCopy_32f_P3C3R(sources, 4, none, 4, {0, 1}), -8);
  EXPECT_EQ(ippiCopy_32f_P3C3R(sources, 4, dst, 4, {1, 0}), -6);
  EXPECT_EQ(ippsSet_8u(1, nullptr, 0), -8);
  EXPECT_EQ(ippsSet_8u(1, bytes, 0), -6);
  EXPECT_EQ(ippiTranspose_32f_C1R(none, 4, dst, 4, {0, 1}), -8);
  EXPECT_EQ(ippiTranspose_32f_C1R(src, 4, none, 4, {0, 1}), -8);
  EXPECT_EQ(ippiTranspose_32f_C1R(src, 4, dst, 4, {0, 1}), -6);
  EXPECT_EQ(ippiTranspose_32f_C1R(dst, 8, dst, 8, {2, 1}), -6);
  for (int missing = 0; missing < 3; ++missing) {
    float* to[] = {dst, dst, dst};
    const float* from[] = {src, src, src};
    to[missing] = nullptr;
    from[missing] = nullptr;
    EXPECT_EQ(ippiCopy_32f_C3P3R(src, 4, to, 4, {0, 1}), -8);
    EXPECT_EQ(ippiCopy_32f_P3C3R(from, 4, dst, 4, {0, 1}), -8);
  }
  unsigned char* const bytePlanes[] = {bytes, bytes, nullptr};
  unsigned short* const wordPlanes[] = {words, nullptr, words};
  EXPECT_EQ(ippiCopy_8u_C3P3R(bytes, 4, bytePlanes, 4, {1, 1}), -8);
  EXPECT_EQ(ippiCopy_8u_P3C3R(bytePlanes, 4, bytes, 4, {1, 1}), -8);
  EXPECT_EQ(ippiCopy_16u_C3P3R(words, 4, wordPlanes, 4, {1, 1}), -8);
  EXPECT_EQ(ippiCopy_16u_P3C3R(wordPlanes, 4, words, 4, {1, 1}), -8);
}

TEST_F(Statuses, Colour) {
  constexpr float twist[3][4] = {};
  const float* const from[] = {src, src, src};
  float* const to[] = {dst, dst, dst};
  expectCommonOrder(ippiRGBToLab_32f_C3R, src, dst);
  expectCommonOrder(ippiLabToRGB_32f_C3R, src, dst);
  EXPECT_EQ(ippiColorTwist_32f_P3R(nullptr, 4, to, 4, {0, 1}, twist), -8);
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 4, nullptr, 4, {0, 1}, twist), -8);
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 4, to, 4, {0, 1}, nullptr), -8);
  for (int missing = 0; missing < 3; ++missing) {
    const float* fewer[] = {src, src, src};
    float* fewerTo[] = {dst, dst, dst};
    fewer[missing] = nullptr;
    fewerTo[missing] = nullptr;
    EXPECT_EQ(ippiColorTwist_32f_P3R(fewer, 4, to, 4, {1, 0}, twist), -8);
    EXPECT_EQ(ippiColorTwist_32f_P3R(from, 4, fewerTo, 4, {1, 0}, twist), -8);
  }
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 0, to, 4, {0, 1}, twist), -6);
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 4, to, 0, {1, -1}, twist), -6);
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 0, to, 4, {1, 1}, twist), -16);
  EXPECT_EQ(ippiColorTwist_32f_P3R(from, 4, to, -4, {1, 1}, twist), -16);
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

TEST_F(Statuses, AlphaComposition) {
  const auto compose = [](const float* s1, const float* s2, float* d, IppiSize size, int type) {
    return ippiAlphaCompC_32f_C1R(s1, 4, s2, 4, d, 4, size, 1, 1, type);
  };
  EXPECT_EQ(compose(none, src, dst, {0, 1}, 99), -8);
  EXPECT_EQ(compose(src, none, dst, {0, 1}, 99), -8);
  EXPECT_EQ(compose(src, src, none, {0, 1}, 99), -8);
  EXPECT_EQ(compose(src, src, dst, {0, 1}, 99), -6);
  EXPECT_EQ(compose(src, src, dst, {1, 1}, 12), -50);
  EXPECT_EQ(compose(src, src, dst, {1, 1}, -1), -50);
  EXPECT_EQ(compose(src, src, dst, {1, 1}, 11), -14);
  EXPECT_EQ(compose(src, src, dst, {1, 1}, 1), -14);
}

}  // namespace
