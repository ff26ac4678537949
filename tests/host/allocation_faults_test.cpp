// Whole runs of the module with each of their allocations failed in turn, on every thread.
#include "programs/allocation_faults.h"

#include <gtest/gtest.h>

#include <climits>

#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

namespace {

struct FaultyModule {
  LoadedModule module{ORBEL_MODULE_WITH_ALLOCATION_FAULTS};
  PluginMainProc entry = module.procedure<PluginMainProc>("PluginMain");
  decltype(&failAllocations) fail = module.procedure<decltype(&failAllocations)>("failAllocations");
  decltype(&allocationCount) count = module.procedure<decltype(&allocationCount)>("allocationCount");
};

FaultyModule& faulty() {
  static FaultyModule module;
  return module;
}

struct Case {
  int width, height, depth;
  int edges;  // levels from this one on keep their edges
  bool luminance;
  int failures;  // in a row
};

struct Host : TestHost {
  explicit Host(const Case& c) : TestHost(c.width, c.height, 3, c.depth, faulty().entry) {
    fillWithPattern(4);
    rowPadding = 4;
    Script script = {{fourCharacters("LUMI"), typeBoolean, c.luminance ? 1.0 : 0.0},
                     {fourCharacters("HALF"), typeBoolean, 1}};
    for (int band = 0; band < 5; ++band) {
      script.push_back({scriptKeys[band].code, typeFloat, 140});
      script.push_back({scriptKeys[5 + band].code, typeFloat, 1});
      script.push_back({scriptKeys[15 + band].code, typeBoolean, band >= c.edges ? 1.0 : 0.0});
    }
    play(script);
  }
  void checkManners() {
    EXPECT_EQ(allViolations(), std::vector<std::string>());
    EXPECT_LE(liveHandles(), 3);  // the block, the record, the script
  }
};

class AllocationFault : public testing::TestWithParam<Case> {};

TEST_P(AllocationFault, EachOneComesBackAsACode) {
  Host good(GetParam());
  const auto original = good.planes;
  faulty().fail({-1, 0});
  ASSERT_EQ(good.run(), 0);
  const int allocations = faulty().count();
  EXPECT_GT(allocations, 30);
  for (int at = 0; at < allocations && !HasFailure(); ++at) {
    SCOPED_TRACE(testing::Message() << "allocation " << at << " of " << allocations);
    Host host(GetParam());
    faulty().fail({at, GetParam().failures});
    const std::int16_t code = host.run();
    const int reached = faulty().count();
    faulty().fail({-1, 0});
    ASSERT_GT(reached, at) << "a run that allocates less than the first";
    EXPECT_EQ(code, -1);
    EXPECT_LE(host.advances.size(), 3U) << "an output plane was asked for";
    EXPECT_EQ(host.planes, original);
    host.checkManners();
    // Nothing of the failed run may be in the way of the next.
    EXPECT_EQ(host.run(), 0);
    EXPECT_EQ(host.planes, good.planes);
    host.checkManners();
  }
}

// By bands of rows and, where a resize is refused or a side is short, step by step. These reach every chain of calls
// that ends in an allocation.
constexpr Case cases[] = {
    {37, 29, 8, 1, true, 1},          {37, 29, 16, 1, false, 1},          {33, 70, 32, 1, true, 1},
    {33, 70, 8, 1, false, 1},         {33, 70, 16, 0, true, 1},
#ifndef ORBEL_SANITIZED  // where a run takes ten times as long
    {5, 1, 16, 1, true, INT_MAX / 2}, {33, 70, 32, 1, true, INT_MAX / 2},
#endif
};

INSTANTIATE_TEST_SUITE_P(Settings, AllocationFault, testing::ValuesIn(cases));

}  // namespace
