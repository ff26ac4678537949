// Conversion of samples against the formulas in double precision, with fences at both ends of every row.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "host/filter_run.h"
#include "image/kiv_image.h"

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// Rounded as the processor's default mode does, then saturated; what no 32-bit integer holds is the most negative one.
double naive(float sample, float scale, double most) {
  const float product = sample * scale;
  if (!(product < 2147483648.0F) || product < -2147483648.0F) return 0;
  return std::min(std::max(std::nearbyint(static_cast<double>(product)), 0.0), most);
}

struct Expected {
  float sample;
  int at8;
  int at16;
};

class HandWorked : public testing::TestWithParam<Expected> {};

TEST_P(HandWorked, GoesOutAs) {
  unsigned char byte = 99;
  unsigned short word = 99;
  ConvertToUint8Kiv(&byte, &GetParam().sample, 1, 1, 1, 1, 255.0F);
  ConvertToUint16Kiv(&word, &GetParam().sample, 1, 1, 1, 1, 32768.0F);
  EXPECT_EQ(byte, GetParam().at8);
  EXPECT_EQ(word, GetParam().at16);
}

INSTANTIATE_TEST_SUITE_P(
    Samples, HandWorked,
    testing::Values(Expected{0.5F, 128, 16384}, Expected{0.498F, 127, 16318}, Expected{-0.3F, 0, 0},
                    Expected{-0.0F, 0, 0}, Expected{1.0F, 255, 32768}, Expected{2.5F, 255, 65535},
                    Expected{1.5F, 255, 49152}, Expected{65535.4F / 32768.0F, 255, 65535},
                    Expected{0.5F / 32768.0F, 0, 0}, Expected{1.5F / 32768.0F, 0, 2}, Expected{2.5F / 32768.0F, 0, 2},
                    Expected{8421504.0F, 255, 0}, Expected{8421506.0F, 0, 0}, Expected{65535.998F, 255, 65535},
                    Expected{65536.0F, 255, 0}, Expected{1e30F, 0, 0}, Expected{-1e30F, 0, 0}, Expected{infinity, 0, 0},
                    Expected{-infinity, 0, 0}, Expected{notANumber, 0, 0}, Expected{1e-40F, 0, 0}));

TEST(PlaneConversion, EverySampleComesInByMultiplication) {
  float scale8 = 0;
  const std::uint32_t bits = 0x3B808081;
  std::memcpy(&scale8, &bits, sizeof scale8);
  std::vector<unsigned char> bytes(256);
  std::vector<unsigned short> words(65536);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i);
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<unsigned short>(i);
  KivImage from8(16, 16, 1);
  KivImage from16(256, 256, 1);
  PS_Database db = {};
  db.inData = bytes.data();
  db.inRowBytes = 16;
  ConvertFromPs(from8.Plane(0), db);
  db = {words.data(), nullptr, 1, 512, 0, 256, 256, 1};
  ConvertFromPs(from16.Plane(0), db);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(*from8.At(0, i % 16, i / 16), static_cast<float>(i) * scale8) << i;
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(*from16.At(0, i % 256, i / 256), static_cast<float>(i) / 32768.0F) << i;
}

struct Shape {
  int height, width, hostPadding, floatPadding;
};

class Shapes : public testing::TestWithParam<Shape> {};

