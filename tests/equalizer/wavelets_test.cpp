// Edge-avoiding wavelets, the guided change, and the limit: against their formulas in double precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/each_row_test.h"
#include "support/float_run.h"

namespace {

constexpr int width = 61;
constexpr int height = 43;
using Plane = std::vector<double>;

double at(const Plane& plane, int x, int y) {
  return plane[static_cast<std::size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))];
}

// A steep edge, and noise of some levels.
Plane painted() {
  std::mt19937 random(3);
  Plane plane;
  for (int i = 0; i < width * height; ++i) {
    const double noise = 1e-4 * static_cast<double>(random() % 800);
    plane.push_back(0.25 + (i % width > 20 + i / width / 2 ? 0.4 : 0) + noise);
  }
  return plane;
}

orbel_settings settingsFor(int form) {
  orbel_settings s;
  orbel_settings_init(&s, sizeof s);
  const double gains[] = {130, 60, 250, 180, 150};
  const double radii[] = {3, 3, 0, 4, 6};
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    s.bands[i].gain = gains[i];
    s.bands[i].radius = radii[i];
    s.bands[i].threshold = 12 + 4 * i;
    s.bands[i].edges = i == 1 ? 0 : 1;
  }
  s.residual = 95;
  s.form = form;
  return s;
}

std::vector<float> equalized(const orbel_settings& settings, const Plane& plane, int threads = 0) {
  return equalized(settings, std::vector<float>(plane.begin(), plane.end()), width, height, 1, threads);
}

Plane smoothed(const Plane& plane, int spacing, double threshold, bool edges) {
  const double spline[] = {1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};
  Plane result;
  for (int i = 0; i < width * height; ++i) {
    const int x = i % width;
    const int y = i / width;
    double sum = 0;
    double weights = 0;
    for (int j = 0; j < 25; ++j) {
      const double sample = at(plane, x + (j % 5 - 2) * spacing, y + (j / 5 - 2) * spacing);
      const double difference = (sample - at(plane, x, y)) / threshold;
      const double weight = spline[j % 5] * spline[j / 5] / (edges ? 1 + difference * difference : 1);
      sum += weight * sample;
      weights += weight;
    }
    result.push_back(sum / weights);
  }
  return result;
}

TEST(Wavelets, AreWhatTheFormulaSays) {
  const Plane plane = painted();
  const orbel_settings settings = settingsFor(ORBEL_WAVELETS);
  const int spacings[] = {1, 2, 0, 11, 32};  // 2^i * radius / 3, to the next whole one
  Plane level = plane;
  Plane expected(plane.size());
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    const orbel_band& band = settings.bands[i];
    const Plane next = spacings[i] == 0 ? level : smoothed(level, spacings[i], band.threshold / 255, band.edges == 1);
    for (std::size_t k = 0; k < plane.size(); ++k) expected[k] += band.gain / 100 * (level[k] - next[k]);
    level = next;
  }
  const std::vector<float> found = equalized(settings, plane);
  for (std::size_t k = 0; k < plane.size(); ++k) ASSERT_NEAR(found[k], expected[k] + 0.95 * level[k], 3e-6) << k;

  onEachRow([&] {
    for (const int threads : {1, 3}) EXPECT_EQ(equalized(settings, plane, threads), found);
  });
  orbel_settings neutral;
  orbel_settings_init(&neutral, sizeof neutral);
  neutral.form = ORBEL_WAVELETS;
  orbel_settings touchy = neutral;  // nothing is smoothed, and bands hold nothing
  for (orbel_band& band : touchy.bands) band = {300, 3, 1e-30, 1, 0};
  for (const orbel_settings& unchanging : {neutral, touchy}) {
    const std::vector<float> back = equalized(unchanging, plane);
    for (std::size_t k = 0; k < plane.size(); ++k) ASSERT_NEAR(back[k], plane[k], 2e-7);
  }
}

// What is brought back from a quarter of the size keeps the picture's edge: between two samples of the small size it
// would be overshot by 6 levels if it were only interpolated, and is by 3.
TEST(Wavelets, KeepThePicturesEdgesAtAnySize) {
  constexpr int times = 4;
  const int w = 128 * times;
  const int h = 64 * times;
  orbel_settings settings = settingsFor(ORBEL_WAVELETS);
  settings.residual = 100;
  const double gains[] = {100, 100, 140, 225, 185};
  const double thresholds[] = {30, 25, 20, 15, 15};
  for (int i = 0; i < ORBEL_BANDS; ++i) settings.bands[i] = {gains[i], 3, thresholds[i], 1, 0};
  settings.reference_edge = w / times;
  for (int edge = w / 2; edge < w / 2 + times; ++edge) {
    std::vector<float> samples;
    for (int i = 0; i < w * h; ++i) samples.push_back(i % w < edge ? 0.2F : 0.8F);
    samples = equalized(settings, samples, w, h, 1);
    const auto [least, most] = std::minmax_element(samples.begin(), samples.end());
    EXPECT_LE(255 * std::max(0.2 - *least, *most - 0.8), 3.2) << edge;
  }
}

// d r / (r^4 + d^4)^(1/4), r being what is left to white or black, on either form and on colours each.
TEST(Wavelets, AreLimitedByBlackAndWhite) {
  for (const int form : {ORBEL_PYRAMID, ORBEL_WAVELETS}) {
    for (const int luminance : {0, 1}) {
      Plane plane = painted();
      for (double& sample : plane) sample = std::clamp(1.5 * sample - 0.3, -0.01, 1.0);
      orbel_settings settings = settingsFor(form);
      settings.luminance = luminance;
      const std::vector<float> free = equalized(settings, plane);
      settings.limit = 1;
      const std::vector<float> limited = equalized(settings, plane);
      for (std::size_t k = 0; k < plane.size(); ++k) {
        const double change = free[k] - plane[k];
        const double room = std::max(0.0, change > 0 ? 1 - plane[k] : plane[k]);
        const double held = room == 0 ? 0 : change * room / std::pow(std::pow(room, 4) + std::pow(change, 4), 0.25);
        ASSERT_NEAR(limited[k], plane[k] + held, 2e-5);
      }
    }
  }
}

}  // namespace
