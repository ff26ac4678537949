// Whole runs against the equalizer called directly, on the linked entry and on the module as a host loads it.
#include "host/filter_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>

#include "equalizer/band_equalizer.h"
#include "host/test_host.h"
#include "image/kiv_image.h"

namespace {

using testing::Values;

struct Setting {
  const char* key;
  DescriptorTypeID type;
  double value;
};
constexpr Setting settings[] = {{"CON1", typeFloat, 150}, {"CON2", typeFloat, 50},  {"RAD1", typeFloat, 1.5},
                                {"RAD2", typeFloat, 1},   {"EDG1", typeBoolean, 1}, {"EDG2", typeBoolean, 0},
                                {"LUMI", typeBoolean, 0}, {"FCTR", typeFloat, 90},  {"HALF", typeBoolean, 0},
                                {"WDTH", typeInteger, 1}};

Script script() {
  Script values;
  for (const Setting& s : settings) {
    DescriptorKeyID key = 0;
    for (int i = 0; i < 4; ++i) key = key << 8 | static_cast<unsigned char>(s.key[i]);
    values.push_back({key, s.type, s.value});
  }
  return values;
}

OrbelBandEqualizerGuiParams parameters() {
  OrbelBandEqualizerGuiParams p = {};
  for (int i = 0; i < 5; ++i) {
    p.contrast[i] = 100;
    p.radius[i] = 3;
    p.threshold[i] = i == 0 ? 255 : 10;
    p.edge[i] = i != 1;
  }
  p.contrast[0] = 150;
  p.contrast[1] = 50;
  p.radius[0] = 1.5F;
  p.radius[1] = 1;
  p.factor = 90;
  p.width = 1;
  return p;
}

// What the document should hold after a run over rect.
std::vector<std::vector<double>> expectedPlanes(const TestHost& host, VRect rect) {
  const float white = host.depth == 8 ? 255.0F : 32768.0F;
  KivImage image(rect.right - rect.left, rect.bottom - rect.top, 3);
  for (int plane = 0; plane < 3; ++plane) {
    for (int y = rect.top; y < rect.bottom; ++y) {
      for (int x = rect.left; x < rect.right; ++x) {
        const auto sample = static_cast<float>(host.sample(plane, x, y));
        *image.At(plane, x - rect.left, y - rect.top) = host.depth == 32 ? sample : sample * (1.0F / white);
      }
    }
  }
  PS_Database unused = {};
  OrbelBandEqualizerGuiParams p = parameters();
  OrbelBandEqualizer(unused, p, image);
  std::vector<std::vector<double>> planes;
  for (int plane = 0; plane < static_cast<int>(host.planes.size()); ++plane) {
    auto& samples = planes.emplace_back();
    for (int y = 0; y < host.height; ++y) {
      for (int x = 0; x < host.width; ++x) {
        const bool inside = plane < 3 && y >= rect.top && y < rect.bottom && x >= rect.left && x < rect.right;
        const float value = inside ? *image.At(plane, x - rect.left, y - rect.top) : 0;
        const double most = host.depth == 8 ? 255 : 65535;
        samples.push_back(!inside ? host.sample(plane, x, y)
                          : host.depth == 32
                              ? static_cast<double>(value)
                              : std::clamp(std::nearbyint(static_cast<double>(value * white)), 0.0, most));
      }
    }
  }
  return planes;
}

void expectDocument(const TestHost& host, const std::vector<std::vector<double>>& expected) {
  int different = 0;
  for (int plane = 0; plane < static_cast<int>(expected.size()); ++plane) {
    for (int i = 0; i < host.width * host.height && different < 5; ++i) {
      const double sample = host.sample(plane, i % host.width, i / host.width);
      if (sample == expected[static_cast<std::size_t>(plane)][static_cast<std::size_t>(i)]) continue;
      ++different;
      ADD_FAILURE() << "plane " << plane << ", column " << i % host.width << ", row " << i / host.width << ": "
                    << sample << " instead of "
                    << expected[static_cast<std::size_t>(plane)][static_cast<std::size_t>(i)];
    }
  }
}

void expectManners(TestHost& host) {
  host.checkFences();
  EXPECT_EQ(host.violations, std::vector<std::string>());
  EXPECT_EQ(host.readersOpen, 0);
  EXPECT_EQ(host.writersOpen, 0);
}

PluginMainProc entryOf(bool loaded) { return loaded ? loadedEntry() : linkedEntry(); }

class Run : public testing::TestWithParam<std::tuple<bool, int, int, int>> {};  // loaded, depth, planes, row padding

TEST_P(Run, GivesTheEqualizersPicture) {
  const auto [loaded, depth, planes, padding] = GetParam();
  TestHost host(37, 29, planes, depth, entryOf(loaded));
  host.rowPadding = padding;
  host.fillWithPattern(3);
  host.play(script());
  const auto expected = expectedPlanes(host, {0, 0, 29, 37});
  EXPECT_EQ(host.run(), 0);
  expectDocument(host, expected);
  expectManners(host);
  EXPECT_EQ(host.lockBalance, 0);
  EXPECT_EQ(host.liveHandles(), 3);  // the block, the record, the recorded descriptor
  EXPECT_EQ(host.recorded().size(), 24U);
  const int last = planes - 1;
  const std::vector<std::array<int, 4>> requests = {{0, 0, 0, last}, {1, 1, 0, last}, {2, 2, 0, last},
                                                    {2, 2, 0, 0},    {2, 2, 1, 1},    {2, 2, 2, 2}};
  EXPECT_EQ(host.advances, requests);
}

INSTANTIATE_TEST_SUITE_P(Documents, Run,
                         testing::Combine(testing::Bool(), Values(8, 16, 32), Values(3, 4, 5), Values(0, 12)));

class Selection : public testing::TestWithParam<std::tuple<bool, int, bool>> {};  // loaded, depth, wide

TEST_P(Selection, IsAllThatChanges) {
  const auto [loaded, depth, wide] = GetParam();
  for (const VRect rect : {VRect{3, 5, 20, 30}, VRect{0, 0, 1, 1}, VRect{28, 36, 29, 37}, VRect{7, 0, 8, 37}}) {
    TestHost host(37, 29, 4, depth, entryOf(loaded));
    host.rowPadding = 4;
    host.fillWithPattern(5);
    host.play(script());
    const auto narrow = [](std::int32_t c) { return static_cast<std::int16_t>(c); };
    if (wide) {
      host.record.bigDocumentData = &host.big;
      host.big.PluginUsing32BitCoordinates = 1;
      host.big.filterRect32 = rect;
      host.record.filterRect = {};
    } else {
      host.record.filterRect = {narrow(rect.top), narrow(rect.left), narrow(rect.bottom), narrow(rect.right)};
    }
    const auto expected = expectedPlanes(host, rect);
    EXPECT_EQ(host.run(), 0);
    expectDocument(host, expected);
    expectManners(host);
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Selection, testing::Combine(testing::Bool(), Values(8, 16, 32), testing::Bool()));

TEST(FilterRun, HostRowsAtOddAddresses) {
  for (const int depth : {8, 16, 32}) {
    TestHost host(19, 7, 3, depth);
    host.addressOffset = depth == 32 ? 4 : 1;
    host.rowPadding = depth == 32 ? 4 : 2;
    host.fillWithPattern(6);
    host.play(script());
    const auto expected = expectedPlanes(host, {0, 0, 7, 19});
    EXPECT_EQ(host.run(), 0);
    expectDocument(host, expected);
    expectManners(host);
  }
}

TEST(FilterRun, KnowsOneRoundingWhateverTheHostHasSet) {
  std::vector<std::vector<unsigned char>> expected;
  for (const bool strange : {false, true}) {
    TestHost host(40, 37, 3, 32);
    host.fillWithPattern(5);
    host.play(script());
    if (strange) std::fesetround(FE_UPWARD);
    const std::int16_t code = host.run();
    EXPECT_EQ(std::fegetround(), strange ? FE_UPWARD : FE_TONEAREST) << "left changed to the host";
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(code, 0);
    if (!strange) expected = host.planes;
    EXPECT_EQ(host.planes, expected);
  }
}

TEST(FilterRun, WithoutADescriptorTheStoredRecordRuns) {
  TestHost host(16, 16, 3, 16);
  host.fillWithPattern(1);
  host.play(script());
  const auto first = expectedPlanes(host, {0, 0, 16, 16});
  EXPECT_EQ(host.run(), 0);
  expectDocument(host, first);
  // The same record once more, in another handle and another session's block.
  host.replaceParameters();
  host.disposeHandle(reinterpret_cast<Handle>(host.data));
  host.data = 0;
  host.disposeHandle(host.scripting.descriptor);
  host.scripting.descriptor = nullptr;
  const auto second = expectedPlanes(host, {0, 0, 16, 16});
  EXPECT_EQ(host.run(), 0);
  expectDocument(host, second);
  expectManners(host);
}

TEST(FilterRun, ParametersReplacedBetweenSelectors) {
  TestHost host(16, 16, 3, 8);
  host.fillWithPattern(1);
  host.play(script());
  const auto expected = expectedPlanes(host, {0, 0, 16, 16});
  EXPECT_EQ(host.call(filterSelectorParameters), 0);
  EXPECT_EQ(host.block(host.record.parameters)[9], 1);
  host.replaceParameters();
  EXPECT_EQ(host.call(filterSelectorPrepare), 0);
  host.replaceParameters();
  EXPECT_EQ(host.run(), 0);
  expectDocument(host, expected);
  expectManners(host);
}

// ---- What isn't served, and what hosts do wrong

struct Fault {
  const char* name;
  std::function<void(TestHost&)> bend;
  int code;
  bool rectanglesSet;
};

class Refused : public testing::TestWithParam<Fault> {};

TEST_P(Refused, WithItsCodeAndAnUntouchedDocument) {
  for (const bool loaded : {false, true}) {
    TestHost host(12, 9, 3, 8, entryOf(loaded));
    host.fillWithPattern(2);
    host.play(script());
    const auto before = host.planes;
    GetParam().bend(host);
    EXPECT_EQ(host.call(filterSelectorStart), GetParam().code);
    EXPECT_EQ(host.planes.front(), before.front());
    EXPECT_EQ(host.record.inRect.right != 0 || host.record.inRect.bottom != 0, GetParam().rectanglesSet);
    if (GetParam().rectanglesSet) {
      EXPECT_EQ(host.call(filterSelectorContinue), 0);
      EXPECT_EQ(host.record.inRect.right, 0);
    }
    expectManners(host);
  }
}

void shortenPlanes(TestHost& host, int count) {
  host.planes.resize(static_cast<std::size_t>(std::max(count, 0)));
  host.record.planes = static_cast<std::int16_t>(count);
}
std::function<void(TestHost&)> buffer(BufferFault fault, int at) {
  return [=](TestHost& host) {
    host.bufferFault = fault;
    host.bufferFaultAt = at;
  };
}

const Fault faults[] = {
    {"NoPlanes", [](TestHost& h) { shortenPlanes(h, 1), h.record.planes = 0; }, filterBadMode, false},
    {"NegativePlanes", [](TestHost& h) { h.record.planes = -3; }, filterBadMode, false},
    {"OnePlane", [](TestHost& h) { shortenPlanes(h, 1); }, filterBadMode, false},
    {"TwoPlanes", [](TestHost& h) { shortenPlanes(h, 2); }, filterBadMode, false},
    {"Bitmap", [](TestHost& h) { h.record.depth = 1; }, filterBadMode, false},
    {"NoDepth", [](TestHost& h) { h.record.depth = 0; }, filterBadMode, false},
    {"OddDepth", [](TestHost& h) { h.record.depth = 64; }, filterBadMode, false},
    {"NoBasicSuite", [](TestHost& h) { h.record.sSPBasic = nullptr; }, errPlugInHostInsufficient, false},
    {"NoAcquire", [](TestHost& h) { h.basic.AcquireSuite = nullptr; }, errPlugInHostInsufficient, false},
    {"NoPortsSuite", [](TestHost& h) { h.missingSuite = kPSChannelPortsSuite; }, errPlugInHostInsufficient, false},
    {"NoBufferSuite", [](TestHost& h) { h.missingSuite = kPSBufferSuite; }, errPlugInHostInsufficient, false},
    {"RefusedSuiteWithAddress", [](TestHost& h) { h.missingSuite = kPSBufferSuite, h.suiteRefusedWithAddress = true; },
     errPlugInHostInsufficient, false},
    {"NoHandleProcs", [](TestHost& h) { h.record.handleProcs = nullptr; }, memFullErr, false},
    {"SevenHandleProcs", [](TestHost& h) { h.handles.numHandleProcs = 7; }, memFullErr, false},
    {"YoungerHandleProcs", [](TestHost& h) { h.handles.handleProcsVersion = 2; }, memFullErr, false},
    {"NoLockProc", [](TestHost& h) { h.handles.lockProc = nullptr; }, memFullErr, false},
    {"RecordWithoutAddress",
     [](TestHost& h) {
       h.record.parameters = h.newHandle(160);
       *h.record.parameters = nullptr;
     },
     memFullErr, false},
    {"NoAdvanceState", [](TestHost& h) { h.record.advanceState = nullptr; }, errPlugInHostInsufficient, true},
    {"RectangleOutside", [](TestHost& h) { h.record.filterRect.right = 13; }, paramErr, true},
    {"TooLarge",
     [](TestHost& h) {
       h.record.bigDocumentData = &h.big;
       h.big = {1, {}, {-2147483647, -2147483647, 2147483647, 2147483647}, {}, {}, {}, {}, {}};
     },
     -1, false},
    {"Huge",
     [](TestHost& h) {
       h.record.bigDocumentData = &h.big;
       h.big = {1, {}, {0, 0, 300000, 300000}, {}, {}, {}, {}, {}};
     },
     -1, false},
    {"EmptyRectangle",
     [](TestHost& h) {
       h.record.filterRect = {4, 4, 4, 8};
     },
     noErr, true},
    {"ReversedRectangle",
     [](TestHost& h) {
       h.record.filterRect = {8, 2, 3, 4};
     },
     noErr, true},
    {"NullInput", buffer(BufferFault::NullIn, 1), errPlugInHostInsufficient, true},
    {"ShortInput", buffer(BufferFault::ShortIn, 2), errPlugInHostInsufficient, true},
    {"NegativeInput", buffer(BufferFault::NegativeIn, 0), errPlugInHostInsufficient, true},
    {"ZeroInput", buffer(BufferFault::ZeroIn, 0), errPlugInHostInsufficient, true},
    {"NullOutput", buffer(BufferFault::NullOut, 3), errPlugInHostInsufficient, true},
    {"ShortOutput", buffer(BufferFault::ShortOut, 3), errPlugInHostInsufficient, true},
    {"NegativeOutput", buffer(BufferFault::NegativeOut, 3), errPlugInHostInsufficient, true},
    {"ZeroOutput", buffer(BufferFault::ZeroOut, 3), errPlugInHostInsufficient, true},
};

INSTANTIATE_TEST_SUITE_P(Faults, Refused, testing::ValuesIn(faults),
                         [](const auto& fault) { return std::string(fault.param.name); });

TEST(FilterRun, TablesThatAreMissingOrOfAnotherKindLetItRunOnTheRecord) {
  const std::function<void(TestHost&)> bends[] = {[](TestHost& h) { h.record.descriptorParameters = nullptr; },
                                                  [](TestHost& h) { h.scripting.readDescriptorProcs = nullptr; },
                                                  [](TestHost& h) { h.scripting.writeDescriptorProcs = nullptr; },
                                                  [](TestHost& h) { h.scripting.descriptorParametersVersion = 1; },
                                                  [](TestHost& h) { h.reading.numReadDescriptorProcs = 17; },
                                                  [](TestHost& h) { h.writing.putScopedObjectProc = nullptr; },
                                                  [](TestHost& h) { h.handles.unlockProc = nullptr; }};
  for (const auto& bend : bends) {
    TestHost host(12, 9, 3, 8);
    bend(host);
    EXPECT_EQ(host.run(), 0);
    expectManners(host);
  }
}

// Every call that a run makes and that can fail, failed in turn.
TEST(FilterRun, EachHostCallFailingInTurn) {
  for (const bool loaded : {false, true}) {
    int failures = 0;
    for (int at = 0;; ++at) {
      TestHost host(12, 9, 3, 8, entryOf(loaded));
      host.fillWithPattern(2);
      const auto before = host.planes;
      host.play(script());
      host.failAt = at;
      const std::int16_t code = host.run();
      if (static_cast<int>(host.calls.size()) <= at) {
        EXPECT_EQ(code, 0);
        break;
      }
      ++failures;
      SCOPED_TRACE(testing::Message() << "call " << at << " of kind "
                                      << static_cast<int>(host.calls[static_cast<std::size_t>(at)]));
      const auto advancesBefore = std::count(host.calls.begin(), host.calls.begin() + at, HostCall::Advance);
      switch (host.calls[static_cast<std::size_t>(at)]) {
        case HostCall::NewHandle:
        case HostCall::Lock:
          EXPECT_EQ(code, memFullErr);
          break;
        case HostCall::Acquire:
          EXPECT_EQ(code, errPlugInHostInsufficient);
          break;
        case HostCall::CloseReader:
          EXPECT_EQ(code, userCanceledErr);
          EXPECT_TRUE(host.advances.empty());
          EXPECT_EQ(host.record.inRect.right, 0);
          break;
        case HostCall::Advance:
          EXPECT_EQ(code, userCanceledErr);
          EXPECT_EQ(host.advances.size(), static_cast<std::size_t>(advancesBefore + 1));
          break;
        default:
          EXPECT_EQ(code, 0);
          break;
      }
      const bool isLateLock = host.calls[static_cast<std::size_t>(at)] == HostCall::Lock && advancesBefore == 6;
      const bool isUntouched = code != 0 && advancesBefore <= 3 && !isLateLock;
      EXPECT_TRUE(!isUntouched || host.planes == before);
      expectManners(host);
      // The host goes on with another run: nothing of the failed one is in the way, unless a suite is missing.
      const bool suiteMissing = code == errPlugInHostInsufficient;
      EXPECT_EQ(host.run(), suiteMissing ? errPlugInHostInsufficient : 0);
      expectManners(host);
      EXPECT_LE(host.liveHandles(), 3);
    }
    EXPECT_GT(failures, 60);
  }
}

// ---- The entry

TEST(Entry, SelectorsOutsideTheRun) {
  for (const bool loaded : {false, true}) {
    TestHost host(4, 4, 3, 8, entryOf(loaded));
    for (const int selector : {6, 7, -1, 32767, -32768}) EXPECT_EQ(host.call(static_cast<std::int16_t>(selector)), 0);
    EXPECT_EQ(host.lockBalance, 0);
    EXPECT_EQ(host.liveHandles(), 2);
    EXPECT_TRUE(host.advances.empty());
    host.record.inRect = host.record.outRect = {1, 2, 3, 4};
    EXPECT_EQ(host.call(filterSelectorContinue), 0);
    EXPECT_EQ(host.record.inRect.right, 0);
    EXPECT_EQ(host.record.outRect.bottom, 0);
    expectManners(host);
  }
}

TEST(Entry, AboutNeedsNoHostAndWritesNoResult) {
  AboutRecord about = {};
  std::int16_t result = 55;
  std::intptr_t data = 0;
  for (const bool loaded : {false, true}) {
    entryOf(loaded)(filterSelectorAbout, &about, &data, &result);
    entryOf(loaded)(filterSelectorAbout, &about, nullptr, nullptr);
  }
  EXPECT_EQ(result, 55);
  EXPECT_EQ(data, 0);
}

TEST(Entry, NullArgumentsWriteNothing) {
  TestHost host(4, 4, 3, 8);
  std::int16_t result = 55;
  std::intptr_t data = 0;
  for (int selector = 0; selector < 7; ++selector) {
    const auto s = static_cast<std::int16_t>(selector);
    linkedEntry()(s, nullptr, &data, &result);
    linkedEntry()(s, nullptr, nullptr, nullptr);
    if (selector == 0) continue;
    linkedEntry()(s, &host.record, nullptr, &result);
    linkedEntry()(s, &host.record, &data, nullptr);
  }
  EXPECT_EQ(result, 55);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(Entry, AnExceptionBecomesMinusOne) {
  for (const bool withResult : {true, false}) {
    TestHost host(4, 4, 3, 8);
    host.call(filterSelectorPrepare);
    host.record.advanceState = []() -> OSErr { throw 1; };
    if (withResult) {
      EXPECT_EQ(host.call(filterSelectorStart), -1);
    } else {
      linkedEntry()(filterSelectorStart, &host.record, &host.data, nullptr);
    }
  }
}

}  // namespace
