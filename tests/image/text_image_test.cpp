#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "image/kiv_image.h"
#include "support/images.h"

namespace {

namespace fs = std::filesystem;
using Limits = std::numeric_limits<float>;

// A folder of the test's own, with one file name in it.
class TextImage : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "text-image-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder = pattern;
    name = (folder / "image.txt").string();
  }
  void TearDown() override { fs::remove_all(folder); }

  void put(const std::string& content) const { std::ofstream(name, std::ios::binary) << content; }
  std::string content() const {
    std::ostringstream text;
    text << std::ifstream(name, std::ios::binary).rdbuf();
    return text.str();
  }
  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
  // What the exception says.
  template <typename Action>
  std::string refusal(Action action) const {
    try {
      action();
    } catch (const KivFileError& error) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
      return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
  }
  std::string readingRefused() const {
    return refusal([this] { const KivImage image(name.c_str()); });
  }
  std::string writingRefused(const KivImage& image) const {
    return refusal([&] { image.Write(name.c_str()); });
  }

  fs::path folder;
  std::string name;
};

TEST_F(TextImage, TwoSamplesByHand) {
  KivImage image(2, 1, 1);
  *image.At(0, 0, 0) = 0.5F;
  *image.At(0, 1, 0) = -0.25F;
  image.Write(name.c_str());
  EXPECT_EQ(content(), "1\n2\n1\n0.500000000000000000000000000000\n-0.250000000000000000000000000000\n");
}

TEST_F(TextImage, SamplesComeBackBitForBit) {
  KivImage image = randomImage(37, 23, 3, 1);
  const float special[] = {0.0F, -0.0F,  Limits::max(), Limits::lowest(),    Limits::infinity(), -Limits::infinity(),
                           1e9F, 2e-23F, 3.14159F,      Limits::quiet_NaN(), 16777217.0F,        -1.0F / 3};
  std::copy(std::begin(special), std::end(special), image.At(0, 0, 4));
  image.Write(name.c_str());
  const KivImage read(name.c_str());
  EXPECT_EQ(read.storage, KIV_STORAGE_OWNED);
  EXPECT_TRUE(sameBits(read, image.Plane(0)));

  const KivImage view = image.Sub_Section(5, 2);
  view.Write(name.c_str());
  EXPECT_TRUE(sameBits(KivImage(name.c_str()), view.Plane(0)));
}

// Any float in the form that printf gives it, also those that the format cuts.
TEST_F(TextImage, SamplesAreWrittenAsPrintfDoesAndReadAsTheNearestFloat) {
  KivImage image(64, 64, 1);
  std::mt19937 random(3);
  std::string expected = "64\n64\n1\n";
  for (int i = 0; i < 64 * 64; ++i) {
    const auto bits = static_cast<std::uint32_t>(random());
    float& sample = *image.At(0, i % 64, i / 64);
    std::memcpy(&sample, &bits, 4);
    if (std::isnan(sample)) sample = std::nextafter(0.0F, 1.0F);
    char line[128];
    std::snprintf(line, sizeof line, "%1.30f\n", double{sample});
    expected += line;
  }
  image.Write(name.c_str());
  EXPECT_EQ(content(), expected);
  const KivImage read(name.c_str());
  EXPECT_TRUE(compare(read, image, [](float a, float b) {
    return std::abs(b) < 2e-23F ? std::abs(double{a} - double{b}) <= 1e-30 : bitsOf(a) == bitsOf(b);
  }));
}

TEST_F(TextImage, PackedCopyDropsPaddingAndTheParentsOtherColumns) {
  const KivImage image = randomImage(19, 7, 3, 1);
  const KivImage view = image.Sub_Section(3, 2);
  std::vector<float> packed(13 * 3 * 3 + 1, -7.0F);
  view.CopyToMatlab(packed.data());
  EXPECT_TRUE(sameBits(KivImage(packed.data(), view.size, 3), view));
  EXPECT_EQ(packed.back(), -7.0F);
  KivImage().CopyToMatlab(nullptr);
}

