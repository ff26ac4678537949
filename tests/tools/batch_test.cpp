// A hundred files of all kinds, and what stands when orbel has been through them and was killed once on its way.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <map>
#include <set>
#include <thread>

#include "host/filter_entry.h"
#include "orbel_run.h"
#include "plugin_host.h"
#include "settings.h"

namespace {

constexpr const char* contrast = "90,140,120,130,80";

struct Case {
  std::string name;
  bool good;
  bool lossless;
};

// Every file of the trial, with what is to be expected of it.
class Trial : public Orbel {
 protected:
  void add(const std::string& name, const VImage& picture, bool lossless = true, const char* options = "") {
    const std::string plain = path("in/plain" + fs::path(name).extension().string());
    picture.write_to_file((plain + options).c_str());
    fs::rename(plain, path("in/" + name));
    cases_.push_back({name, true, lossless});
  }
  void addBad(const std::string& name, const std::function<void(const std::string&)>& make) {
    make(path("in/" + name));
    cases_.push_back({name, false, false});
  }
  void cut(const std::string& name, const VImage& picture) {
    add(name, picture);
    fs::resize_file(path("in/" + name), fs::file_size(path("in/" + name)) / 2);
    cases_.back() = {name, false, false};
  }

  void makeFiles() {
    fs::create_directories(path("in/deeper/x.png"));
    const VImage rgba = testPicture(4, VIPS_FORMAT_UCHAR);
    for (int i = 0; i < 9; ++i) {
      const std::string n = std::to_string(i);
      add("grey " + n + ".png", testPicture(1, VIPS_FORMAT_UCHAR));
      add("rgb" + n + ".png", testPicture(3, VIPS_FORMAT_UCHAR));
      add("zeile\n" + n + ".png", testPicture(3, VIPS_FORMAT_USHORT));
      add("größe" + n + ".png", rgba);
      add("grey16-" + n + ".tif", testPicture(2, VIPS_FORMAT_USHORT));
      add("float" + n + ".tif", testPicture(3, VIPS_FORMAT_FLOAT));
      add("deeper/ascii" + n + ".ppm", testPicture(3, VIPS_FORMAT_UCHAR));
      add("photo" + n + ".jpg", testPicture(3, VIPS_FORMAT_UCHAR), false);
      add("web" + n + ".webp", rgba, false);
      cut("cut" + n + ".png", testPicture(3, VIPS_FORMAT_USHORT));
    }
    const VImage inks = testPicture(4, VIPS_FORMAT_UCHAR);
    add("inks.tif", inks.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK)), false);
    add("dot.png", testPicture(3, VIPS_FORMAT_UCHAR).crop(0, 0, 1, 1));
    add("strip.png", testPicture(3, VIPS_FORMAT_UCHAR).replicate(79, 1).crop(0, 0, 20000, 8));
    add("palette.png", testPicture(3, VIPS_FORMAT_UCHAR), true, "[palette]");
    add("tall.png", testPicture(1, VIPS_FORMAT_UCHAR).replicate(1, 79).crop(0, 0, 8, 20000));
    cut("cut.jpg", testPicture(3, VIPS_FORMAT_UCHAR));
    cut("cut.tif", testPicture(3, VIPS_FORMAT_UCHAR));
    addBad("empty.jpg", [](const std::string& file) { std::ofstream stream(file); });
    addBad("text.png", [](const std::string& file) { std::ofstream(file) << "no picture at all\n"; });
    addBad("inked.psd", [](const std::string& file) { std::ofstream(file) << "8BPS and nothing more"; });
    ASSERT_EQ(cases_.size(), 100U);
  }

  std::map<std::string, std::string> inputs() const {
    std::map<std::string, std::string> contents;
    for (const Case& c : cases_) contents[c.name] = contentOf(path("in/" + c.name));
    return contents;
  }

  std::string outputOf(const Case& c) const { return path("out/" + c.name); }
  std::size_t outputs() const {
    return static_cast<std::size_t>(
        std::count_if(cases_.begin(), cases_.end(), [&](const Case& c) { return fs::exists(outputOf(c)); }));
  }

  std::vector<Case> cases_;
};

