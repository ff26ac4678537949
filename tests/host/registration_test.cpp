// The registration resources, read back as hosts read them.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "host/host_interface.h"
#include "host/script_keys.h"

namespace {

class Reader {
 public:
  explicit Reader(const std::string& name) {
    std::ifstream file(std::string(ORBEL_RESOURCES "/") + name, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
  }
  std::uint32_t number(int size) {
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i)
      value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes_.at(at_++))) << 8 * i;
    return value;
  }
  std::string code() {  // little-endian, so the last character comes first
    const std::string reversed = text(4);
    return {reversed.rbegin(), reversed.rend()};
  }
  std::string text(std::size_t size) {
    const std::string taken = bytes_.substr(at_, size);
    EXPECT_EQ(taken.size(), size);
    at_ += size;
    return taken;
  }
  std::string pascal() { return text(number(1)); }
  bool atEnd() const { return at_ == bytes_.size(); }

 private:
  std::string bytes_;
  std::size_t at_ = 0;
};

std::map<std::string, std::string> properties() {
  Reader reader("pipl.bin");
  EXPECT_EQ(reader.number(2), 1U);
  EXPECT_EQ(reader.number(4), 0U);
  std::map<std::string, std::string> list;
  for (auto count = reader.number(4); count > 0; --count) {
    EXPECT_EQ(reader.code(), "8BIM");
    const std::string key = reader.code();
    EXPECT_TRUE(!list.empty() || key == "kind");
    EXPECT_EQ(reader.number(4), 0U);
    const auto length = reader.number(4);
    EXPECT_EQ(length % 4, 0U) << key;  // so that both readings of the length agree
    list[key] = reader.text(length);
  }
  EXPECT_TRUE(reader.atEnd());
  return list;
}

TEST(Registration, Properties) {
  auto list = properties();
  EXPECT_EQ(list.size(), 9U);
  EXPECT_EQ(list["kind"], "MFB8");
  EXPECT_EQ(list["vers"], std::string("\0\0\4\0", 4));
  EXPECT_EQ(list["8664"], std::string("PluginMain\0\0", 12));
  EXPECT_EQ(list["mode"], std::string("\x10\x10\x80\0", 4));
  EXPECT_EQ(list["enbl"].c_str(), std::string("in (PSHOP_ImageMode, RGBMode, RGB48Mode, RGB96Mode)"));
  std::string cases;
  for (int i = 0; i < 7; ++i) cases += std::string("\1\1\0\0", 4);
  EXPECT_EQ(list["fici"], cases);
  for (const char* key : {"catg", "name"}) {
    const auto length = static_cast<unsigned char>(list[key].at(0));
    EXPECT_GT(length, 0);
    EXPECT_LT(length, list[key].size());
  }
}

TEST(Registration, TerminologyNamesTheKeys) {
  const std::string scripting = properties()["hstm"];
  EXPECT_EQ(scripting.substr(0, 4), std::string(4, '\0'));
  EXPECT_EQ(scripting.substr(12, 2), std::string("\x80\x3E", 2));  // 16000, the resource's id
  EXPECT_EQ(std::string(scripting.c_str() + 14).size(), 36U);      // an identifier of its own

  Reader reader("aete.bin");
  EXPECT_EQ(reader.number(2), 1U);
  EXPECT_EQ(reader.number(2), 1U);  // version 1.0
  EXPECT_EQ(reader.number(4), 0U);  // English, Roman
  EXPECT_EQ(reader.number(2), 1U);  // suites
  EXPECT_FALSE(reader.pascal().empty());
  EXPECT_EQ(reader.pascal(), "");
  reader.code();
  EXPECT_EQ(reader.number(2), 1U);
  EXPECT_EQ(reader.number(2), 1U);
  EXPECT_EQ(reader.number(2), 1U);  // events
  EXPECT_FALSE(reader.pascal().empty());
  EXPECT_EQ(reader.pascal(), "");
  const std::string both = reader.text(8);
  EXPECT_EQ(both, scripting.substr(4, 8));
  for (int i = 0; i < 2; ++i) {  // reply, direct parameter
    EXPECT_EQ(reader.code(), "null");
    EXPECT_EQ(reader.pascal(), "");
    EXPECT_EQ(reader.number(2), 0U);
  }
  ASSERT_EQ(reader.number(2), 24U);
  std::map<std::string, std::string> types;
  std::set<std::string> names;
  for (int i = 0; i < 24; ++i) {
    names.insert(reader.pascal());
    const std::string key = reader.code();
    types[key] = reader.code();
    EXPECT_EQ(reader.pascal(), "");
    EXPECT_EQ(reader.number(2), 0x8000U);
  }
  EXPECT_EQ(reader.number(2) + reader.number(2) + reader.number(2), 0U);
  EXPECT_TRUE(reader.atEnd());

  std::map<std::string, std::string> expected = {
      {"FCTR", "doub"}, {"HALF", "bool"}, {"LUMI", "bool"}, {"WDTH", "long"}};
  for (const char level : std::string("12345")) {
    for (const char* family : {"CON", "RAD", "THR"}) expected[std::string(family) + level] = "doub";
    expected[std::string("EDG") + level] = "bool";
  }
  EXPECT_EQ(types, expected);
  EXPECT_EQ(names.size(), 24U);
  EXPECT_EQ(names.count(""), 0U);
}

}  // namespace
