#include "tone/colour_conversion.h"

#include <array>
#include <cmath>
#include <functional>

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

template <int gammaMode, int primariesMode>
constexpr PlaneKernel lightnessKernel(const char* name) {
  return {name,
          [](float* dst, float* a, float* b, int height, int width, int step) {
            ExtractLChannelKiv(dst, a, b, a, height, width, step, gammaMode, primariesMode);
          },
          [](float a, float b) {
            if (gammaMode == 1) a = decoded(a), b = decoded(b);
            return primariesMode == 1 ? lightnessOf((a * 0.212672904F + b * 0.715152204F) + a * 0.0721750036F)
                                      : lightnessOf((a * 0.222504497F + b * 0.716878593F) + a * 0.0606168993F);
          }};
}

constexpr PlaneKernel kernels[] = {
    {"grey",
     [](float* dst, float* a, float* b, int height, int width, int step) {
       float weights[] = {0.3F, -0.7F, 0.15F};
       ConvertColorToGrayKiv(dst, a, b, a, height, width, step, weights);
     },
     [](float a, float b) { return (a * 0.3F + b * -0.7F) + a * 0.15F; }},
    lightnessKernel<1, 2>("lightness"),
    lightnessKernel<1, 1>("lightnessOtherPrimaries"),
    lightnessKernel<0, 1>("lightnessOfLinear"),
    lightnessKernel<2, 0>("lightnessOfLinearOtherPrimaries"),
};

using ColourKernels = PlaneKernels;

TEST_P(ColourKernels, EqualTheFormulaBitForBit) { expectFormulaBitForBit(); }

INSTANTIATE_TEST_SUITE_P(All, ColourKernels, testing::Combine(allRows(), testing::ValuesIn(kernels)), kernelName);

// ---- Against the formulas in double precision, over a cube of colours

using Colour = std::array<double, 3>;

Colour colourAt(const KivImage& image, int x, int y) {
  return {*image.At(0, x, y), *image.At(1, x, y), *image.At(2, x, y)};
}

// A cube of colours with low and high at opposite corners.
KivImage cube(const Colour& low, const Colour& high) {
  constexpr int side = 45;
  KivImage image(side * side, side, 3);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side * side; ++x) {
      const int at[] = {y, x / side, x % side};
      for (std::size_t c = 0; c < 3; ++c) {
        const double sample = low[c] + (high[c] - low[c]) * at[c] / (side - 1);
        *image.At(static_cast<int>(c), x, y) = static_cast<float>(sample);
      }
    }
  }
  return image;
}

Colour times(const double (&matrix)[3][3], const Colour& c) {
  Colour result{};
  for (std::size_t i = 0; i < 3; ++i) result[i] = matrix[i][0] * c[0] + matrix[i][1] * c[1] + matrix[i][2] * c[2];
  return result;
}

double labCurve(double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0; }

Colour toLab(const Colour& rgb) {
  Colour xyz =
      times({{0.412453, 0.35758, 0.180423}, {0.212671, 0.71516, 0.072169}, {0.019334, 0.119193, 0.950227}}, rgb);
  xyz[0] /= 0.950456;
  xyz[2] /= 1.0887539;
  for (double& t : xyz) t = std::min(t, 1.0);
  const double y = labCurve(xyz[1]);
  return {xyz[1] > 0.008856 ? 116 * y - 16 : 903.3 * xyz[1], 500 * (labCurve(xyz[0]) - y),
          200 * (y - labCurve(xyz[2]))};
}

Colour toRgb(const Colour& lab) {
  const double y = (lab[0] + 16) / 116;
  return times({{3.240479, -1.53715, -0.498535}, {-0.969256, 1.875991, 0.041556}, {0.055648, -0.204043, 1.057311}},
               {0.950456 * std::pow(y + lab[1] / 500, 3), std::pow(y, 3), 1.0887539 * std::pow(y - lab[2] / 200, 3)});
}

