// The presets that ship: no halos along edges of any kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "settings/settings_file.h"
#include "support/float_run.h"

using namespace orbel;

namespace {

struct Edge {
  double low, high;
  int soft;       // pixels of a logistic function; 0: sharp
  bool diagonal;  // else upright
};

constexpr int width = 256;
constexpr int height = 256;
constexpr int reach = 72;  // of the low-passes, from the picture's border

// What an edge is overshot by, in levels of 8 bits.
double halo(orbel_settings run, const Edge& edge, int position) {
  std::vector<float> samples;
  for (int i = 0; i < width * height; ++i) {
    const double x = i % width + 0.5 - 112 - position;
    const double away = edge.diagonal ? (x + i / width - height / 2.0) / std::sqrt(2.0) : x;
    const double part = edge.soft != 0 ? 1 / (1 + std::exp(-away / edge.soft)) : away > 0 ? 1 : 0;
    samples.push_back(static_cast<float>(edge.low + (edge.high - edge.low) * part));
  }
  run.reference_edge = 0;
  samples = equalized(run, samples, width, height, 1);
  const auto [least, most] = std::minmax_element(samples.begin() + reach * width, samples.end() - reach * width);
  return 255 * std::max(edge.low - *least, *most - edge.high);
}

TEST(Presets, DrawNoHalos) {
  const auto folder = std::filesystem::path(ORBEL_PROGRAM).parent_path() / "presets";
  for (const std::string preset : {"clarity", "landscape", "crisp", "soft-skin", "protect-grain"}) {
    Settings settings;
    readSettings((folder / (preset + ".toml")).string(), settings);
    for (const auto& [low, high] : {std::pair{0.1, 0.9}, {0.2, 0.8}, {0.3, 0.6}, {0.4, 0.6}}) {
      for (const int soft : {0, 2}) {
        for (const bool diagonal : {false, true}) {
          const Edge edge = {low, high, soft, diagonal};
          for (int position = 0; position < 32; position += soft == 0 && !diagonal ? 3 : 13) {
            ASSERT_LE(halo(settings.run, edge, position), 4) << preset << " " << low << " to " << high << ", " << soft;
          }
        }
      }
    }
  }
}

}  // namespace
