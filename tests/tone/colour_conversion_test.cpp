#include "tone/colour_conversion.h"

#include <cmath>

#include "image/kiv_image.h"
#include "support/targets.h"

namespace {

// ---- Grey and lightness: the given steps bit for bit, with the first input as third one too

float decoded(float c) {
  if (c < 0.04045F) return c * 0.0773993805F;
  return static_cast<float>(std::pow(double{(c + 0.055F) * 0.947867274F}, 2.4));
}

float floatOf(std::uint32_t bits) {
  float value = 0.0F;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

float lightnessOf(float y) {
  const float x = std::abs(y);
  float root = floatOf(0x54800000 - (bitsOf(x) >> 23) * 0x2AAAAA);
  for (int step = 0; step < 5; ++step) {
    root = 1.33333337F * root - (0.333333343F * x) * ((root * root) * (root * root));
  }
  root = root + (root - x * ((root * root) * (root * root))) * 0.333333343F;
  const float c = bitsOf(x) < 0x800000 ? 0.0F : y * (root * root);
  return (y > 0.008856F ? 116.0F * c - 16.0F : 903.3F * y) * 0.01F;
}

float lightnessOfFirst(float a, float b) {
  return lightnessOf((a * 0.212672904F + b * 0.715152204F) + a * 0.0721750036F);
}
float lightnessOfSecond(float a, float b) {
  return lightnessOf((a * 0.222504497F + b * 0.716878593F) + a * 0.0606168993F);
}

void grey(float* dst, float* a, float* b, int height, int width, int step) {
  float weights[] = {0.3F, -0.7F, 0.15F};
  ConvertColorToGrayKiv(dst, a, b, a, height, width, step, weights);
}
void lightness(float* dst, float* a, float* b, int height, int width, int step, int gammaMode, int primariesMode) {
  ExtractLChannelKiv(dst, a, b, a, height, width, step, gammaMode, primariesMode);
}

const PlaneKernel kernels[] = {
    planeKernel("grey", grey, [](float a, float b) { return (a * 0.3F + b * -0.7F) + a * 0.15F; }),
    planeKernel(
        "lightness", lightness, [](float a, float b) { return lightnessOfSecond(decoded(a), decoded(b)); }, 1, 2),
    planeKernel(
        "lightnessOtherPrimaries", lightness, [](float a, float b) { return lightnessOfFirst(decoded(a), decoded(b)); },
        1, 1),
    planeKernel("lightnessOfLinear", lightness, lightnessOfFirst, 0, 1),
    planeKernel("lightnessOfLinearOtherPrimaries", lightness, lightnessOfSecond, 2, 0),
};

TEST(ColourKernels, EqualTheFormulaBitForBit) { expectFormulasBitForBit(kernels); }

// ---- Whole images

IppStatus twistPixel(const float* src, int, float* dst, int, IppiSize) {
  const float* const from[] = {src, src + 1, src + 2};
  float* const to[] = {dst, dst + 1, dst + 2};
  return ippiColorTwist_32f_P3R(from, 4, to, 4, {1, 1}, YUVtoRGB);
}

// run(target, src) and run(target), and what they do to a pixel.
template <typename Run>
void expectPixels(Run run, IppStatus (*convert)(const float*, int, float*, int, IppiSize)) {
  for (const int width : {1, 5, 16, 39}) {
    const KivImage src = trickyImage(width, 3, 3, static_cast<unsigned>(width));
    expectInEveryTarget(src,
                        imageOf(src.size, 3,
                                [&](int c, int x, int y) {
                                  float pixel[] = {*src.At(0, x, y), *src.At(1, x, y), *src.At(2, x, y)};
                                  convert(pixel, 12, pixel, 12, {1, 1});
                                  return pixel[c];
                                }),
                        run);
  }
  KivImage empty;
  EXPECT_THROW(run(empty), NO_MEMORY_ERROR);
}

TEST(ColourImages, AreTheSameInEveryTarget) {
  expectPixels([](KivImage& t, const auto&... src) { t.Color_Twist(src..., YUVtoRGB); }, twistPixel);
  expectPixels([](KivImage& t, const auto&... src) { t.Convert_RGB_to_LAB(src...); }, ippiRGBToLab_32f_C3R);
  expectPixels([](KivImage& t, const auto&... src) { t.Convert_LAB_To_RGB(src...); }, ippiLabToRGB_32f_C3R);
}

TEST(Lab, KeepsTheTargetWhereThereIsNoMemory) {
  KivImage image = randomImage(4, 4, 3, 1);
  image.size = {200000000, 1};  // a row of pixels beyond 32 bits
  image.Convert_RGB_to_LAB();
  image.Convert_LAB_To_RGB();
  image.size = {4, 4};
  EXPECT_TRUE(sameBits(image, randomImage(4, 4, 3, 1)));
}

TEST(Lab, ASmallerSourceFillsItsPart) {
  const KivImage src = randomImage(5, 4, 3, 1);
  KivImage target = randomImage(9, 7, 3, 2);
  target.Convert_RGB_to_LAB(src);
  KivImage expected = randomImage(9, 7, 3, 2);
  expected.ROI(0, 0, 5, 4).Convert_RGB_to_LAB(src);
  EXPECT_TRUE(sameBits(target, expected));
}

// A view as source and one as target: their row steps differ, and nothing beside the target changes.
TEST(Grey, AndLightnessOfViews) {
  const KivImage parent = randomImage(50, 9, 3, 1);
  const KivImage src = parent.ROI(3, 1, 21, 7);
  const auto expectInBoth = [](const KivImage& expected, auto run) {
    KivImage fresh;
    run(fresh);
    EXPECT_TRUE(sameBits(fresh, expected));
    KivImage around = randomImage(100, 12, 1, 2);
    KivImage expectedAround = copyOf(around);
    expectedAround.ROI(5, 2, 21, 7) = expected;
    KivImage view = around.ROI(5, 2, 21, 7);
    run(view);
    EXPECT_TRUE(sameBits(around, expectedAround));
  };
  const KivImage grey = imageOf(src.size, 1, [&](int, int x, int y) {
    return (*src.At(0, x, y) * 0.3F + *src.At(1, x, y) * 0.6F) + *src.At(2, x, y) * 0.1F;
  });
  float weights[] = {0.3F, 0.6F, 0.1F};
  expectInBoth(grey, [&](KivImage& t) { t.ColorToGraySSE(src, 0.3F, 0.6F, 0.1F); });
  expectInBoth(grey, [&](KivImage& t) { t.ColorToGraySSE(src, weights); });
  const KivImage lightness = imageOf(src.size, 1, [&](int, int x, int y) {
    const auto part = [&](int c, float weight) { return decoded(*src.At(c, x, y)) * weight; };
    return lightnessOf((part(0, 0.222504497F) + part(1, 0.716878593F)) + part(2, 0.0606168993F));
  });
  expectInBoth(lightness, [&](KivImage& t) { t.ConvertRgbToLSSE(src); });
}

}  // namespace