TEST_F(TextImage, TakesWhatOtherToolsWrite) {
  const float expected[] = {0.5F, 1e10F, -0.0F, 0.0F, -Limits::infinity(), 1.00000012F};
  const std::string lines[] = {" 2", "3\t", "1", "+.5", "1E+10", "-1e-50", "1e-320", "-Inf",
                               // just above the middle of two floats; as a double it is the middle itself
                               "1.00000005960464477539062500000001"};
  for (const std::string ending : {"\n", "\r\n", "\r"}) {
    for (const std::string& last : {std::string(), ending, ending + ending + " " + ending}) {
      std::string text;
      for (const std::string& line : lines) text += (text.empty() ? "" : ending) + line;
      put(text + last);
      const KivImage image(name.c_str());
      ASSERT_EQ(image.size.width, 3);
      ASSERT_EQ(image.size.height, 2);
      for (int i = 0; i < 6; ++i) EXPECT_EQ(bitsOf(*image.At(0, i % 3, i / 3)), bitsOf(expected[i])) << i;
    }
  }
}

struct BadFile {
  const char* content;
  int line;
  const char* reason;
};

class BadTextImage : public TextImage, public testing::WithParamInterface<BadFile> {};

TEST_P(BadTextImage, IsRefusedByLine) {
  put(GetParam().content);
  const std::string message = readingRefused();
  EXPECT_NE(message.find(", line " + std::to_string(GetParam().line) + ": "), std::string::npos) << message;
  EXPECT_NE(message.find(GetParam().reason), std::string::npos) << message;
}

INSTANTIATE_TEST_SUITE_P(
    All, BadTextImage,
    testing::Values(BadFile{"", 1, "ends where the height"}, BadFile{"0\n1\n1\n0.5\n", 1, "\"0\" where the height"},
                    BadFile{"-1\n1\n1\n0.5\n", 1, "\"-1\""}, BadFile{"1.5\n1\n1\n0.5\n", 1, "\"1.5\""},
                    BadFile{"\n1\n1\n1\n0.5\n", 1, "\"\""}, BadFile{"GIF89a\x01\n", 1, "\"GIF89a?\""},
                    BadFile{"1\n2147483648\n1\n0.5\n", 2, "from 1 to 2147483647"},
                    BadFile{"1\n99999999999999999999\n1\n0.5\n", 2, "the width"},
                    BadFile{"1", 2, "ends where the width"}, BadFile{"1\r\n0x2\r\n", 2, "the width"},
                    // 2^62 samples, and 2^32, which 32 bits would take for none
                    BadFile{"2147483647\n2147483647\n1\n0.5\n", 2, "don't fit into the file's 28 bytes"},
                    BadFile{"65536\n65536\n1\n0.5\n", 2, "65536 rows of 65536 samples"},
                    BadFile{"1\n1\n", 3, "ends where the number of planes"},
                    BadFile{"1\n1\n3\n0.5\n", 3, "\"3\" where"}, BadFile{"1\n1\n1.0\n0.5\n", 3, "planes, 1,"},
                    BadFile{"1\n2\n1\n0.5\n", 5, "ends where a sample"},
                    BadFile{"1\r2\r1\r0.5\r0.5x\r", 5, "\"0.5x\" where a sample"},
                    BadFile{"1\n2\n1\n\n0.5\n0.5\n", 4, "\"\""}, BadFile{"1\n2\n1\n0.5 0.5\n", 4, "\"0.5 0.5\""},
                    BadFile{"1\n1\n1\n0,5\n", 4, "0,5"}, BadFile{"1\n1\n1\n0x1p3\n", 4, "0x1p3"},
                    BadFile{"1\n1\n1\n+-1\n", 4, "+-1"}, BadFile{"1\n1\n1\n1e\n", 4, "1e"},
                    BadFile{"1\n1\n1\n1e39\n", 4, "1e39"}, BadFile{"1\n1\n1\n-1e999\n", 4, "-1e999"},
                    BadFile{"1\n1\n1\n0.5\n\n0.5\n", 6, "\"0.5\" behind 1 rows of 1 samples"}));

TEST_F(TextImage, RefusesALineWithoutEnd) {
  put("1\n1\n1\n" + std::string(5000, '0'));
  EXPECT_NE(readingRefused().find("line 4: longer than any number"), std::string::npos);
}

