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

enum class Filters { Gaussian, Bilateral, Mixed };

struct Document {
  int width, height, depth;
};

struct Host : TestHost {
  Host(Document document, Filters filters, bool luminance)
      : TestHost(document.width, document.height, 3, document.depth, faulty().entry) {
    fillWithPattern(4);
    rowPadding = 4;
    Script script = {{fourCharacters("LUMI"), typeBoolean, luminance ? 1.0 : 0.0},
                     {fourCharacters("HALF"), typeBoolean, 1}};
    for (int band = 0; band < 5; ++band) {
      script.push_back({scriptKeys[band].code, typeFloat, 140});
      script.push_back({scriptKeys[5 + band].code, typeFloat, 1});
      const bool keepsEdges = filters == Filters::Mixed ? band > 0 : filters == Filters::Bilateral;
      script.push_back({scriptKeys[15 + band].code, typeBoolean, keepsEdges ? 1.0 : 0.0});
    }
    play(script);
  }
  void checkManners() {
    EXPECT_EQ(allViolations(), std::vector<std::string>());
    EXPECT_LE(liveHandles(), 3);  // the block, the record, the script
  }
};

// filters, luminance only, how many allocations fail in a row
class AllocationFault : public testing::TestWithParam<std::tuple<Filters, bool, int>> {};

TEST_P(AllocationFault, EachOneComesBackAsACode) {
  const auto [filters, luminance, failures] = GetParam();
  for (const Document document : {Document{37, 29, 8}, Document{33, 70, 32}, Document{5, 1, 16}}) {
    Host good(document, filters, luminance);
    const auto original = good.planes;
    faulty().fail({-1, 0});
    ASSERT_EQ(good.run(), 0);
    const int allocations = faulty().count();
    EXPECT_GT(allocations, 30);
    for (int at = 0; at < allocations && !HasFailure(); ++at) {
      SCOPED_TRACE(testing::Message() << "allocation " << at << " of " << allocations << ", " << document.width << " x "
                                      << document.height);
      Host host(document, filters, luminance);
      faulty().fail({at, failures});
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
}

#ifdef ORBEL_SANITIZED  // where a run takes ten times as long
constexpr int failuresInARow[] = {1};
#else
constexpr int failuresInARow[] = {1, INT_MAX / 2};
#endif

INSTANTIATE_TEST_SUITE_P(Settings, AllocationFault,
                         testing::Combine(testing::Values(Filters::Gaussian, Filters::Bilateral, Filters::Mixed),
                                          testing::Bool(), testing::ValuesIn(failuresInARow)));

}  // namespace
