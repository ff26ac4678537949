// The loadable module as a file: loading, unloading after parallel work, and a host that does anything at any time.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

namespace {

TEST(Module, UnloadsAfterParallelRunsAndLoadsAgain) {
  // A copy: other tests keep the module itself loaded.
  const auto name = "module_test_" + std::to_string(std::random_device()()) + ".module";
  const std::string copy = (std::filesystem::temp_directory_path() / name).string();
  std::filesystem::copy_file(ORBEL_MODULE, copy);
  const int threads = threadCount();
  for (int i = 0; i < 20; ++i) {
    {
      const LoadedModule module(copy);
      EXPECT_TRUE(LoadedModule::isLoaded(copy));
      EXPECT_EQ(threadCount(), threads) << "loading started a thread";
      TestHost host(64, 48, 3, 16, module.procedure<PluginMainProc>("PluginMain"));
      host.fillWithPattern(static_cast<unsigned>(i));
      // On some paths the run ends early, with the runtime's threads already there.
      host.failAt = i % 4 == 3 ? 8 : -1;
      const bool failed = host.run() != 0;
      EXPECT_EQ(failed, i % 4 == 3);
      EXPECT_EQ(threadCountOnceSettled(threads), threads);
    }
    EXPECT_FALSE(LoadedModule::isLoaded(copy));
  }
  std::filesystem::remove(copy);
}

class RandomHost {
 public:
  explicit RandomHost(unsigned seed) : random_(seed) { renew(); }

  void step() {
    bend();
    if (below(20) == 0) {
      AboutRecord about = {};
      loadedEntry()(filterSelectorAbout, &about, &host_->data, &host_->result);
    }
    if (below(4) == 0) {
      host_->run();
    } else {
      const std::int16_t selectors[] = {-1, 1, 2, 3, 3, 4, 5, 6};  // About takes another record
      host_->call(any(selectors));
    }
    host_->checkFences();
    ASSERT_EQ(host_->violations, std::vector<std::string>());
    ASSERT_EQ(host_->readersOpen + host_->writersOpen, 0);
    ASSERT_LE(host_->liveHandles(), 4);
    if (below(12) == 0) renew();
  }

 private:
  int below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
  template <typename T, std::size_t n>
  T any(const T (&values)[n]) {
    return values[below(static_cast<int>(n))];
  }

  void renew() {
    const int depths[] = {8, 16, 32};
    host_ = std::make_unique<TestHost>(1 + below(24), 1 + below(24), 1 + below(5), any(depths), loadedEntry());
    host_->fillWithPattern(static_cast<unsigned>(random_()));
    host_->rowPadding = below(3) * 4;
  }

  std::int16_t coordinate() { return static_cast<std::int16_t>(below(27) - 1); }

  Script script() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    const double values[] = {0, -1, 1, 0.3, 1.5, 3, 100, 255, 1e-40, 1e300, -1e300, inf, -inf, std::nan("")};
    const DescriptorTypeID types[] = {typeFloat, typeBoolean, typeInteger};
    Script result;
    for (int i = below(30); i > 0; --i) {
      const int position = below(25);
      const DescriptorKeyID key = position < 24 ? scriptKeys[position].code : fourCharacters("JUNK");
      // Only a radius of a few pixels, or one that nothing has room for: what lies between is honest work for hours.
      double value = any(values);
      if (position >= 5 && position < 10 && value > 3 && value < 1e9) value = 2;
      const DescriptorTypeID type = any(types);
      if (type != typeFloat && !(value > -1e9 && value < 1e9)) value = 7;
      result.push_back({key, type, type == typeBoolean ? below(2) * 255.0 : value});
    }
    return result;
  }

  void bend() {
    TestHost& h = *host_;
    h.failAt = below(3) == 0 ? static_cast<int>(h.calls.size()) + below(50) : -1;
    const OSErr codes[] = {-1, 1, userCanceledErr, errMissingParameter, paramErr};
    h.failCode = any(codes);
    h.record.advanceState = below(30) == 0 ? nullptr : TestHost(1, 1, 3, 8).record.advanceState;
    h.endlessReader = below(40) == 0;
    h.relocatesBlocks = below(3) == 0;
    h.bufferFault = static_cast<BufferFault>(below(9));
    h.bufferFaultAt = below(4) == 0 ? static_cast<int>(h.advances.size()) + below(6) : -1;
    h.handles.numHandleProcs = static_cast<std::int16_t>(below(20) == 0 ? 7 : 8);
    h.record.handleProcs = below(30) == 0 ? nullptr : &h.handles;
    h.record.sSPBasic = below(30) == 0 ? nullptr : &h.basic;
    h.missingSuite = below(30) == 0 ? kPSBufferSuite : nullptr;
    h.record.descriptorParameters = below(15) == 0 ? nullptr : &h.scripting;
    h.scripting.playInfo = static_cast<std::int16_t>(below(4));
    h.reading.numReadDescriptorProcs = static_cast<std::int16_t>(below(20) == 0 ? 3 : 18);
    const int depths[] = {0, 1, 7, 64, -8};
    h.record.depth = below(15) == 0 ? any(depths) : h.depth;
    h.record.planes = static_cast<std::int16_t>(below(15) == 0 ? below(9) - 4 : static_cast<int>(h.planes.size()));
    h.record.filterRect = {0, 0, static_cast<std::int16_t>(h.height), static_cast<std::int16_t>(h.width)};
    if (below(3) == 0) h.record.filterRect = {coordinate(), coordinate(), coordinate(), coordinate()};
    h.record.bigDocumentData = below(4) == 0 ? &h.big : nullptr;
    h.big.PluginUsing32BitCoordinates = below(2);
    h.big.filterRect32 = {coordinate(), coordinate(), coordinate(), coordinate()};
    if (below(3) == 0) h.play(script());
    if (below(8) == 0 && h.record.parameters != nullptr) h.replaceParameters();
    if (below(20) == 0 && h.record.parameters != nullptr) {
      h.disposeHandle(h.record.parameters);
      h.record.parameters = nullptr;
    }
    if (below(20) == 0 && h.data != 0) {
      h.disposeHandle(reinterpret_cast<Handle>(h.data));
      h.data = 0;
    }
  }

  std::mt19937 random_;
  std::unique_ptr<TestHost> host_;
};

TEST(Module, SurvivesAnyOrderOfSelectorsAndFaults) {
  RandomHost host(20240607);
  for (int i = 0; i < 4000 && !testing::Test::HasFatalFailure(); ++i) host.step();
}

}  // namespace
