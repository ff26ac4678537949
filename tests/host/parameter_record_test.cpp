// The stored record, its defaults, and its way in from script descriptors and out. Where a field lies is asserted in
// the header.
#include "host/parameter_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "host/test_host.h"

namespace {

// A host that has a block and a record, without the entry.
struct Fixture {
  Fixture() { ValidateParameters(&globals); }
  TestHost host{4, 4, 3, 8};
  Globals globals = {&host.result, &host.record, nullptr, nullptr};
  unsigned char* block() { return host.block(host.record.parameters); }

  double stored(const ScriptKey& key) {
    double number = 0;
    std::int32_t integer = 0;
    std::memcpy(&number, block() + key.offset, sizeof number);
    std::memcpy(&integer, block() + key.offset, sizeof integer);
    return key.kind == ScriptKind::Flag ? block()[key.offset] : key.kind == ScriptKind::Integer ? integer : number;
  }
  // The record as a script.
  Script content() {
    Script script;
    for (const ScriptKey& key : scriptKeys) script.push_back({key.code, descriptorType(key.kind), stored(key)});
    return script;
  }
  void expectManners() { EXPECT_EQ(host.allViolations(), std::vector<std::string>()); }
};

TEST(ParameterRecordTest, DefaultsAreAllThatIsWritten) {
  Fixture f;
  const std::vector<double> defaults = {100, 100, 100, 100, 100, 3, 3, 3, 3,   3, 255, 10,
                                        10,  10,  10,  0,   1,   1, 1, 1, 100, 0, 1,   10};
  std::vector<double> stored;
  for (const ScriptKey& key : scriptKeys) stored.push_back(f.stored(key));
  EXPECT_EQ(stored, defaults);
  for (const int at : {0, 9, 15, 141, 143, 154, 155}) EXPECT_EQ(f.block()[at], 0xA5) << at;
  f.expectManners();
}

TEST(ParameterRecordTest, ReadsWhatTheScriptHolds) {
  Fixture f;
  f.host.play({{fourCharacters("WDTH"), typeInteger, -5},
               {fourCharacters("JUNK"), typeFloat, 7},
               {fourCharacters("RAD2"), typeFloat, 1e300},
               {fourCharacters("LUMI"), typeBoolean, 0},
               {fourCharacters("CON1"), typeFloat, 1},
               {fourCharacters("CON1"), typeFloat, 2},      // the last one counts
               {fourCharacters("THR1"), typeInteger, 3}});  // of the wrong type: stays
  Script expected = f.content();
  expected[23].number = -5;
  expected[6].number = 1e300;
  expected[22].number = 0;
  expected[0].number = 2;
  EXPECT_EQ(ReadScriptParams(&f.globals), errMissingParameter);
  EXPECT_EQ(f.host.result, 0);
  EXPECT_EQ(f.content(), expected);
  // Without the cross width, and with the last three backwards.
  std::vector<DescriptorKeyID> keys;
  for (const ScriptKey& key : scriptKeys) keys.push_back(key.code);
  keys.pop_back();
  std::reverse(keys.end() - 3, keys.end());
  EXPECT_EQ(f.host.expectedKeys, keys);
  EXPECT_EQ(f.host.scripting.descriptor, nullptr);
  EXPECT_EQ(f.host.liveHandles(), 1);
  f.expectManners();
}

TEST(ParameterRecordTest, ShowDialogFollowsPlayInfoWhereThereAreDescriptors) {
  for (std::int16_t play = 0; play < 3; ++play) {
    Fixture f;
    f.host.scripting.playInfo = play;
    EXPECT_EQ(ReadScriptParams(&f.globals), 0);  // nothing to play
    EXPECT_EQ(f.block()[9], play == 1);
    f.block()[9] = 55;
    f.host.record.descriptorParameters = nullptr;
    EXPECT_EQ(ReadScriptParams(&f.globals), 0);
    EXPECT_EQ(f.block()[9], 55);
  }
}

TEST(ParameterRecordTest, ReaderWithoutAnEnd) {
  Fixture f;
  f.host.endlessReader = true;
  f.host.play({{fourCharacters("RAD1"), typeFloat, 4}});
  ReadScriptParams(&f.globals);
  EXPECT_EQ(std::count(f.host.calls.begin(), f.host.calls.end(), HostCall::GetKey), 10000);
  EXPECT_EQ(f.stored(scriptKeys[5]), 4);
  f.expectManners();
}

TEST(ParameterRecordTest, ReadsBackWhatItWroteWhileBlocksMove) {
  Fixture f;
  f.host.relocatesBlocks = true;
  Script script = f.content();
  for (std::size_t i = 0; i < script.size(); ++i) {
    const auto number = static_cast<double>(i);
    script[i].number = script[i].type == typeBoolean ? static_cast<double>(i % 2) : number / 7 - 1;
  }
  script[3].number = std::numeric_limits<double>::infinity();
  script[23].number = -2147483648.0;
  f.host.play(script);
  ReadScriptParams(&f.globals);
  EXPECT_EQ(f.content(), script);

  f.host.play({});  // what is there is replaced
  EXPECT_EQ(WriteScriptParams(&f.globals), 0);
  EXPECT_EQ(f.host.scripting.recordInfo, plugInDialogOptional);
  EXPECT_EQ(f.host.recorded(), script);
  EXPECT_EQ(f.host.liveHandles(), 2);
  std::memset(f.block(), 0, 160);
  EXPECT_EQ(ReadScriptParams(&f.globals), 0);
  EXPECT_EQ(f.content(), script);
  EXPECT_EQ(f.host.liveHandles(), 1);
  f.expectManners();
}

TEST(ParameterRecordTest, NothingIsWrittenWithoutARecord) {
  Fixture f;
  f.host.disposeHandle(f.host.record.parameters);
  f.host.record.parameters = nullptr;
  const std::size_t calls = f.host.calls.size();
  EXPECT_EQ(WriteScriptParams(&f.globals), 0);
  EXPECT_EQ(f.host.calls.size(), calls);
}

}  // namespace
