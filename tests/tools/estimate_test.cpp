// The estimate of a run's cost, by hand, and its refusals against those of the plug-in itself.

#include "estimate.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "failure.h"
#include "host/filter_entry.h"
#include "plugin_host.h"

namespace {

Settings settingsOf(const std::vector<std::string>& pairs) {
  Settings settings;
  for (const std::string& pair : pairs) settings.setPair("--set", pair);
  return settings;
}

template <typename Call>
std::string refusalOf(Call call) {
  try {
    call();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "";
}

struct Count {
  std::vector<std::string> pairs;
  int width;
  int height;
  std::array<double, 5> taps;
};

TEST(Estimate, CountsTapsAsDoneByHand) {
  const std::vector<Count> counts = {
      // Radius 3 reaches 12 samples: a Gaussian of 2 * 25 taps on 10 x 3 pixels, then squares of 625 taps on 5 x 2,
      // 3 x 1, 2 x 1 and 1 x 1.
      {{}, 10, 3, {1500, 6250, 1875, 1250, 625}},
      {{"LUMI=off"}, 10, 3, {4500, 18750, 5625, 3750, 1875}},
      // 4 * 0.3 reaches 2 samples.
      {{"RAD1=0.3", "EDG1=on", "RAD2=0", "RAD3=-1", "THR4=0", "THR5=1e-30"}, 4, 4, {400, 0, 0, 0, 0}},
      // A threshold is the edge-preserving filter's alone, and its sign doesn't count.
      {{"THR1=0", "THR2=-10", "RAD3=0", "RAD4=0", "RAD5=0"}, 2, 2, {200, 625, 0, 0, 0}}};
  for (const Count& c : counts) {
    EXPECT_EQ(tapsOf(settingsOf(c.pairs), c.width, c.height), c.taps) << testing::PrintToString(c.pairs);
  }
}

struct Work {
  const char* radius;
  const char* edge;
  unsigned cores;
  std::string says;  // empty: not refused
};

TEST(Estimate, RefusesHoursOfWorkAndSaysWhatTheyAreFor) {
  const std::vector<Work> works = {
      {"3", "on", 1, ""},
      // 801 * 801 taps by 4000 x 3000 x 0.25 ns are 32 minutes.
      {"0,100,0,0,0", "on", 1, ""},  // a quarter of that
      {"0,0,100,0,0", "on", 1, ""},
      {"100,0,0,0,0", "on", 4, ""},
      {"100,0,0,0,0", "on", 1, "about 32 minutes of work, most of it for --radius 100 in band 1; --max-minutes"},
      {"1,1,400,1,1", "on", 1, "about 32 minutes of work, most of it for --radius 400 in band 3; --max-minutes"},
      {"400,0,0,0,0", "on", 1, "about 9 hours"},
      {"100,0,0,0,0", "off", 1, ""},
      {"1e300", "off", 2, "more than a thousand years of work, most of it for --radius 1e+300 in band 1"}};
  for (const Work& work : works) {
    Settings settings;
    settings.setBands("--radius", "RAD", work.radius);
    settings.setBands("--edge", "EDG", work.edge);
    const std::string refusal = refusalOf([&] { requireShortWork("a.png", settings, 4000, 3000, work.cores, 10); });
    if (work.says.empty()) {
      EXPECT_EQ(refusal, "") << work.radius;
    } else {
      EXPECT_EQ(refusal.rfind("a.png: these settings ask for " + work.says, 0), 0U) << refusal;
    }
  }
}

struct Window {
  std::vector<std::string> pairs;
  int width;
  const char* most;  // the largest radius, as the refusal has it; null: not refused
};

// Flat strips, so that what fits is soon done.
TEST(Estimate, RefusesTheWindowsThatThePluginRefuses) {
  const std::vector<Window> windows = {
      {{"RAD1=0.25"}, 65533, nullptr},           {{"RAD1=0.26"}, 65533, "0.25"},
      {{"RAD1=0.26", "THR1=0"}, 65533, nullptr}, {{"RAD1=0.26", "EDG1=off"}, 65533, nullptr},
      {{"RAD1=0", "RAD2=8191.75"}, 3, "8191.5"}, {{"RAD1=0", "RAD5=1e300"}, 40, "8191.5"}};
  for (const Window& window : windows) {
    Settings settings;
    settings.setBands("--radius", "RAD", "0");
    settings.setBands("--edge", "EDG", "on");
    for (const std::string& pair : window.pairs) settings.setPair("--set", pair);
    const std::string refusal = refusalOf([&] { requireThatWindowsFit("a.png", settings, window.width, 1); });
    Document document{window.width, 1, 8, {std::vector<unsigned char>(static_cast<std::size_t>(window.width))}};
    if (window.most == nullptr) {
      EXPECT_EQ(refusal, "");
      EXPECT_NO_THROW(runPlugin(PluginMain, settings.script(), document));
    } else {
      EXPECT_NE(refusal.find(std::string(" is too large for edge protection on this picture; at most ") + window.most),
                std::string::npos)
          << refusal;
      EXPECT_EQ(refusal.rfind("a.png: --radius ", 0), 0U);
      EXPECT_THROW(runPlugin(PluginMain, settings.script(), document), PluginRefusal);
    }
  }
}

// The largest squares and strips that a host's documents and the plug-in's block have room for.
TEST(Estimate, RefusesWhatTheHostCannotHold) {
  const auto refusal = [](int width, int height) {
    return refusalOf([&] { requireThatHostHolds("a.png", width, height); });
  };
  EXPECT_EQ(refusal(32767, 5461), "");
  EXPECT_EQ(refusal(13376, 13376), "");
  EXPECT_NE(refusal(32768, 1).find("no side above 32767"), std::string::npos);
  EXPECT_NE(refusal(1, 32768).find("no side above 32767"), std::string::npos);
  EXPECT_NE(refusal(13377, 13377).find("2 GiB"), std::string::npos);
}

}  // namespace