Colour toLightness(const Colour& rgb) {
  constexpr double weights[] = {0.222504497, 0.716878593, 0.0606168993};
  double y = 0;
  for (std::size_t c = 0; c < 3; ++c) {
    y += weights[c] * (rgb[c] < 0.04045 ? rgb[c] / 12.92 : std::pow((rgb[c] + 0.055) / 1.055, 2.4));
  }
  return {(y > 0.008856 ? 116 * std::cbrt(y) - 16 : 903.3 * y) / 100, 0, 0};
}

// The largest error of one channel over an image.
double largestError(const KivImage& src, const KivImage& result, Colour (*formula)(const Colour&)) {
  double largest = 0;
  for (int y = 0; y < src.size.height; ++y) {
    for (int x = 0; x < src.size.width; ++x) {
      const Colour expected = formula(colourAt(src, x, y));
      for (int c = 0; c < result.channels; ++c) {
        const double error = std::abs(double{*result.At(c, x, y)} - expected[static_cast<std::size_t>(c)]);
        if (!(error <= largest)) largest = error;
      }
    }
  }
  return largest;
}

struct Conversion {
  const char* name;
  void (*run)(KivImage& target, const KivImage& src);
  Colour (*formula)(const Colour&);
  Colour low, high;
  double bound;
};

void PrintTo(const Conversion& conversion, std::ostream* out) { *out << conversion.name; }

class ColourCube : public testing::TestWithParam<Conversion> {};

TEST_P(ColourCube, IsConvertedToSinglePrecision) {
  const KivImage src = cube(GetParam().low, GetParam().high);
  KivImage result;
  GetParam().run(result, src);
  const double error = largestError(src, result, GetParam().formula);
  RecordProperty("largestError", testing::PrintToString(error));
  EXPECT_LE(error, GetParam().bound);
}

void toLabImage(KivImage& target, const KivImage& src) { target.Convert_RGB_to_LAB(src); }
void toRgbImage(KivImage& target, const KivImage& src) { target.Convert_LAB_To_RGB(src); }
void toLightnessImage(KivImage& target, const KivImage& src) { target.ConvertRgbToLSSE(src); }
void thereAndBack(KivImage& target, const KivImage& src) {
  target.Convert_RGB_to_LAB(src);
  target.Convert_LAB_To_RGB();
}

// Bounds are one and a half times what was measured. Beyond 0 to 1 the sums cancel, and 500 * 7.787 enlarges what
// their rounding leaves.
const Conversion conversions[] = {
    {"rgbToLab", toLabImage, toLab, {0, 0, 0}, {1, 1, 1}, 8e-5},
    {"rgbToLabBeyond", toLabImage, toLab, {-0.25, -0.25, -0.25}, {1.25, 1.25, 1.25}, 2.8e-4},
    {"labToRgb", toRgbImage, toRgb, {0, -100, -100}, {100, 100, 100}, 2.5e-6},
    {"labToRgbBeyond", toRgbImage, toRgb, {-20, -200, -200}, {150, 200, 200}, 7.5e-6},
    {"thereAndBack", thereAndBack, [](const Colour& c) { return c; }, {0.01, 0.01, 0.01}, {1, 1, 1}, 2.7e-6},
    {"lightness", toLightnessImage, toLightness, {0, 0, 0}, {1, 1, 1}, 5.5e-7},
    {"lightnessBeyond", toLightnessImage, toLightness, {-0.25, -0.25, -0.25}, {1.25, 1.25, 1.25}, 6.7e-7},
};

INSTANTIATE_TEST_SUITE_P(All, ColourCube, testing::ValuesIn(conversions), [](const auto& i) { return i.param.name; });

// ---- Whole images

IppStatus twistPixel(const float* src, int, float* dst, int, IppiSize) {
  const float* const from[] = {src, src + 1, src + 2};
  float* const to[] = {dst, dst + 1, dst + 2};
  return ippiColorTwist_32f_P3R(from, 4, to, 4, {1, 1}, YUVtoRGB);
}