VImage loadWhole(const std::string& file) {
  return VImage::new_from_source(vips::VSource::new_from_file(file.c_str()), "",
                                 VImage::option()->set("fail_on", VIPS_FAIL_ON_WARNING))
      .copy_memory();
}

// The steps by hand: samples over their white, the plug-in, and back; 8 bits go as they are.
template <typename Sample, typename PlaneSample>
void equalize(VImage& picture, double white) {
  const auto bands = static_cast<std::size_t>(picture.bands());
  const std::size_t colours = bands < 3 ? 1 : 3;
  const std::size_t count = static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height());
  auto* const samples = const_cast<Sample*>(static_cast<const Sample*>(picture.data()));
  Document document{picture.width(), picture.height(), 8 * static_cast<int>(sizeof(PlaneSample)), {}};
  for (std::size_t band = 0; band < colours; ++band) {
    document.planes.emplace_back(count * sizeof(PlaneSample));
    auto* const plane = reinterpret_cast<PlaneSample*>(document.planes[band].data());
    for (std::size_t i = 0; i < count; ++i) plane[i] = static_cast<PlaneSample>(samples[i * bands + band] / white);
  }
  Settings settings;
  settings.setBands("", "CON", contrast);
  runPlugin(PluginMain, settings.script(), document);
  for (std::size_t band = 0; band < colours; ++band) {
    const auto* const plane = reinterpret_cast<const PlaneSample*>(document.planes[band].data());
    for (std::size_t i = 0; i < count; ++i) {
      const double value = plane[i] * white;
      samples[i * bands + band] = static_cast<Sample>(
          std::is_integral_v<Sample> ? std::clamp(std::floor(value + 0.5), 0.0, std::max(white, 255.0)) : value);
    }
  }
}

VImage equalized(VImage picture) {
  if (picture.format() == VIPS_FORMAT_UCHAR) equalize<unsigned char, unsigned char>(picture, 1);
  if (picture.format() == VIPS_FORMAT_USHORT) equalize<unsigned short, float>(picture, 65535);
  if (picture.format() == VIPS_FORMAT_FLOAT) equalize<float, float>(picture, 1);
  return picture;
}

