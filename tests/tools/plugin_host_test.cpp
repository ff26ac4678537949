// The host's side of a run, seen by small plug-ins of the test.

#include "plugin/plugin_host.h"

#include <gtest/gtest.h>

#include "plugin/script_descriptor.h"

using namespace orbel;

namespace {

std::vector<int> selectors;  // that the plug-in in hand was called with
std::int16_t failing = -1;   // the selector that it fails at, with code -5

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
  if (selector == filterSelectorContinue && ++*data == 2) host->inRect = host->outRect = Rect{};
}

TEST(PluginHost, DeliversPartsAndContinuesUntilNothingIsAskedFor) {
  for (const std::size_t planes : {std::size_t{3}, std::size_t{1}}) {
    selectors.clear();
    Document document = smallDocument(planes);
    Document expected = document;
    for (auto& plane : expected.planes) {
      for (const std::size_t i : {7U, 8U, 9U, 12U, 13U, 14U}) plane[i] = static_cast<unsigned char>(255 - plane[i]);
    }
    runPlugin(invertPart, {}, document);
    EXPECT_EQ(selectors, (std::vector<int>{1, 2, 3, 4, 4, 5}));
    EXPECT_EQ(document.planes, expected.planes);
  }
}

TEST(PluginHost, StopsWhereThePluginFails) {
  const std::vector<std::vector<int>> expected = {{1}, {1, 2}, {1, 2, 3}, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 4, 5}};
  for (failing = 1; failing <= 5; ++failing) {
    selectors.clear();
    Document document = smallDocument(3);
    const Document before = document;
    EXPECT_THROW(runPlugin(invertPart, {}, document), PluginRefusal);
    EXPECT_EQ(selectors, expected[static_cast<std::size_t>(failing) - 1]);
    EXPECT_EQ(document.planes, before.planes);
  }
  failing = -1;
}

// Asks for each value by all three calls; those of another type have to fail.
void expectKeys(std::int16_t selector, void* record, std::intptr_t*, std::int16_t* result) {
  *result = noErr;
  if (selector != filterSelectorStart) return;
  PIDescriptorParameters& scripting = *static_cast<FilterRecord*>(record)->descriptorParameters;
  const ReadDescriptorProcs& read = *scripting.readDescriptorProcs;
  DescriptorKeyID expected[] = {fourCharacters("RAD2"), fourCharacters("CON1"), 0};
  PIReadDescriptor token = read.openReadDescriptorProc(scripting.descriptor, expected);
  for (const ScriptValue& value :
       {ScriptValue{fourCharacters("RAD2"), typeFloat, -2.5}, ScriptValue{fourCharacters("EDG5"), typeBoolean, 1},
        ScriptValue{fourCharacters("WDTH"), typeInteger, 7}}) {
    DescriptorKeyID key = 0;
    DescriptorTypeID type = 0;
    std::int32_t flags = 0;
    ASSERT_NE(read.getKeyProc(token, &key, &type, &flags), 0);
    EXPECT_EQ(key, value.key);
    double number = 0;
    Boolean truth = 0;
    std::int32_t whole = 0;
    EXPECT_EQ(read.getFloatProc(token, &number) == noErr, value.type == typeFloat);
    EXPECT_EQ(read.getBooleanProc(token, &truth) == noErr, value.type == typeBoolean);
    EXPECT_EQ(read.getIntegerProc(token, &whole) == noErr, value.type == typeInteger);
    EXPECT_EQ(number + truth + whole, value.number);
    EXPECT_EQ(type, value.type);
  }
  EXPECT_EQ(expected[0], typeNull);
  EXPECT_EQ(expected[1], fourCharacters("CON1"));
  EXPECT_EQ(read.closeReadDescriptorProc(token), errMissingParameter);
}

TEST(PluginHost, PlaysTheGivenKeys) {
  const std::vector<ScriptValue> script = {{fourCharacters("RAD2"), typeFloat, -2.5},
                                           {fourCharacters("EDG5"), typeBoolean, 1},
                                           {fourCharacters("WDTH"), typeInteger, 7}};
  Document document = smallDocument(3);
  runPlugin(expectKeys, script, document);
}

}  // namespace
