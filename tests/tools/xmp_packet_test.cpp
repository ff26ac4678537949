// The program's own property among what others have written.

#include "pictures/xmp_packet.h"

#include <gtest/gtest.h>

using namespace orbel;

namespace {

TEST(XmpPacket, TakesThePlaceOfAnOlderValueInEveryForm) {
  // As other programs write what they have read: the property as an attribute or an element, the prefix of their
  // choice.
  const std::pair<std::string, std::string> forms[] = {
      {"<rdf:RDF><rdf:Description xmlns:orbel='urn:uuid:6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4#'\n orbel:MadeWith = '",
       "' a:b='\"'/></rdf:RDF>"},
      {"<rdf:RDF><rdf:Description "
       "xmlns:x=\"urn:uuid:6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4#\"><y:MadeWith>no</y:MadeWith>"
       "<x:MadeWith>",
       "</x:MadeWith></rdf:Description></rdf:RDF>"}};
  const std::string text = R"({"a < b & 'c'": ["x", 1]})";
  for (const auto& [before, behind] : forms) {
    EXPECT_EQ(propertyIn(before + R"({&quot;a&#39;&#x27;&quot; &gt; &amp;lt;})" + behind), R"({"a''" > &lt;})");
    const auto changed = withProperty(before + "old" + behind, text);
    ASSERT_TRUE(changed);
    EXPECT_EQ(propertyIn(*changed), text);
    EXPECT_EQ(changed->substr(0, before.size()), before);
    EXPECT_EQ(changed->substr(changed->size() - behind.size()), behind);
  }
}

TEST(XmpPacket, LeavesAloneWhatIsNone) {
  EXPECT_EQ(propertyIn(*withProperty("", "text")), "text");
  for (const std::string& none : {std::string("<x:xmpmeta/>"), std::string("\0<\0r\0d\0f", 8), std::string("&;<>'=")}) {
    EXPECT_FALSE(withProperty(none, "text"));
    EXPECT_FALSE(propertyIn(none));
  }
  // Cut off anywhere, it is read without a fault.
  const std::string whole = *withProperty("", "te&xt");
  for (std::size_t i = 0; i < whole.size(); ++i) propertyIn(whole.substr(0, i));
}

}  // namespace
