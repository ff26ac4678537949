// Conversion of samples against the formulas in double precision, and beside rows nothing changes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "host/filter_run.h"
#include "image/kiv_image.h"

namespace {

struct HandWorked {
  float sample;
  int at8, at16;
};

TEST(PlaneConversion, RoundsToEvenAndSaturates) {
  const HandWorked cases[] = {{0.5F, 128, 16384},
                              {0.498F, 127, 16318},
                              {-0.3F, 0, 0},
                              {2.5F, 255, 65535},
                              {65535.4F / 32768.0F, 255, 65535},
                              {0.5F / 32768.0F, 0, 0},
                              {1.5F / 32768.0F, 0, 2},
                              {2.5F / 32768.0F, 0, 2},
                              // What no 32-bit integer holds is the most negative one.
                              {8421504.0F, 255, 0},
                              {8421506.0F, 0, 0},
                              {65535.998F, 255, 65535},
                              {65536.0F, 255, 0},
                              {-1e30F, 0, 0},
                              {INFINITY, 0, 0},
                              {NAN, 0, 0}};
  for (const HandWorked& c : cases) {
    unsigned char byte = 99;
    unsigned short word = 99;
    ConvertToUint8Kiv(&byte, &c.sample, 1, 1, 1, 1, 255.0F);
    ConvertToUint16Kiv(&word, &c.sample, 1, 1, 1, 1, 32768.0F);
    EXPECT_EQ(byte, c.at8) << c.sample;
    EXPECT_EQ(word, c.at16) << c.sample;
  }
}

TEST(PlaneConversion, EverySampleComesInByMultiplication) {
  const std::uint32_t bits = 0x3B808081;  // of 1 / 255
  float scale8 = 0;
  std::memcpy(&scale8, &bits, sizeof scale8);
  std::vector<unsigned char> bytes(256);
  std::vector<unsigned short> words(65536);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
  std::iota(words.begin(), words.end(), static_cast<unsigned short>(0));
  KivImage from8(16, 16, 1);
  KivImage from16(256, 256, 1);
  PS_Database db8 = {bytes.data(), nullptr, 1, 16, 0, 16, 16, 0};
  PS_Database db16 = {words.data(), nullptr, 1, 512, 0, 256, 256, 1};
  ConvertFromPs(from8.Plane(0), db8);
  ConvertFromPs(from16.Plane(0), db16);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(*from8.At(0, i % 16, i / 16), static_cast<float>(i) * scale8) << i;
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(*from16.At(0, i % 256, i / 256), static_cast<float>(i) / 32768.0F) << i;
}

struct Shape {
  int height, width, hostPadding, floatPadding;
};

// Random samples out and in again, in rows with padding of 77 and -7 that must survive.
template <typename Host, typename From, typename To>
void checkBothWays(Shape shape, float white, From from, To to) {
  const int hostStep = shape.width + shape.hostPadding;
  const int floatStep = shape.width + shape.floatPadding;
  std::mt19937 random(7);
  std::uniform_real_distribution<float> range(-0.5F, 2.5F);
  std::vector<float> floats(static_cast<std::size_t>(shape.height * floatStep));
  for (float& sample : floats) sample = range(random);
  std::vector<Host> host(static_cast<std::size_t>(shape.height * hostStep), Host{77});
  std::vector<Host> expectedHost = host;
  std::vector<float> back(floats.size(), -7.0F);
  std::vector<float> expectedBack = back;
  for (int y = 0; y < shape.height; ++y) {
    for (int x = 0; x < shape.width; ++x) {
      const auto scaled = static_cast<double>(floats[static_cast<std::size_t>(y * floatStep + x)] * white);
      const double level = std::clamp(std::nearbyint(scaled), 0.0, double{std::numeric_limits<Host>::max()});
      expectedHost[static_cast<std::size_t>(y * hostStep + x)] = static_cast<Host>(level);
      expectedBack[static_cast<std::size_t>(y * floatStep + x)] = static_cast<float>(level) * (1.0F / white);
    }
  }
  to(host.data(), floats.data(), shape.height, shape.width, floatStep, hostStep, white);
  EXPECT_EQ(host, expectedHost);
  from(back.data(), host.data(), shape.height, shape.width, hostStep, floatStep, 1.0F / white);
  EXPECT_EQ(back, expectedBack);
}

TEST(PlaneConversion, TouchesItsSamplesAlone) {
  for (const Shape shape : {Shape{1, 1, 0, 0}, Shape{5, 16, 3, 0}, Shape{31, 35, 2, 29}, Shape{200, 3, 1, 13}}) {
    SCOPED_TRACE(testing::Message() << shape.width << " x " << shape.height);
    checkBothWays<unsigned char>(shape, 255.0F, ConvertFromUint8Kiv, ConvertToUint8Kiv);
    checkBothWays<unsigned short>(shape, 32768.0F, ConvertFromUint16Kiv, ConvertToUint16Kiv);
  }
}

TEST(PlaneConversion, FloatsPassBitForBit) {
  std::uint32_t bits[] = {0x7FC12345, 0xFF800000, 0x80000000, 0x00000001, 0xC2280000, 0x501502F9, 0x3F800000};
  std::uint32_t out[7] = {};
  KivImage image(7, 1, 1);
  PS_Database db = {bits, out, 1, 28, 28, 7, 1, 2};
  ConvertFromPs(image.Plane(0), db);
  ConvertToPs(image.Plane(0), db);
  EXPECT_EQ(std::memcmp(bits, out, sizeof bits), 0);
}

}  // namespace
