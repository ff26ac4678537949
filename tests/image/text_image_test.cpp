#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "image/kiv_image.h"
#include "support/images.h"

namespace {

namespace fs = std::filesystem;

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
  // The exception names the file and says this.
  template <typename Action>
  void expectRefusal(const std::string& reason, Action action) const {
    try {
      action();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const KivFileError& error) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
  void expectReadingRefused(const std::string& reason) const {
    expectRefusal(reason, [this] { const KivImage image(name.c_str()); });
  }
  void expectWritingRefused(const std::string& reason, const KivImage& image) const {
    expectRefusal(reason, [&] { image.Write(name.c_str()); });
  }

  fs::path folder;
  std::string name;
};

// Any float in the form that printf gives it, also those that the format cuts; of plane 0 of a view.
TEST_F(TextImage, SamplesAreWrittenAsPrintfDoesAndReadAsTheNearestFloat) {
  std::mt19937 random(3);
  std::string expected = "32\n128\n1\n";
  KivImage parent = randomImage(135, 35, 3, 1);
  parent.Plane(0).ROI(4, 2, 128, 32) = imageOf({128, 32}, 1, [&](int, int, int) {
    const auto bits = static_cast<std::uint32_t>(random());
    float sample = 0.0F;
    std::memcpy(&sample, &bits, 4);
    char line[128];
    std::snprintf(line, sizeof line, "%1.30f\n", double{sample});
    expected += line;
    return sample;
  });
  const KivImage image = parent.ROI(4, 2, 128, 32);
  image.Write(name.c_str());
  EXPECT_EQ(content(), expected);
  const KivImage read(name.c_str());
  EXPECT_TRUE(compare(read, image.Plane(0), [](float a, float b) {
    return std::abs(b) < 2e-23F ? std::abs(double{a} - double{b}) <= 1e-30 : sameBits(a, b);
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
  // The last one is just above the middle of two floats; as a double it is the middle itself.
  const char* const lines[] = {
      " 2", "3\t", "1", "+.5", "1E+10", "-1e-50", "1e-320", "-Inf", "1.00000005960464477539062500000001"};
  float expected[] = {0.5F, 1e10F, -0.0F, 0.0F, -INFINITY, 1.00000012F};
  for (const std::string ending : {"\n", "\r\n", "\r"}) {
    std::string text;
    for (const char* line : lines) text += line + ending;
    const std::string blank = ending + " " + ending;
    for (const std::string& content : {text.substr(0, text.size() - ending.size()), text, text + blank}) {
      put(content);
      EXPECT_TRUE(sameBits(KivImage(name.c_str()), KivImage(expected, {3, 2}, 1)));
    }
  }
}

TEST_F(TextImage, RefusesBadFilesByLine) {
  const struct {
    std::string content;
    int line;
    const char* reason;
  } files[] = {
      {"", 1, "ends where the height"},
      {"1.5\n1\n1\n0.5\n", 1, "\"1.5\" where the height"},
      {"0\n1\n1\n0.5\n", 1, "\"0\""},
      {"\n1\n1\n1\n0.5\n", 1, "\"\""},
      {"GIF89a\x01\n", 1, "\"GIF89a?\""},
      {"1\n2147483648\n1\n0.5\n", 2, "from 1 to 2147483647"},
      {"1", 2, "ends where the width"},
      // 2^62 samples, and 2^32, which 32 bits would take for none
      {"2147483647\n2147483647\n1\n0.5\n", 2, "don't fit into the file's 28 bytes"},
      {"65536\n65536\n1\n0.5\n", 2, "65536 rows of 65536 samples"},
      {"1\n1\n", 3, "ends where the number of planes"},
      {"1\n1\n3\n0.5\n", 3, "\"3\" where"},
      {"1\n2\n1\n0.5\n", 5, "ends where a sample"},
      {"1\r2\r1\r0.5\r0.5x\r", 5, "\"0.5x\" where a sample"},
      {"1\n2\n1\n\n0.5\n0.5\n", 4, "\"\""},
      {"1\n1\n1\n0,5\n", 4, "0,5"},
      {"1\n1\n1\n+-1\n", 4, "+-1"},
      {"1\n1\n1\n-1e999\n", 4, "-1e999"},
      {"1\n1\n1\n1e39\n", 4, "1e39"},
      {"1\n1\n1\n0.5\n\n0.5\n", 6, "\"0.5\" behind 1 rows of 1 samples"},
      {"1\n1\n1\n" + std::string(5000, '0'), 4, "longer than any number"},
  };
  for (const auto& file : files) {
    put(file.content);
    expectReadingRefused(", line " + std::to_string(file.line) + ": ");
    expectReadingRefused(file.reason);
  }
}

TEST_F(TextImage, RefusesWhatIsNoFile) {
  expectReadingRefused("No such file");
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  for (const std::string& other : {name, folder.string()}) {
    name = other;
    expectReadingRefused("no regular file");
    expectWritingRefused("no regular file", KivImage(1, 1, 1));
  }
  EXPECT_EQ(filesInFolder(), 1U);
  name = "/proc/self/mem";  // a regular file whose first byte can't be read
  expectReadingRefused("Input/output error");
  EXPECT_THROW(KivImage(static_cast<const char*>(nullptr)), KivFileError);
  EXPECT_THROW(KivImage(1, 1, 1).Write(nullptr), KivFileError);
}

TEST_F(TextImage, TooLargeForOneImageIsNoMemory) {
  put("1\n600000000\n1\n");
  fs::resize_file(name, 1300000000);
  EXPECT_THROW(KivImage(name.c_str()), NO_MEMORY_ERROR);
}

// With a limit of the process on file sizes, which stands in for the full disk.
template <typename Action>
void withFilesUpTo(rlim_t bytes, Action action) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit low = before;
  low.rlim_cur = bytes;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &low), 0);
  action();
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
}

TEST_F(TextImage, WritesWholeFilesOrNone) {
  put("precious");
  expectWritingRefused("empty", KivImage());
  expectWritingRefused("empty", randomImage(4, 4, 1, 1).Sub_Section(2));
  // The first fails while it is written, the second when it is closed.
  withFilesUpTo(20000, [this] { expectWritingRefused("File too large", randomImage(60, 60, 1, 1)); });
  withFilesUpTo(1000, [this] { expectWritingRefused("File too large", randomImage(40, 1, 1, 1)); });
  // Nobody, who may make files in this folder, may not write this one. Only root can become nobody, or has to.
  fs::permissions(name, fs::perms::owner_read);
  fs::permissions(folder, fs::perms::all);
  const uid_t user = geteuid();
  ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
  expectWritingRefused("Permission denied", KivImage(1, 1, 1));
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_EQ(content(), "precious");
  EXPECT_EQ(filesInFolder(), 1U);
  name = (folder / "nowhere" / "image.txt").string();
  expectWritingRefused("No such file", KivImage(1, 1, 1));
}

TEST_F(TextImage, KeepsPermissionsAndLinks) {
  put("old");
  constexpr fs::perms permissions = fs::perms::owner_read | fs::perms::owner_write;
  fs::permissions(name, permissions);
  const KivImage image = randomImage(3, 3, 1, 1);
  for (const char* target : {"image.txt", "later.txt"}) {  // which isn't there yet
    const fs::path link = folder / (std::string("link to ") + target);
    fs::create_symlink(target, link);
    image.Write(link.c_str());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(sameBits(KivImage((folder / target).c_str()), image));
  }
  EXPECT_EQ(filesInFolder(), 4U);
  EXPECT_EQ(fs::status(name).permissions(), permissions);
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
