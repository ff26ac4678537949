// The stored record, its defaults, and its way in from script descriptors and out.
#include "host/parameter_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "host/test_host.h"

namespace {

// Written down again, by hand: the stored format and the order of writing.
constexpr const char* writingOrder[] = {"CON1", "CON2", "CON3", "CON4", "CON5", "RAD1", "RAD2", "RAD3",
                                        "RAD4", "RAD5", "THR1", "THR2", "THR3", "THR4", "THR5", "EDG1",
                                        "EDG2", "EDG3", "EDG4", "EDG5", "FCTR", "HALF", "LUMI", "WDTH"};
constexpr double defaults[] = {100, 100, 100, 100, 100, 3, 3, 3, 3,   3, 255, 10,
                               10,  10,  10,  0,   1,   1, 1, 1, 100, 0, 1,   10};

DescriptorKeyID keyOf(const char* text) {
  DescriptorKeyID key = 0;
  for (int i = 0; i < 4; ++i) key = key * 256 + static_cast<unsigned char>(text[i]);
  return key;
}

std::vector<DescriptorKeyID> keysOf(std::initializer_list<const char*> texts) {
  std::vector<DescriptorKeyID> keys;
  for (const char* text : texts) keys.push_back(keyOf(text));
  return keys;
}

DescriptorTypeID typeOf(int position) {
  const bool isFlag = (position >= 15 && position <= 19) || position == 21 || position == 22;
  return isFlag ? typeBoolean : position == 23 ? typeInteger : typeFloat;
}

double storedAt(const unsigned char* block, int position) {
  const int flagAt = position == 21 ? 152 : position == 22 ? 153 : 121 + position;
  double number = 0;
  std::int32_t integer = 0;
  if (typeOf(position) == typeBoolean) return block[flagAt];
  if (typeOf(position) == typeInteger) return std::memcpy(&integer, block + 156, 4), integer;
  std::memcpy(&number, block + (position == 20 ? 144 : 16 + 8 * position), 8);
  return number;
}

// A host that has a block and a record, without the entry.
struct Fixture {
  explicit Fixture(int depth = 8) : host(4, 4, 3, depth) { ValidateParameters(&globals); }
  TestHost host;
  Globals globals = {&host.result, &host.record, nullptr, nullptr};
  unsigned char* block() { return host.block(host.record.parameters); }
};

TEST(ParameterRecordTest, DefaultsAreAllThatIsWritten) {
  Fixture f;
  bool named[160] = {};
  for (int i = 0; i < 24; ++i) EXPECT_EQ(storedAt(f.block(), i), defaults[i]) << writingOrder[i];
  for (int i = 16; i < 160; ++i) named[i] = !(i >= 141 && i < 144) && i != 154 && i != 155;
  for (int i = 0; i < 160; ++i) {
    EXPECT_TRUE(named[i] || f.block()[i] == 0xA5) << i;
  }
  f.host.checkFences();
  EXPECT_TRUE(f.host.violations.empty());
}

TEST(ParameterRecordTest, HandleLife) {
  Fixture f;
  const Handle kept = f.host.record.parameters;
  std::memset(f.block(), 1, 160);
  ValidateParameters(&f.globals);
  EXPECT_EQ(f.host.record.parameters, kept);
  EXPECT_EQ(f.block()[20], 1);
  EXPECT_EQ(f.host.result, 0);

  *f.host.record.parameters = nullptr;  // a block without an address, in a handle that the host keeps
  ValidateParameters(&f.globals);
  EXPECT_EQ(f.host.result, memFullErr);
  EXPECT_EQ(f.host.record.parameters, kept);

  Fixture refused;
  refused.host.disposeHandle(refused.host.record.parameters);
  refused.host.record.parameters = nullptr;
  refused.host.failAt = static_cast<int>(refused.host.calls.size());
  ValidateParameters(&refused.globals);
  EXPECT_EQ(refused.host.result, memFullErr);
  EXPECT_EQ(refused.host.record.parameters, nullptr);
}

TEST(ParameterRecordTest, ReadsWhatTheScriptHolds) {
  Fixture f;
  f.host.play({{keyOf("WDTH"), typeInteger, -5},
               {keyOf("JUNK"), typeFloat, 7},
               {keyOf("RAD2"), typeFloat, 1e300},
               {keyOf("LUMI"), typeBoolean, 0},
               {keyOf("CON1"), typeFloat, 1},
               {keyOf("CON1"), typeFloat, 2},      // the last one counts
               {keyOf("THR1"), typeInteger, 3}});  // of the wrong type: stays
  f.block()[9] = 1;
  EXPECT_EQ(ReadScriptParams(&f.globals), errMissingParameter);
  EXPECT_EQ(f.host.result, 0);
  EXPECT_EQ(f.host.expectedKeys,
            keysOf({"CON1", "CON2", "CON3", "CON4", "CON5", "RAD1", "RAD2", "RAD3", "RAD4", "RAD5", "THR1", "THR2",
                    "THR3", "THR4", "THR5", "EDG1", "EDG2", "EDG3", "EDG4", "EDG5", "LUMI", "HALF", "FCTR"}));
  for (int i = 0; i < 24; ++i) {
    const double expected = i == 23 ? -5 : i == 6 ? 1e300 : i == 22 ? 0 : i == 0 ? 2 : defaults[i];
    EXPECT_EQ(storedAt(f.block(), i), expected) << writingOrder[i];
  }
  EXPECT_EQ(f.block()[9], 0);
  EXPECT_EQ(f.host.scripting.descriptor, nullptr);
  EXPECT_EQ(f.host.liveHandles(), 1);
  EXPECT_TRUE(f.host.violations.empty());
}

TEST(ParameterRecordTest, ShowDialogFollowsPlayInfoWhereThereAreDescriptors) {
  for (const int play : {0, 1, 2}) {
    Fixture f;
    f.host.scripting.playInfo = static_cast<std::int16_t>(play);
    EXPECT_EQ(ReadScriptParams(&f.globals), 0);  // nothing to play
    EXPECT_EQ(f.block()[9], play == 1);
    f.block()[9] = 55;
    f.host.record.descriptorParameters = nullptr;
    EXPECT_EQ(ReadScriptParams(&f.globals), 0);
    EXPECT_EQ(f.block()[9], 55);
  }
}

TEST(ParameterRecordTest, CodeOfTheReader) {
  for (const int code : {0, -1715, -50, 7}) {
    Fixture f;
    f.host.play({});
    f.host.failAt = static_cast<int>(f.host.calls.size()) + 2;  // open, first key, close
    f.host.failCode = static_cast<OSErr>(code);
    EXPECT_EQ(ReadScriptParams(&f.globals), code);
    EXPECT_EQ(f.host.result, code == -1715 ? 0 : code);
    EXPECT_EQ(f.host.readersOpen, 0);
  }
}

TEST(ParameterRecordTest, ReaderWithoutAnEnd) {
  Fixture f;
  f.host.endlessReader = true;
  f.host.play({{keyOf("RAD1"), typeFloat, 4}});
  ReadScriptParams(&f.globals);
  EXPECT_EQ(f.host.keysHandedOut, 10000);
  EXPECT_EQ(f.host.readersOpen, 0);
  EXPECT_EQ(storedAt(f.block(), 5), 4);
}

class Written : public testing::TestWithParam<bool> {};

TEST_P(Written, ReadsBackAsItWas) {
  Script script;
  for (int i = 0; i < 24; ++i) {
    const double value = typeOf(i) == typeBoolean ? i % 2 : typeOf(i) == typeInteger ? -2147483648.0 : i / 7.0 - 1;
    script.push_back({keyOf(writingOrder[i]), typeOf(i), value});
  }
  script[3].number = std::numeric_limits<double>::infinity();
  Fixture f;
  f.host.relocatesBlocks = GetParam();
  f.host.play(script);
  ReadScriptParams(&f.globals);
  const std::vector<unsigned char> first(f.block(), f.block() + 160);
  for (int i = 0; i < 24; ++i) EXPECT_EQ(storedAt(first.data(), i), script[static_cast<std::size_t>(i)].number) << i;

  EXPECT_EQ(WriteScriptParams(&f.globals), 0);
  EXPECT_EQ(f.host.scripting.recordInfo, plugInDialogOptional);
  const Script recorded = f.host.recorded();
  ASSERT_EQ(recorded.size(), 24U);
  for (std::size_t i = 0; i < 24; ++i) {
    EXPECT_EQ(recorded[i].key, script[i].key) << i;
    EXPECT_EQ(recorded[i].type, script[i].type) << i;
    EXPECT_EQ(recorded[i].number, script[i].number) << i;
  }
  std::memset(f.block(), 0, 160);
  EXPECT_EQ(ReadScriptParams(&f.globals), 0);
  for (int i = 0; i < 24; ++i) EXPECT_EQ(storedAt(f.block(), i), storedAt(first.data(), i)) << writingOrder[i];
  EXPECT_EQ(f.host.liveHandles(), 1);
  f.host.checkFences();
  EXPECT_TRUE(f.host.violations.empty());
}

INSTANTIATE_TEST_SUITE_P(BlocksStayOrMove, Written, testing::Bool());

TEST(ParameterRecordTest, WritingReplacesTheOldDescriptorAndNeedsARecord) {
  Fixture f;
  f.host.play({});
  WriteScriptParams(&f.globals);
  EXPECT_EQ(f.host.liveHandles(), 2);
  EXPECT_EQ(f.host.recorded().size(), 24U);
  f.host.disposeHandle(f.host.record.parameters);
  f.host.record.parameters = nullptr;
  const std::size_t calls = f.host.calls.size();
  EXPECT_EQ(WriteScriptParams(&f.globals), 0);
  EXPECT_EQ(f.host.calls.size(), calls);
}

}  // namespace
