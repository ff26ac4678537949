// Whole runs of the module with each of their allocations failed in turn, on every thread.
#include "programs/allocation_faults.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <tuple>
#include <vector>

#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

namespace {

constexpr int exceptionCode = -1;

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

Script settings(Filters filters, bool luminance) {
  Script script;
  for (const ScriptKey& key : scriptKeys) {
    double value = key.fallback;
    const std::string name = key.name;
    if (name.rfind("contrast", 0) == 0) value = 140;
    if (name.rfind("radius", 0) == 0) value = 1;
    if (name.rfind("keep edges", 0) == 0 && filters != Filters::Mixed) value = filters == Filters::Bilateral;
    if (name == "luminance only") value = luminance;
    if (name == "add half") value = 1;
    script.push_back({key.code, descriptorType(key.kind), value});
  }
  return script;
}

struct Document {
  int width, height, depth;
};

// filters, luminance only, how many allocations fail in a row
class AllocationFault : public testing::TestWithParam<std::tuple<Filters, bool, int>> {};

void checkManners(TestHost& host) {
  host.checkFences();
  EXPECT_EQ(host.violations, std::vector<std::string>());
  EXPECT_EQ(host.readersOpen + host.writersOpen, 0);
  EXPECT_LE(host.liveHandles(), 3);  // the block, the record, the script
}

// Nothing of the failed run may be in the way of the next.
void checkNextRun(TestHost& host, const TestHost& good, const std::vector<std::vector<unsigned char>>& original) {
  host.planes = original;
  EXPECT_EQ(host.run(), 0);
  EXPECT_EQ(host.planes, good.planes);
  checkManners(host);
  EXPECT_EQ(host.liveHandles(), 3);
}

TEST_P(AllocationFault, EachOneComesBackAsACode) {
  const auto [filters, luminance, failuresInARow] = GetParam();
  for (const Document& document : {Document{37, 29, 8}, {33, 70, 32}, {5, 1, 16}}) {
    const auto prepare = [&, script = settings(filters, luminance)](TestHost& host) {
      host.fillWithPattern(4);
      host.rowPadding = 4;
      host.play(script);
    };
    TestHost good(document.width, document.height, 3, document.depth, faulty().entry);
    prepare(good);
    const auto original = good.planes;
    faulty().fail({-1, 0});
    ASSERT_EQ(good.run(), 0);
    const int allocations = faulty().count();
    EXPECT_GT(allocations, 30);
    for (int at = 0; at < allocations; ++at) {
      SCOPED_TRACE(testing::Message() << "allocation " << at << " of " << allocations << ", " << document.width << " x "
                                      << document.height);
      TestHost host(document.width, document.height, 3, document.depth, faulty().entry);
      prepare(host);
      faulty().fail({at, failuresInARow});
      const std::int16_t code = host.run();
      const int reached = faulty().count();
      faulty().fail({-1, 0});
      ASSERT_GT(reached, at) << "a run that allocates less than the first";
      EXPECT_EQ(code, exceptionCode);
      EXPECT_LE(host.advances.size(), 3U) << "an output plane was asked for";
      EXPECT_EQ(host.planes, original);
      checkManners(host);
      checkNextRun(host, good, original);
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Settings, AllocationFault,
                         testing::Combine(testing::Values(Filters::Gaussian, Filters::Bilateral, Filters::Mixed),
                                          testing::Bool(), testing::Values(1, INT_MAX / 2)));

}  // namespace
