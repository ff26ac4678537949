// Conversion of samples by worked examples and one by one. What lies beside the host's rows is watched in whole runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "host/filter_run.h"
#include "support/images.h"

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
    float halves[2];
    ConvertFromUint8Kiv(halves, &byte, 1, 1, 1, 1, 0.5F);
    ConvertFromUint16Kiv(halves + 1, &word, 1, 1, 1, 1, 0.5F);
    EXPECT_EQ(halves[0] * 2, static_cast<float>(c.at8));
    EXPECT_EQ(halves[1] * 2, static_cast<float>(c.at16));
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
  const KivImage around8 = flatImage({19, 16}, 1, -7.0F);
  const KivImage around16 = flatImage({259, 256}, 1, -7.0F);
  const KivImage from8 = around8.ROI(1, 0, 16, 16);
  const KivImage from16 = around16.ROI(1, 0, 256, 256);
  PS_Database db8 = {bytes.data(), nullptr, 1, 16, 0, 16, 16, 0};
  PS_Database db16 = {words.data(), nullptr, 1, 512, 0, 256, 256, 1};
  ConvertFromPs(from8.Plane(0), db8);
  ConvertFromPs(from16.Plane(0), db16);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(*from8.At(0, i % 16, i / 16), static_cast<float>(i) * scale8) << i;
  for (int i = 0; i < 65536; ++i) ASSERT_EQ(*from16.At(0, i % 256, i / 256), static_cast<float>(i) / 32768.0F) << i;
  EXPECT_TRUE(sameBits(around8.ROI(17, 0, 2, 16), flatImage({2, 16}, 1, -7.0F)));
  EXPECT_TRUE(sameBits(around16.ROI(257, 0, 2, 256), flatImage({2, 256}, 1, -7.0F)));
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
