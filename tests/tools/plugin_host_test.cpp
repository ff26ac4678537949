// The host's side of a run, seen by small plug-ins of the test, and the real entry played by it.

#include "plugin_host.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "host/filter_entry.h"
#include "settings.h"

namespace {

std::vector<int> selectors;  // that the plug-in in hand was called with
std::int16_t failing = -1;   // the selector that it fails at, with code -5
std::vector<ScriptValue> played;

Document smallDocument(std::size_t planes) {
  Document document{5, 3, 8, {}};
  for (std::size_t p = 0; p < planes; ++p) {
    document.planes.emplace_back(15);
    for (std::size_t i = 0; i < 15; ++i) document.planes[p][i] = static_cast<unsigned char>(100 * p + i);
  }
  return document;
}

// Inverts rows 1 and 2, columns 2 to 4, of every plane, and needs two Continue calls.
void invertPart(std::int16_t selector, void* record, std::intptr_t* data, std::int16_t* result) {
  auto* const host = static_cast<FilterRecord*>(record);
  selectors.push_back(selector);
  *result = selector == failing ? std::int16_t{-5} : std::int16_t{noErr};
  if (selector == filterSelectorStart) {
    const Rect part = {1, 2, 3, 5};
    host->inRect = part;
    host->outRect = part;
    for (std::int16_t p = 0; p < 3; ++p) {
      host->inLoPlane = host->inHiPlane = host->outLoPlane = host->outHiPlane = p;
      ASSERT_EQ(host->advanceState(), noErr);
      for (int y = 0; y < 2; ++y) {
        const auto* in = static_cast<const unsigned char*>(host->inData) + y * host->inRowBytes;
        auto* out = static_cast<unsigned char*>(host->outData) + y * host->outRowBytes;
        for (int x = 0; x < 3; ++x) out[x] = static_cast<unsigned char>(255 - in[x]);
      }
    }
    // What lies outside the document is not delivered.
    host->inHiPlane = 3;
    EXPECT_EQ(host->advanceState(), filterBadParameters);
    host->inHiPlane = 2;
    host->inRect = {0, 0, 4, 5};
    EXPECT_EQ(host->advanceState(), filterBadParameters);
    host->inRect = part;
  }
  if (selector == filterSelectorContinue) {
    if (++*data == 2) host->inRect = host->outRect = Rect{};
  }
}

TEST(PluginHost, DeliversPartsAndContinuesUntilNothingIsAskedFor) {
  for (const std::size_t planes : {std::size_t{3}, std::size_t{1}}) {
    selectors.clear();
    Document document = smallDocument(planes);
    const Document before = document;
    runPlugin(invertPart, {}, document);
    EXPECT_EQ(selectors, (std::vector<int>{1, 2, 3, 4, 4, 5}));
    ASSERT_EQ(document.planes.size(), planes);
    for (std::size_t p = 0; p < planes; ++p) {
      for (std::size_t i = 0; i < 15; ++i) {
        const int sample = before.planes[p][i];
        EXPECT_EQ(document.planes[p][i], i >= 5 && i % 5 >= 2 ? 255 - sample : sample) << p << ' ' << i;
      }
    }
  }
}

TEST(PluginHost, StopsWhereThePluginFails) {
  const std::vector<std::vector<int>> expected = {{1}, {1, 2}, {1, 2, 3}, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 4, 5}};
  for (std::int16_t selector = 1; selector <= 5; ++selector) {
    selectors.clear();
    failing = selector;
    Document document = smallDocument(3);
    const Document before = document;
    EXPECT_THROW(runPlugin(invertPart, {}, document), PluginRefusal);
    EXPECT_EQ(selectors, expected[static_cast<std::size_t>(selector) - 1]);
    EXPECT_EQ(document.planes, before.planes);
  }
  failing = -1;
}

// Keeps what the reader hands out, by the call that fits each type; asking by another one has to fail.
void listKeys(std::int16_t selector, void* record, std::intptr_t*, std::int16_t* result) {
  *result = noErr;
  if (selector != filterSelectorStart) return;
  PIDescriptorParameters& scripting = *static_cast<FilterRecord*>(record)->descriptorParameters;
  const ReadDescriptorProcs& read = *scripting.readDescriptorProcs;
  DescriptorKeyID expected[] = {fourCharacters("RAD2"), fourCharacters("CON1"), 0};
  PIReadDescriptor token = read.openReadDescriptorProc(scripting.descriptor, expected);
  ScriptValue value{};
  std::int32_t flags = 0;
  while (read.getKeyProc(token, &value.key, &value.type, &flags) != 0) {
    Boolean truth = 0;
    std::int32_t whole = 0;
    value.number = 0;
    EXPECT_EQ(read.getFloatProc(token, &value.number) == noErr, value.type == typeFloat);
    EXPECT_EQ(read.getBooleanProc(token, &truth) == noErr, value.type == typeBoolean);
    EXPECT_EQ(read.getIntegerProc(token, &whole) == noErr, value.type == typeInteger);
    value.number += truth + whole;
    played.push_back(value);
  }
  EXPECT_EQ(expected[0], typeNull);
  EXPECT_EQ(expected[1], fourCharacters("CON1"));
  EXPECT_EQ(read.closeReadDescriptorProc(token), errMissingParameter);
}

TEST(PluginHost, PlaysTheGivenKeysAlone) {
  Settings settings;
  settings.setPair("--set", "RAD2=-2.5");
  settings.setPair("--set", "EDG5=yes");
  settings.setPair("--set", "WDTH=7");
  Document document = smallDocument(3);
  runPlugin(listKeys, settings.script(), document);
  ASSERT_EQ(played.size(), 3U);
  EXPECT_EQ(played[0].key, fourCharacters("RAD2"));
  EXPECT_EQ(played[0].number, -2.5);
  EXPECT_EQ(played[1].key, fourCharacters("EDG5"));
  EXPECT_EQ(played[1].number, 1);
  EXPECT_EQ(played[2].number, 7);
}

TEST(PluginHost, GetsBackWhatThePluginRanWith) {
  Settings settings;
  settings.setBands("--contrast", "CON", "90,110,120,130,140");
  Document document = smallDocument(3);
  const std::vector<ScriptValue> recorded = runPlugin(PluginMain, settings.script(), document);
  ASSERT_EQ(recorded.size(), 24U);
  for (std::size_t band = 0; band < 5; ++band) {
    EXPECT_EQ(recorded[band].number, (std::vector<double>{90, 110, 120, 130, 140}[band]));
    EXPECT_EQ(recorded[5 + band].number, 3);
  }
  EXPECT_EQ(recorded[23].key, fourCharacters("WDTH"));
  EXPECT_EQ(recorded[23].number, 0);
}

}  // namespace
