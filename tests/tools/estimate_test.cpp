// The estimate of a run's cost by hand, and what it refuses.

#include "batch/estimate.h"

#include <gtest/gtest.h>

#include "files/failure.h"
#include "settings/settings.h"

using namespace orbel;

namespace {

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

TEST(Estimate, RefusesHoursOfWorkAndSaysWhatTheyAreFor) {
  struct Work {
    const char* radius;
    const char* edge;
    int cores;
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
      {"9000", "off", 1, "none"}};
  for (const Work& work : works) {
    Settings settings;
    setBands(settings, "--radius", *bandWord("radius"), work.radius);
    setBands(settings, "--edge", *bandWord("edges"), work.edge);
    orbel_picture shape{};
    orbel_picture_interleaved(&shape, sizeof shape, ORBEL_UINT8, 4000, 3000, 3, nullptr, 0);
    const std::string expected = work.says == "none" ? "none" : "these settings ask for " + work.says;
    const std::string said = refusal([&](const char* file) {
      const orbel_plan plan = planFor(file, settings.run, shape, work.cores);
      requireShortWork(file, settings.run, plan, work.cores, work.cores < 60 ? 10 : 0.05);
    });
    EXPECT_EQ(said.substr(0, expected.size()), expected) << work.radius;
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
