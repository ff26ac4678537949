// Runs at a reference size: against the formula in double precision, and for the same look at every size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

#include "api/orbel.h"
#include "support/forced_row.h"

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
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.threads = threads;
  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, ORBEL_FLOAT32, image.width, image.height, image.channels,
                            image.samples.data(), std::ptrdiff_t{4} * image.channels * image.width);
  EXPECT_EQ(orbel_equalize(&settings, &picture, &picture, &options), ORBEL_OK);
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

// In every row of bodies that the machine has, and for any number of threads.
TEST(ReferenceSize, IsTheSameOnEveryProcessor) {
  for (const int edge : {70, 350}) {
    const Image picture = painted(201, 143, 3);
    const Image expected = equalized(settingsFor(edge, true), picture);
    for (int row = 0; row < rowCount; ++row) {
      if (!ForcedRow::machineHas(row)) continue;
      const ForcedRow forced(row);
      for (const int threads : {1, 3}) {
        EXPECT_EQ(equalized(settingsFor(edge, true), picture, threads).samples, expected.samples) << row;
      }
    }
  }
}

Image reducedBy(const Image& image, int by) {
  Image reduced(image.width / by, image.height / by, 1);
  for (int y = 0; y < reduced.height * by; ++y) {
    for (int x = 0; x < reduced.width * by; ++x) {
      reduced.at(x / by, y / by, 0) += image.at(x, y, 0) / static_cast<float>(by * by);
    }
  }
  return reduced;
}

// In levels of 8 bits, ascending.
std::vector<double> differences(const Image& a, const Image& b) {
  std::vector<double> all;
  for (std::size_t i = 0; i < a.samples.size(); ++i) {
    all.push_back(255 * std::abs(static_cast<double>(a.samples[i]) - b.samples[i]));
  }
  std::sort(all.begin(), all.end());
  return all;
}

double mean(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// Equalized and reduced is reduced and equalized, but for what reducing loses by itself.
TEST(ReferenceSize, GivesTheSameLookAtEverySize) {
  const int edge = 144;
  const orbel_settings settings = settingsFor(edge, true);
  for (const int times : {6, 4, 3, 2}) {
    // The larger picture is so many times the reference size, or has it.
    for (const int largest : {times * edge, edge}) {
      const Image large = painted(largest, largest * 2 / 3, 1);
      const Image small = reducedBy(large, times);
      const auto lost = [&] {
        return mean(differences(reducedBy(resampled(small, edge, edge * 2 / 3, lanczos), times), small));
      };
      const auto found = differences(reducedBy(equalized(settings, large), times), equalized(settings, small));
      EXPECT_LE(mean(found) - (largest == edge ? lost() : 0), 0.1) << largest << " to " << small.width;
      EXPECT_LE(found[found.size() * 99 / 100], 1) << largest << " to " << small.width;
    }
  }
}

}  // namespace