// Rows of random samples, with a pattern between and around them that must survive.
template <typename Host, typename From, typename To>
void checkBothWays(Shape shape, float white, From from, To to) {
  const auto [height, width, hostPadding, floatPadding] = shape;
  const int hostStep = width + hostPadding;
  const int floatStep = width + floatPadding;
  const auto rows = static_cast<std::size_t>(height);
  std::mt19937 random(7);
  std::uniform_real_distribution<float> range(-0.5F, 2.5F);
  std::vector<Host> host(rows * static_cast<std::size_t>(hostStep), Host{77});
  std::vector<float> floats(rows * static_cast<std::size_t>(floatStep), -7.0F);
  for (float& sample : floats) sample = range(random);
  const std::vector<float> source = floats;
  to(host.data(), floats.data(), height, width, floatStep, hostStep, white);
  EXPECT_EQ(source, floats);
  for (std::size_t i = 0; i < host.size(); ++i) {
    const auto x = i % static_cast<std::size_t>(hostStep);
    const auto y = i / static_cast<std::size_t>(hostStep);
    const bool inside = x < static_cast<std::size_t>(width);
    const double expected =
        inside ? naive(source[y * static_cast<std::size_t>(floatStep) + x], white, std::numeric_limits<Host>::max())
               : 77;
    ASSERT_EQ(host[i], expected) << "column " << x << ", row " << y;
  }
  std::fill(floats.begin(), floats.end(), -7.0F);
  from(floats.data(), host.data(), height, width, hostStep, floatStep, 1.0F / white);
  for (std::size_t i = 0; i < floats.size(); ++i) {
    const auto x = i % static_cast<std::size_t>(floatStep);
    const auto y = i / static_cast<std::size_t>(floatStep);
    const bool inside = x < static_cast<std::size_t>(width);
    const float expected =
        inside ? static_cast<float>(host[y * static_cast<std::size_t>(hostStep) + x]) * (1.0F / white) : -7.0F;
    ASSERT_EQ(floats[i], expected) << "column " << x << ", row " << y;
  }
}

TEST_P(Shapes, TouchTheirSamplesAlone) {
  checkBothWays<unsigned char>(GetParam(), 255.0F, ConvertFromUint8Kiv, ConvertToUint8Kiv);
  checkBothWays<unsigned short>(GetParam(), 32768.0F, ConvertFromUint16Kiv, ConvertToUint16Kiv);
}

INSTANTIATE_TEST_SUITE_P(Rows, Shapes,
                         testing::Values(Shape{1, 1, 0, 0}, Shape{3, 4, 1, 3}, Shape{2, 15, 0, 1}, Shape{5, 16, 3, 0},
                                         Shape{2, 17, 7, 5}, Shape{31, 35, 2, 29}, Shape{1, 64, 0, 0},
                                         Shape{200, 3, 1, 13}));

TEST(PlaneConversion, EmptyShapesAndUnknownDepthsTouchNothing) {
  float sample = 0.25F;
  ConvertFromUint8Kiv(&sample, nullptr, 0, 5, 5, 5, 1.0F);
  ConvertFromUint16Kiv(&sample, nullptr, -1, 5, 5, 5, 1.0F);
  ConvertToUint8Kiv(nullptr, &sample, 0, 5, 5, 5, 1.0F);
  ConvertToUint16Kiv(nullptr, &sample, 3, 0, 5, 5, 1.0F);
  KivImage image(&sample, {1, 1}, 1);
  unsigned char byte = 9;
  for (const int code : {-1, 3, 100}) {
    PS_Database db = {&byte, &byte, 1, 1, 1, 1, 1, code};
    ConvertFromPs(image.Plane(0), db);
    ConvertToPs(image.Plane(0), db);
  }
  EXPECT_EQ(sample, 0.25F);
  EXPECT_EQ(byte, 9);
}

TEST(PlaneConversion, FloatsPassBitForBit) {
  const std::uint32_t bits[] = {0x7FC12345, 0xFF800000, 0x80000000, 0x00000001, 0xC2280000, 0x501502F9, 0x3F800000};
  std::uint32_t out[7] = {};
  KivImage image(7, 1, 1);
  PS_Database db = {const_cast<std::uint32_t*>(bits), out, 1, 28, 28, 7, 1, 2};
  ConvertFromPs(image.Plane(0), db);
  ConvertToPs(image.Plane(0), db);
  EXPECT_EQ(std::memcmp(bits, out, sizeof bits), 0);
}

}  // namespace