TEST_F(TextImage, RefusesWhatIsNoFile) {
  EXPECT_NE(readingRefused().find("No such file"), std::string::npos);
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  EXPECT_NE(readingRefused().find("no regular file"), std::string::npos);
  EXPECT_NE(writingRefused(KivImage(1, 1, 1)).find("no regular file"), std::string::npos);
  name = folder.string();
  EXPECT_NE(readingRefused().find("no regular file"), std::string::npos);
  EXPECT_NE(writingRefused(KivImage(1, 1, 1)).find("no regular file"), std::string::npos);
  EXPECT_EQ(filesInFolder(), 1U);
  name = "/proc/self/mem";  // a regular file whose first byte can't be read
  EXPECT_NE(readingRefused().find("Input/output error"), std::string::npos);
  EXPECT_THROW(KivImage(static_cast<const char*>(nullptr)), KivFileError);
  EXPECT_THROW(KivImage(1, 1, 1).Write(nullptr), KivFileError);
}

TEST_F(TextImage, TooLargeForOneImageIsNoMemory) {
  put("1\n600000000\n1\n");
  fs::resize_file(name, 1300000000);
  EXPECT_THROW(KivImage(name.c_str()), NO_MEMORY_ERROR);
}

TEST_F(TextImage, WritesWholeFilesOrNone) {
  put("precious");
  fs::permissions(name, fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_NE(writingRefused(KivImage()).find("empty"), std::string::npos);
  EXPECT_NE(writingRefused(randomImage(4, 4, 1, 1).Sub_Section(2)).find("empty"), std::string::npos);

  // A limit of the process on file sizes stands in for the full disk.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit low = before;
  low.rlim_cur = 20000;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &low), 0);
  const std::string large = writingRefused(randomImage(60, 60, 1, 1));  // fails while it is written
  low.rlim_cur = 1000;
  setrlimit(RLIMIT_FSIZE, &low);
  const std::string small = writingRefused(randomImage(40, 1, 1, 1));  // fails when it is closed
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_NE(large.find("File too large"), std::string::npos);
  EXPECT_NE(small.find("File too large"), std::string::npos);
  EXPECT_EQ(content(), "precious");
  EXPECT_EQ(filesInFolder(), 1U);

  const fs::path link = folder / "link";
  fs::create_symlink("image.txt", link);
  const KivImage image = randomImage(3, 3, 1, 1);
  image.Write(link.c_str());
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(filesInFolder(), 2U);
  EXPECT_TRUE(sameBits(KivImage(name.c_str()), image));
  EXPECT_EQ(fs::status(name).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  const fs::path ahead = folder / "ahead";
  fs::create_symlink("later.txt", ahead);
  image.Write(ahead.c_str());
  EXPECT_TRUE(fs::is_symlink(ahead));
  EXPECT_TRUE(sameBits(KivImage((folder / "later.txt").c_str()), image));

  // Nobody, who may make files in this folder, may not write this one. Only root can become nobody, or has to.
  fs::permissions(name, fs::perms::owner_read);
  fs::permissions(folder, fs::perms::all);
  const uid_t user = geteuid();
  ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
  EXPECT_NE(writingRefused(image).find("Permission denied"), std::string::npos);
  ASSERT_EQ(seteuid(user), 0);

  name = (folder / "nowhere" / "image.txt").string();
  EXPECT_NE(writingRefused(image).find("No such file"), std::string::npos);
}

// As a host may have set it, for C++ streams and, where the system has such a locale, for C.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  std::string do_grouping() const override { return "\1"; }
};

TEST_F(TextImage, KnowsNoLocale) {
  const KivImage image = randomImage(1500, 2, 1, 1);
  image.Write(name.c_str());
  const std::string expected = content();
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
  for (const char* german : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"}) {
    if (std::setlocale(LC_ALL, german) != nullptr) break;
  }
  image.Write(name.c_str());
  const KivImage read(name.c_str());
  std::locale::global(before);
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(content(), expected);
  EXPECT_TRUE(sameBits(read, image));
}

}  // namespace
