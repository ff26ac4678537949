// Runs at a reference size, against the formula in double precision; in every row of bodies, and for any number of
// threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "support/each_row_test.h"
#include "support/float_run.h"

namespace {

// Interleaved floats.
struct Image {
  int width;
  int height;
  int channels;
  std::vector<float> samples;

  Image(int w, int h, int c)
      : width(w), height(h), channels(c), samples(static_cast<std::size_t>(w) * static_cast<std::size_t>(h * c)) {}
  float& at(int x, int y, int c) { return samples[static_cast<std::size_t>((y * width + x) * channels + c)]; }
  float at(int x, int y, int c) const { return const_cast<Image*>(this)->at(x, y, c); }
};

// Structures of all sizes, and steep edges.
Image painted(int width, int height, int channels) {
  Image image(width, height, channels);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double u = (x + 0.5) / width;
      const double v = (y + 0.5) / height;
      double value = 0.45 + (u + 0.4 * v > 0.8 ? 0.2 : -0.1);
      for (int k = 0; k < 7; ++k) value += 0.05 * std::sin(std::exp2(k) * (3 * u + 2 * v * (k % 3) + k));
      for (int c = 0; c < channels; ++c) image.at(x, y, c) = static_cast<float>(value * (1 - 0.1 * c) + 0.05 * c * u);
    }
  }
  return image;
}

orbel_settings settingsFor(int edge, bool luminance) {
  orbel_settings s;
  orbel_settings_init(&s, sizeof s);
  const double gains[] = {130, 150, 70, 140, 120};
  for (int i = 0; i < ORBEL_BANDS; ++i) s.bands[i].gain = gains[i];
  s.residual = 95;
  s.luminance = luminance ? 1 : 0;
  s.reference_edge = edge;
  return s;
}

Image equalized(const orbel_settings& settings, Image image, int threads = 0) {
  image.samples = equalized(settings, image.samples, image.width, image.height, image.channels, threads);
  return image;
}

// The weight of a sample by its distance in samples of the line that it is in; scale is that line's length over the
// new one's.
using Weigh = std::function<double(double distance, double scale)>;

double tent(double d, double) { return std::max(0.0, 1 - std::abs(d)); }
double covered(double d, double scale) {
  return std::max(0.0, std::min(d + 0.5, scale / 2) - std::max(d - 0.5, -scale / 2));
}
double lanczos(double d, double) {
  const double x = 3.141592653589793 * d;
  return d == 0 ? 1 : std::abs(d) < 3 ? 3 * std::sin(x) * std::sin(x / 3) / (x * x) : 0;
}

Image resampled(const Image& image, int width, int height, const Weigh& weigh) {
  const auto line = [&](int from, int to, const std::function<double(int)>& sample, int i) {
    const double scale = static_cast<double>(from) / to;
    const double centre = (i + 0.5) * scale - 0.5;
    double sum = 0;
    double weights = 0;
    for (int j = -3; j < from + 3; ++j) {
      const double weight = weigh(j - centre, scale);
      sum += weight * sample(std::clamp(j, 0, from - 1));
      weights += weight;
    }
    return static_cast<float>(sum / weights);
  };
  Image down(image.width, height, image.channels);
  Image both(width, height, image.channels);
  for (int c = 0; c < image.channels; ++c) {
    for (int x = 0; x < image.width; ++x) {
      for (int y = 0; y < height; ++y) {
        down.at(x, y, c) = line(
            image.height, height, [&](int j) { return image.at(x, j, c); }, y);
      }
    }
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        both.at(x, y, c) = line(
            image.width, width, [&](int j) { return down.at(j, y, c); }, x);
      }
    }
  }
  return both;
}

// picture + (g - 1) * plane + change, change = equalized - g * reduced being brought back.
TEST(ReferenceSize, GivesWhatTheFormulaSays) {
  struct Case {
    int width, height, edge, workingWidth, workingHeight;
    double radii;
    Weigh there, back;
  };
  const Case cases[] = {{301, 240, 90, 90, 72, 1, covered, tent},
                        {100, 250, 211, 84, 211, 1, covered, tent},
                        {70, 41, 113, 113, 66, 1, lanczos, covered},
                        {66, 400, 100, 64, 388, 400 / 100.0 / (66 / 64.0), covered, tent},
                        {20, 60, 30, 20, 60, 2, covered, tent}};
  for (const Case& c : cases) {
    for (const bool luminance : {true, false}) {
      const Image picture = painted(c.width, c.height, 3);
      Image planes = picture;
      if (luminance) {
        planes = Image(c.width, c.height, 1);
        for (int y = 0; y < c.height; ++y) {
          for (int x = 0; x < c.width; ++x) {
            planes.at(x, y, 0) =
                0.299F * picture.at(x, y, 0) + 0.587F * picture.at(x, y, 1) + 0.114F * picture.at(x, y, 2);
          }
        }
      }
      const orbel_settings settings = settingsFor(c.edge, luminance);
      orbel_settings atReference = settings;
      atReference.reference_edge = 0;
      atReference.luminance = 0;
      for (orbel_band& band : atReference.bands) band.radius *= c.radii;
      const float gain = 1.3F;
      const Image small = resampled(planes, c.workingWidth, c.workingHeight, c.there);
      Image change = equalized(atReference, small);
      for (std::size_t i = 0; i < change.samples.size(); ++i) change.samples[i] -= gain * small.samples[i];
      const Image back = resampled(change, c.width, c.height, c.back);
      const Image result = equalized(settings, picture);
      onEachRow([&] {
        for (const int threads : {1, 3}) EXPECT_EQ(equalized(settings, picture, threads).samples, result.samples);
      });
      for (int i = 0; i < c.width * c.height * 3; ++i) {
        const int x = i / 3 % c.width;
        const int y = i / 3 / c.width;
        const int plane = luminance ? 0 : i % 3;
        ASSERT_NEAR(result.at(x, y, i % 3),
                    picture.at(x, y, i % 3) + (gain - 1) * planes.at(x, y, plane) + back.at(x, y, plane), 3e-6)
            << c.width << " x " << c.height << " at " << x << ", " << y;
      }
    }
  }
}

TEST(ReferenceSize, IsAPlainRunAtThatSize) {
  for (const bool luminance : {true, false}) {
    const Image picture = painted(160, 90, 3);
    EXPECT_EQ(equalized(settingsFor(160, luminance), picture).samples,
              equalized(settingsFor(0, luminance), picture).samples);
  }
}

}  // namespace