TEST_F(Trial, LeavesWholeOutputsALineForEachFailureAndNothingElseChanged) {
  makeFiles();
  const auto before = inputs();
  std::vector<std::string> arguments = {"apply", "-r", path("in"),   "-o",    path("out"),
                                        "-j",    "2",  "--contrast", contrast};

  // Killed with no chance to clean up: the processes of the files in hand do that.
  const pid_t process = start(arguments);
  for (int i = 0; i < 3000 && outputs() < 30; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  kill(process, SIGKILL);
  EXPECT_TRUE(WIFSIGNALED(finish(process).status));
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_FALSE(temporaryIsThere());
  const std::size_t early = outputs();
  EXPECT_GE(early, 30U);
  EXPECT_LT(early, 85U) << "it was killed too late to tell anything";

  // Somebody's own file, newer than the input.
  const Case& taken =
      *std::find_if(cases_.begin(), cases_.end(), [&](const Case& c) { return !fs::exists(outputOf(c)); });
  std::ofstream(outputOf(taken)) << "precious";

  arguments.emplace_back("-u");
  const Ending outcome = run(arguments);
  EXPECT_EQ(outcome.code(), 1);
  EXPECT_EQ(inputs(), before);
  EXPECT_EQ(contentOf(outputOf(taken)), "precious");
  EXPECT_FALSE(temporaryIsThere());
  std::size_t failures = 0;
  for (const Case& c : cases_) {
    if (c.name == taken.name) continue;
    SCOPED_TRACE(c.name);
    EXPECT_EQ(fs::exists(outputOf(c)), c.good);
    if (!c.good) {
      ++failures;
      EXPECT_NE(outcome.errors.find("orbel: " + path("in/" + c.name) + ": "), std::string::npos);
      continue;
    }
    const VImage after = loadWhole(outputOf(c));
    const VImage source = loadWhole(path("in/" + c.name));
    EXPECT_EQ(after.width(), source.width());
    EXPECT_EQ(after.height(), source.height());
    if (c.lossless) {
      EXPECT_EQ(difference(after, equalized(source)), 0);
    }
  }
  const std::string line = "\norbel: " + path("in/");
  std::size_t lines = 0;
  const std::string errors = "\n" + outcome.errors;
  for (std::size_t at = 0; (at = errors.find(line, at)) != std::string::npos; ++at) ++lines;
  EXPECT_EQ(lines, failures);
}

TEST_F(Orbel, NamesOutputsByFolderPatternAndSuffixAndRefusesWhatIsThere) {
  for (const char* name : {"in", "dots", "loops", "dots/c.2.png_original"}) fs::create_directory(path(name));
  for (const char* name : {"in/a.png", "in/b.tif", "in/b.png", "dots/c.1.png", "dots/c.2.png"}) {
    testPicture(3, VIPS_FORMAT_UCHAR).write_to_file(path(name).c_str());
  }
  fs::create_symlink("loop.png", path("loops/loop.png"));
  fs::create_symlink("c.1.png", path("dots/link.png"));
  struct Naming {
    std::vector<std::string> arguments;
    int code;
    std::vector<std::string> outputs;
  };
  const std::string a = path("in/a.png");
  const std::string b = path("in/b.tif");
  const std::string c = path("dots/c.1.png");
  const std::string d = path("dots/c.2.png");
  const std::vector<Naming> namings = {
      {{a, b}, 0, {"in/a_orbel.png", "in/b_orbel.tif"}},
      {{"-r", path("loops"), path("in/a.png"), "-o", path("t")}, 1, {"t/a.png"}},  // a loop of links, and nothing else
      {{"-r", path("in")}, 1, {"in/b_orbel.png"}},  // what is there by now is refused, and its results are left alone
      {{a, b, "-o", path("new")}, 0, {"new/a.png", "new/b.tif"}},
      {{a, b, "-o", path("new")}, 1, {}},
      {{a, b, "-o", path("new"), "-u"}, 0, {}},
      {{a, b, "-o", path("x/%s-%s.jpg")}, 0, {"x/a-a.jpg", "x/b-b.jpg"}},
      {{a, "-o", path("y"), "--ext", "webp"}, 0, {"y"}},
      {{c, d, "-o", path("p/%s")}, 0, {"p/c.1.png", "p/c.2.png"}},
      {{c, d, "-o", path("p/%s_s"), "--ext", "tif"}, 0, {"p/c.1_s.tif", "p/c.2_s.tif"}},
      {{c, path("dots/c.1_orbel.png")}, 0, {"dots/c.1_orbel.png"}},  // by the same wildcard
      {{a, b, "-o", path("z.png")}, 2, {}},
      {{b, path("in/b.png"), "-o", path("one/"), "--ext", "png"}, 1, {"one/b.png"}},  // the second had no name left
      {{"-r", path("in"), "-o", path("tree/%s_t.png")},
       1,
       {"tree/a_t.png", "tree/a_orbel_t.png", "tree/b_t.png", "tree/b_orbel_t.png"}},
      {{a, "--in-place", "--contrast", "0"}, 0, {"in/a.png_original"}},
      {{b, "--in-place", "--no-backup", "--contrast", "0"}, 0, {}},
      {{path("dots/link.png"), c, "--in-place"}, 1, {"dots/link.png_original"}},  // one file by two names
      {{d, "--in-place"}, 1, {}},                                                 // a folder is in the original's way
      {{d, "--in-place", "--ext", "tif"}, 2, {}},
      {{d, "--in-place", "-u"}, 2, {}},
      {{a, b, "-u"}, 0, {}},
      {{a, b, "-o", path("in/%s.png"), "-u"}, 1, {}},  // a.png is an input itself
      {{a, "--in-place", "--no-backup", "--recipe"}, 0, {"in/a.png.toml"}},
      {{a, "--in-place", "--no-backup", "--recipe"}, 1, {}},  // the recipe isn't the picture
      {{a, "-o", path("dry.png"), "--dry-run"}, 0, {}},
      {{a, "-o", path("recipe.png"), "--recipe"}, 0, {"recipe.png", "recipe.png.toml"}},
  };
  for (const Naming& naming : namings) {
    SCOPED_TRACE(testing::PrintToString(naming.arguments));
    std::vector<std::string> words = {"apply"};
    words.insert(words.end(), naming.arguments.begin(), naming.arguments.end());
    std::set<std::string> before;
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) before.insert(entry.path().string());
    const Ending outcome = run(words);
    EXPECT_EQ(outcome.code(), naming.code) << outcome.errors;
    std::set<std::string> expected;
    for (const std::string& output : naming.outputs) expected.insert(path(output));
    std::set<std::string> made;
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
      std::error_code loop;
      if (entry.is_regular_file(loop) && before.count(entry.path().string()) == 0) made.insert(entry.path().string());
    }
    made.erase(path("errors"));
    EXPECT_EQ(made, expected);
  }
}

