// The estimate of a run's cost, by hand, and its refusals against those of the plug-in itself.

#include "batch/estimate.h"

#include <gtest/gtest.h>

#include "files/failure.h"
#include "host/filter_entry.h"
#include "plugin/plugin_host.h"

using namespace orbel;

namespace {

using Pairs = std::vector<std::pair<const char*, double>>;

Settings settingsOf(const Pairs& pairs) {
  Settings settings;
  for (const auto& [key, value] : pairs) settings.setNumber(key, value);
  return settings;
}

// Without the file's name, with which it has to begin.
template <typename Require>
std::string refusal(Require require) {
  try {
    require("a.png");
    return "none";
  } catch (const Failure& failure) {
    const std::string text = failure.what();
    EXPECT_EQ(text.substr(0, 7), "a.png: ");
    return text.substr(7);
  }
}

TEST(Estimate, CountsTapsAsDoneByHand) {
  using Taps = std::array<double, 5>;
  // Radius 3 reaches 12 samples: a Gaussian of 2 * 25 taps on 10 x 3 pixels, then squares of 625 taps on 5 x 2, 3 x 1,
  // 2 x 1 and 1 x 1.
  EXPECT_EQ(tapsOf(settingsOf({}), 10, 3), (Taps{1500, 6250, 1875, 1250, 625}));
  EXPECT_EQ(tapsOf(settingsOf({{"LUMI", 0}}), 10, 3), (Taps{4500, 18750, 5625, 3750, 1875}));
  // 4 * 0.3 reaches 2 samples.
  const Pairs none = {{"RAD1", 0.3}, {"EDG1", 1}, {"RAD2", 0}, {"RAD3", -1}, {"THR4", 0}, {"THR5", 1e-30}};
  EXPECT_EQ(tapsOf(settingsOf(none), 4, 4), (Taps{400, 0, 0, 0, 0}));
  // A threshold is the edge-preserving filter's alone, and its sign doesn't count.
  const Pairs thresholds = {{"THR1", 0}, {"THR2", -10}, {"RAD3", 0}, {"RAD4", 0}, {"RAD5", 0}};
  EXPECT_EQ(tapsOf(settingsOf(thresholds), 2, 2), (Taps{200, 625, 0, 0, 0}));
}

TEST(Estimate, RefusesHoursOfWorkAndSaysWhatTheyAreFor) {
  struct Work {
    const char* radius;
    const char* edge;
    unsigned cores;
    std::string says;
  };
  const Work works[] = {
      // 801 * 801 taps by 4000 x 3000 x 0.1 ns are 13 minutes; in band 2, and on four cores, it is a quarter.
      {"0,100,0,0,0", "on", 1, "none"},
      {"100,0,0,0,0", "on", 4, "none"},
      {"100,0,0,0,0", "off", 1, "none"},
      {"100,0,0,0,0", "on", 1, "about 13 minutes of work, most of it for --radius 100 in band 1; --max-minutes"},
      {"1,1,400,1,1", "on", 1, "about 13 minutes of work, most of it for --radius 400 in band 3; --max-minutes"},
      {"400,0,0,0,0", "on", 1, "about 3 hours"},
      {"60,0,0,0,0", "on", 60, "about 5 seconds of work"},
      {"32767", "on", 1, "about 3 years of work"}};
  for (const Work& work : works) {
    Settings settings;
    settings.setBands("--radius", "RAD", work.radius);
    settings.setBands("--edge", "EDG", work.edge);
    const std::string expected = work.says == "none" ? "none" : "these settings ask for " + work.says;
    const std::string said = refusal([&](const char* file) {
      requireShortWork(file, settings, 4000, 3000, work.cores, work.cores < 60 ? 10 : 0.05);
    });
    EXPECT_EQ(said.substr(0, expected.size()), expected) << work.radius;
  }
}

// Flat strips, so that what fits is soon done.
TEST(Estimate, RefusesTheWindowsThatThePluginRefuses) {
  struct Window {
    Pairs pairs;
    int width;
    const char* most;  // the largest radius, as the refusal has it; null: not refused
  };
  const Window windows[] = {{{{"RAD1", 0.25}}, 65533, nullptr},
                            {{{"RAD1", 0.26}}, 65533, "; at most 0.25"},
                            {{{"RAD1", 0.26}, {"THR1", 0}}, 65533, nullptr},
                            {{{"RAD1", 0.26}, {"EDG1", 0}}, 65533, nullptr},
                            {{{"RAD2", 8191.75}}, 3, "; at most 8191.5"},
                            {{{"RAD5", 1e300}}, 40, "; at most 8191.5"}};
  for (const Window& window : windows) {
    Settings settings;
    settings.setBands("--radius", "RAD", "0");
    settings.setBands("--edge", "EDG", "on");
    for (const auto& [key, value] : window.pairs) settings.setNumber(key, value);
    const std::string said = refusal([&](const char* file) { requireThatWindowsFit(file, settings, window.width, 1); });
    Document document{window.width, 1, 8, {std::vector<unsigned char>(static_cast<std::size_t>(window.width))}};
    if (window.most == nullptr) {
      EXPECT_EQ(said, "none");
      EXPECT_NO_THROW(runPlugin(PluginMain, settings.script(), document));
    } else {
      EXPECT_NE(said.find(window.most), std::string::npos) << said;
      EXPECT_THROW(runPlugin(PluginMain, settings.script(), document), PluginRefusal);
    }
  }
}

// The largest squares and strips that a host's documents and the plug-in's block have room for.
TEST(Estimate, RefusesWhatTheHostCannotHold) {
  const auto said = [](int width, int height) {
    return refusal([&](const char* file) { requireThatHostHolds(file, width, height); });
  };
  EXPECT_EQ(said(32767, 5461), "none");
  EXPECT_EQ(said(13376, 13376), "none");
  EXPECT_NE(said(32768, 1).find("no side above 32767"), std::string::npos);
  EXPECT_NE(said(1, 32768).find("no side above 32767"), std::string::npos);
  EXPECT_NE(said(13377, 13377).find("2 GiB"), std::string::npos);
}

}  // namespace
