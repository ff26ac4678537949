// Whole runs against the front door, on the linked entry and on the module as a host loads it.
#include "host/filter_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <functional>

#include "api/orbel.h"
#include "host/script_keys.h"
#include "host/test_host.h"
#include "primitives/primitives.h"
#include "support/strong_settings.h"

namespace {

Script scriptOf(const orbel_settings& settings) {
  Script script;
  for (const ScriptKey& key : scriptKeys) {
    double value = 0;
    EXPECT_EQ(orbel_settings_get(&settings, nameOf(key).text, &value), ORBEL_OK);
    script.push_back({key.code, descriptorType(key.kind), value});
  }
  return script;
}
const Script script = scriptOf(strongSettings(false));

void expectManners(TestHost& host) { EXPECT_EQ(host.allViolations(), std::vector<std::string>()); }

// Runs, and looks whether the document then holds what the front door makes of the rectangle, and what it held
// elsewhere.
void expectEqualized(TestHost& host, VRect rect, const orbel_settings& settings) {
  const orbel_samples type = host.depth == 8 ? ORBEL_UINT8 : host.depth == 16 ? ORBEL_UINT16_HOST : ORBEL_FLOAT32;
  const std::ptrdiff_t row = std::ptrdiff_t{host.sampleBytes()} * host.width;
  auto expected = host.planes;
  orbel_picture part;
  orbel_picture_planar(&part, sizeof part, type, rect.right - rect.left, rect.bottom - rect.top, 3, nullptr, row);
  for (std::size_t c = 0; c < 3; ++c) part.base[c] = &expected[c][0] + rect.top * row + rect.left * host.sampleBytes();
  ASSERT_EQ(orbel_equalize(&settings, &part, &part, nullptr), ORBEL_OK);

  EXPECT_EQ(host.run(), 0);
  expectManners(host);
  EXPECT_TRUE(host.planes == expected);
}

PluginMainProc entryOf(bool loaded) { return loaded ? loadedEntry() : linkedEntry(); }

struct Layout {
  int planes, rowPadding, addressOffset;
  VRect rect;
  bool wide = false;
  bool entersAgain = false;
  IppiSize document = {37, 29};
};

class Run : public testing::TestWithParam<std::tuple<bool, int>> {};  // loaded, depth

TEST_P(Run, GivesTheFrontDoorsPictureOfWhatIsSelected) {
  const auto [loaded, depth] = GetParam();
  const Layout layouts[] = {{3, 0, 0, {0, 0, 29, 37}},
                            {5, 3, 1, {0, 0, 29, 37}, true},
                            {4, 1, 0, {3, 5, 20, 30}},
                            {4, 1, 0, {3, 5, 20, 30}, true, true},
                            {3, 1, 3, {0, 0, 1, 1}},
                            {4, 0, 1, {28, 36, 29, 37}},
                            {3, 2, 0, {7, 0, 8, 37}, true},
                            {3, 0, 0, {0, 0, 77, 131}, false, false, {131, 77}},
                            {3, 0, 0, {0, 0, 300, 9}, false, false, {9, 300}}};
  for (int i = 0; i < 4 * static_cast<int>(std::size(layouts)); ++i) {
    const Layout& layout = layouts[i / 4];
    orbel_settings settings = strongSettings(i % 2 != 0);
    settings.half = i % 4 > 1 ? 1 : 0;
    SCOPED_TRACE(i);
    TestHost host(layout.document.width, layout.document.height, layout.planes, depth, entryOf(loaded));
    host.rowPadding = layout.rowPadding * host.sampleBytes();
    host.addressOffset = layout.addressOffset * (depth == 32 ? 4 : 1);  // odd where samples may lie at odd addresses
    host.fillWithPattern(3);
    host.select(layout.rect, layout.wide);
    host.play(scriptOf(settings));
    host.entersAgain = layout.entersAgain;
    expectEqualized(host, layout.rect, settings);
    EXPECT_EQ(host.lockBalance, 0);
    EXPECT_EQ(host.liveHandles(), 3);  // the block, the record, the recorded descriptor
    EXPECT_EQ(host.recorded().size(), 24U);
    const int last = layout.planes - 1;
    const std::vector<std::array<int, 4>> requests = {{0, 0, 0, last}, {1, 1, 0, last}, {2, 2, 0, last},
                                                      {2, 2, 0, 0},    {2, 2, 1, 1},    {2, 2, 2, 2}};
    EXPECT_EQ(host.advances, requests);
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Run, testing::Combine(testing::Bool(), testing::Values(8, 16, 32)));

TEST(FilterRun, KnowsOneRoundingWhateverTheHostHasSet) {
  std::vector<std::vector<unsigned char>> expected;
  for (const int rounding : {FE_TONEAREST, FE_UPWARD}) {
    TestHost host(40, 37, 3, 32);
    host.fillWithPattern(5);
    host.play(script);
    std::fesetround(rounding);
    const std::int16_t code = host.run();
    const volatile float one = 1;
    const bool roundsUp = one + 1e-9F > one;
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(roundsUp, rounding == FE_UPWARD) << "left changed to the host";
    EXPECT_EQ(code, 0);
    if (rounding == FE_TONEAREST) expected = host.planes;
    EXPECT_EQ(host.planes, expected);
  }
}

TEST(FilterRun, TheStoredRecordRunsInAnotherHandleAndSession) {
  TestHost host(16, 16, 3, 16);
  host.fillWithPattern(1);
  host.play(script);
  EXPECT_EQ(host.call(filterSelectorParameters), 0);
  EXPECT_EQ(host.block(host.record.parameters)[9], 1);  // the dialog that a host would show
  host.replaceParameters();
  expectEqualized(host, {0, 0, 16, 16}, strongSettings(false));
  host.replaceParameters();
  host.disposeHandle(reinterpret_cast<Handle>(host.data));
  host.data = 0;
  host.disposeHandle(host.scripting.descriptor);
  host.scripting.descriptor = nullptr;
  expectEqualized(host, {0, 0, 16, 16}, strongSettings(false));
}

TEST(FilterRun, NeedsNeitherDescriptorsNorUnlocking) {
  TestHost host(12, 9, 3, 8);
  host.record.descriptorParameters = nullptr;
  host.handles.unlockProc = nullptr;
  EXPECT_EQ(host.run(), 0);
  expectManners(host);
}

// ---- What isn't served, and what hosts do wrong

struct Fault {
  std::string name;
  std::function<void(TestHost&)> bend;
  int code;
  bool rectanglesSet;
};

std::function<void(TestHost&)> selecting(VRect rect, bool wide) {
  return [=](TestHost& h) { h.select(rect, wide); };
}

std::vector<Fault> faults() {
  std::vector<Fault> list = {
      {"TwoPlanes", [](TestHost& h) { h.record.planes = 2; }, filterBadMode, false},
      {"NegativePlanes", [](TestHost& h) { h.record.planes = -3; }, filterBadMode, false},
      {"Bitmap", [](TestHost& h) { h.record.depth = 1; }, filterBadMode, false},
      {"OddDepth", [](TestHost& h) { h.record.depth = 64; }, filterBadMode, false},
      {"NoBasicSuite", [](TestHost& h) { h.record.sSPBasic = nullptr; }, errPlugInHostInsufficient, false},
      {"NoAcquire", [](TestHost& h) { h.basic.AcquireSuite = nullptr; }, errPlugInHostInsufficient, false},
      {"NoPortsSuite", [](TestHost& h) { h.missingSuite = kPSChannelPortsSuite; }, errPlugInHostInsufficient, false},
      {"RefusedSuiteWithAddress",
       [](TestHost& h) {
         h.missingSuite = kPSBufferSuite;
         h.suiteRefusedWithAddress = true;
       },
       errPlugInHostInsufficient, false},
      {"NoHandleProcs", [](TestHost& h) { h.record.handleProcs = nullptr; }, memFullErr, false},
      {"NoLockProc", [](TestHost& h) { h.handles.lockProc = nullptr; }, memFullErr, false},
      {"RecordWithoutAddress",
       [](TestHost& h) {
         h.record.parameters = h.newHandle(160);
         *h.record.parameters = nullptr;
       },
       memFullErr, false},
      {"NoAdvanceState", [](TestHost& h) { h.record.advanceState = nullptr; }, errPlugInHostInsufficient, true},
      {"RectangleOutside", [](TestHost& h) { h.record.filterRect.right = 13; }, paramErr, true},
      {"BeyondCounting", selecting({-2147483647, -2147483647, 2147483647, 2147483647}, true), -1, false},
      {"BeyondMemory", selecting({0, 0, 300000, 300000}, true), -1, false},
      {"EmptyRectangle", selecting({4, 4, 4, 8}, false), noErr, true},
      {"ReversedRectangle", selecting({8, 2, 3, 4}, false), noErr, true}};
  for (const BufferFault& fault : bufferFaults) {
    const bool isInput = std::string(fault.name).find("In") != std::string::npos;
    const auto bend = [&fault, isInput](TestHost& h) {
      h.bufferFault = &fault;
      h.bufferFaultAt = isInput ? 2 : 3;
    };
    list.push_back({fault.name, bend, errPlugInHostInsufficient, true});
  }
  return list;
}

class Refused : public testing::TestWithParam<Fault> {};

TEST_P(Refused, WithItsCodeAndAnUntouchedDocument) {
  for (const bool loaded : {false, true}) {
    TestHost host(12, 9, 3, 8, entryOf(loaded));
    host.fillWithPattern(2);
    host.play(script);
    const auto before = host.planes;
    GetParam().bend(host);
    const Handle own = host.record.parameters;
    EXPECT_EQ(host.call(filterSelectorStart), GetParam().code);
    EXPECT_EQ(host.planes, before);
    EXPECT_EQ(host.record.inRect.right != 0 || host.record.inRect.bottom != 0, GetParam().rectanglesSet);
    EXPECT_TRUE(own == nullptr || own == host.record.parameters) << "replaced";
    if (GetParam().rectanglesSet) {
      EXPECT_EQ(host.call(filterSelectorContinue), 0);
      EXPECT_EQ(host.record.inRect.right, 0);
    }
    expectManners(host);
  }
}

INSTANTIATE_TEST_SUITE_P(Faults, Refused, testing::ValuesIn(faults()),
                         [](const auto& fault) { return fault.param.name; });

int codeAfterFailing(HostCall call) {
  switch (call) {
    case HostCall::NewHandle:
    case HostCall::Lock:
      return memFullErr;
    case HostCall::Acquire:
      return errPlugInHostInsufficient;
    case HostCall::CloseReader:
    case HostCall::Advance:
      return userCanceledErr;
    default:
      return noErr;
  }
}

// Every call that a run makes and that can fail, failed in turn.
TEST(FilterRun, EachHostCallFailingInTurn) {
  for (const bool loaded : {false, true}) {
    for (int at = 0;; ++at) {
      TestHost host(12, 9, 3, 8, entryOf(loaded));
      host.fillWithPattern(2);
      const auto before = host.planes;
      host.play(script);
      host.entersAgain = loaded;  // which changes nothing
      host.failAt = at;
      const std::int16_t code = host.run();
      if (static_cast<int>(host.calls.size()) <= at) {
        EXPECT_EQ(code, 0);
        EXPECT_GT(at, 60);
        break;
      }
      const HostCall failed = host.calls[static_cast<std::size_t>(at)];
      SCOPED_TRACE(testing::Message() << "call " << at << " of kind " << static_cast<int>(failed));
      EXPECT_EQ(code, codeAfterFailing(failed));
      const auto advances = std::count(host.calls.begin(), host.calls.begin() + at + 1, HostCall::Advance);
      if (code != 0) {
        EXPECT_EQ(static_cast<std::ptrdiff_t>(host.advances.size()), advances) << "it went on";
        EXPECT_TRUE(advances > 4 || host.planes == before);
      }
      expectManners(host);
      // The host goes on with another run: nothing of the failed one is in the way, unless a suite is missing.
      EXPECT_EQ(host.run(), failed == HostCall::Acquire ? errPlugInHostInsufficient : 0);
      expectManners(host);
      EXPECT_LE(host.liveHandles(), 3);
    }
  }
}

// ---- The entry

TEST(Entry, SelectorsOutsideTheRun) {
  TestHost host(4, 4, 3, 8);
  for (const int selector : {6, -1, 32767}) EXPECT_EQ(host.call(static_cast<std::int16_t>(selector)), 0);
  EXPECT_EQ(host.lockBalance, 0);
  EXPECT_EQ(host.liveHandles(), 2);
  EXPECT_TRUE(host.advances.empty());
  host.record.inRect = host.record.outRect = {1, 2, 3, 4};
  EXPECT_EQ(host.call(filterSelectorContinue), 0);
  EXPECT_EQ(host.record.inRect.right, 0);
  EXPECT_EQ(host.record.outRect.bottom, 0);
  expectManners(host);
}

TEST(Entry, NeitherAboutNorNullArgumentsWriteAnything) {
  TestHost host(4, 4, 3, 8);
  AboutRecord about = {};
  std::int16_t result = 55;
  std::intptr_t data = 0;
  linkedEntry()(filterSelectorAbout, &about, &data, &result);
  linkedEntry()(filterSelectorAbout, &about, nullptr, nullptr);
  for (std::int16_t selector = 0; selector < 7; ++selector) {
    linkedEntry()(selector, nullptr, &data, &result);
    if (selector == filterSelectorAbout) continue;
    linkedEntry()(selector, &host.record, nullptr, &result);
    linkedEntry()(selector, &host.record, &data, nullptr);
  }
  EXPECT_EQ(result, 55);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(Entry, AnExceptionBecomesMinusOne) {
  TestHost host(4, 4, 3, 8);
  host.call(filterSelectorPrepare);
  host.record.advanceState = []() -> OSErr { throw 1; };
  EXPECT_EQ(host.call(filterSelectorStart), -1);
}

}  // namespace