TEST_F(Orbel, ConvertsDepthsAndColourModelsWithANote) {
  struct Conversion {
    const char* input;
    VImage picture;
    const char* note;
    VipsBandFormat format;
    std::vector<std::string> options;
    const char* packed = "";
  };
  const VImage rgb = testPicture(3, VIPS_FORMAT_UCHAR);
  const VImage inks =
      testPicture(4, VIPS_FORMAT_UCHAR).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK));
  const std::vector<Conversion> conversions = {
      {"inks.tif", inks, "inks (CMYK) converted", VIPS_FORMAT_UCHAR, {}},
      {"lab.tif", rgb.colourspace(VIPS_INTERPRETATION_LABS), "Lab converted", VIPS_FORMAT_USHORT, {}},
      {"deep.png", testPicture(4, VIPS_FORMAT_USHORT), "", VIPS_FORMAT_UCHAR, {"-d", "u8"}},
      {"flat.png", rgb, "", VIPS_FORMAT_FLOAT, {"-d", "float", "--ext", "tif"}},
      {"byte.png", rgb, "", VIPS_FORMAT_USHORT, {"-d", "u16"}},
      {"palette.png", rgb, "indexed colours converted", VIPS_FORMAT_UCHAR, {}, "[palette]"},
      {"lines.png", rgb[0] > 99, "one-bit samples converted", VIPS_FORMAT_UCHAR, {}, "[bitdepth=1]"},
      {"lines.tif", rgb[0] > 99, "one-bit samples converted", VIPS_FORMAT_UCHAR, {}, "[bitdepth=1]"}};
  for (const Conversion& c : conversions) {
    SCOPED_TRACE(c.input);
    c.picture.write_to_file((path(c.input) + c.packed).c_str());
    std::vector<std::string> words = {"apply", path(c.input), "-o", path("out/")};
    words.insert(words.end(), c.options.begin(), c.options.end());
    const Ending outcome = run(words);
    ASSERT_EQ(outcome.code(), 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find(c.note), std::string::npos) << outcome.errors;
    const fs::path made = fs::path(path("out")) / fs::path(c.input).stem();
    const VImage after = load(made.string() + (c.options.size() > 2 ? ".tif" : fs::path(c.input).extension().string()));
    EXPECT_EQ(after.format(), c.format);
  }
  // White to white, alpha too, within half a level of the coarser depth.
  EXPECT_LE(difference(load(path("deep.png")) / 257, load(path("out/deep.png"))), 0.5 + 1e-6);
  EXPECT_EQ(difference(rgb * 257, load(path("out/byte.png"))), 0);
  EXPECT_LE(difference(rgb / 255, load(path("out/flat.tif"))), 1e-6);
}

// Whose samples would go into 8 bits, too.
TEST_F(Orbel, TakesGreyAndDepthOfAPhotoshopFileFromItsHeader) {
  const std::string head("8BPS\0\1\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\2\0\20\0\1", 26);
  const std::string samples("\0\0\x11\x11\x80\x80\xff\xff", 8);
  std::ofstream(path("in.psd"), std::ios::binary) << head << std::string(14, '\0') << samples;
  const Ending outcome = run({"apply", path("in.psd"), "-o", path("out/")});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  const VImage after = load(path("out/in.tif"));
  EXPECT_EQ(after.bands(), 1);
  EXPECT_EQ(after.format(), VIPS_FORMAT_USHORT);
  EXPECT_EQ(after(1, 1), std::vector<double>{65535});
}

}  // namespace