struct Operation {
  const char* name;
  void (*toTarget)(KivImage& target, const KivImage& src);
  void (*inPlace)(KivImage& image);
  IppStatus (*pixel)(const float* src, int srcStep, float* dst, int dstStep, IppiSize size);
};

class ColourImages : public testing::TestWithParam<Operation> {
 protected:
  static KivImage expectedOf(const KivImage& src) {
    KivImage result(src.size, 3);
    for (int y = 0; y < src.size.height; ++y) {
      for (int x = 0; x < src.size.width; ++x) {
        float pixel[] = {*src.At(0, x, y), *src.At(1, x, y), *src.At(2, x, y)};
        GetParam().pixel(pixel, 12, pixel, 12, {1, 1});
        for (int c = 0; c < 3; ++c) *result.At(c, x, y) = pixel[c];
      }
    }
    return result;
  }
};

TEST_P(ColourImages, AreTheSameInEveryTarget) {
  for (const int width : {1, 5, 16, 39}) {
    const KivImage src = trickyImage(width, 3, 3, static_cast<unsigned>(width));
    const KivImage expected = expectedOf(src);
    expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
      GetParam().toTarget(target, from);
    });
    expectInEveryTarget(src, src, expected, [](KivImage& target, const KivImage& from, const KivImage&) {
      target = from;
      GetParam().inPlace(target);
    });
  }
  KivImage empty;
  EXPECT_THROW(GetParam().inPlace(empty), NO_MEMORY_ERROR);
}

const Operation operations[] = {
    {"Color_Twist", [](KivImage& t, const KivImage& s) { t.Color_Twist(s, YUVtoRGB); },
     [](KivImage& i) { i.Color_Twist(YUVtoRGB); }, twistPixel},
    {"Convert_RGB_to_LAB", [](KivImage& t, const KivImage& s) { t.Convert_RGB_to_LAB(s); },
     [](KivImage& i) { i.Convert_RGB_to_LAB(); }, ippiRGBToLab_32f_C3R},
    {"Convert_LAB_To_RGB", [](KivImage& t, const KivImage& s) { t.Convert_LAB_To_RGB(s); },
     [](KivImage& i) { i.Convert_LAB_To_RGB(); }, ippiLabToRGB_32f_C3R},
};

INSTANTIATE_TEST_SUITE_P(All, ColourImages, testing::ValuesIn(operations), [](const auto& i) { return i.param.name; });

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
  float weights[] = {0.3F, 0.6F, 0.1F};
  const std::function<void(KivImage&)> runs[] = {[&](KivImage& t) { t.ColorToGraySSE(src, 0.3F, 0.6F, 0.1F); },
                                                 [&](KivImage& t) { t.ColorToGraySSE(src, weights); },
                                                 [&](KivImage& t) { t.ConvertRgbToLSSE(src); }};
  for (const auto& run : runs) {
    KivImage fresh;
    run(fresh);
    EXPECT_EQ(fresh.channels, 1);
    KivImage beside = randomImage(100, 12, 1, 2);
    KivImage view = beside.ROI(5, 2, 21, 7);
    run(view);
    KivImage expected = randomImage(100, 12, 1, 2);
    expected.ROI(5, 2, 21, 7) = fresh;
    EXPECT_TRUE(sameBits(beside, expected));
  }
}

TEST(Grey, TakesTheWeightsInOrder) {
  const KivImage src = randomImage(9, 5, 3, 1);
  for (int c = 0; c < 3; ++c) {
    KivImage grey;
    grey.ColorToGraySSE(src, c == 0 ? 1.0F : 0.0F, c == 1 ? 1.0F : 0.0F, c == 2 ? 1.0F : 0.0F);
    EXPECT_TRUE(sameBits(grey, src.Plane(c))) << c;
  }
}

}  // namespace
