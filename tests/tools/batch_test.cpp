// A hundred files of all kinds, and what stands when orbel has been through them and was killed once on its way.

#include <csignal>
#include <functional>
#include <set>

#include "host/filter_entry.h"
#include "orbel_run.h"
#include "pictures/vips_picture.h"
#include "plugin/plugin_run.h"
#include "settings/settings.h"

using namespace orbel;

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
    const std::string plain = "in/plain" + fs::path(name).extension().string();
    save(plain + options, picture);
    fs::rename(plain, "in/" + name);
    cases_.push_back({name, true, lossless});
  }
  void addBad(const std::string& name, const std::string& content) {
    saveText("in/" + name, content);
    cases_.push_back({name, false, false});
  }
  void cut(const std::string& name, const VImage& picture) {
    add(name, picture);
    fs::resize_file("in/" + name, fs::file_size("in/" + name) / 2);
    cases_.back() = {name, false, false};
  }

  void makeFiles() {
    fs::create_directories("in/deeper/x.png");
    const VImage rgb = testPicture(3);
    const VImage rgba = testPicture(4);
    const VImage deep = testPicture(3, VIPS_FORMAT_USHORT);
    VImage described = testPicture(2, VIPS_FORMAT_USHORT).copy();
    described.set("image-description", "exiftool has to copy it");
    for (int i = 0; i < 9; ++i) {
      const std::string n = std::to_string(i);
      add("grey " + n + ".png", testPicture(1));
      add("rgb" + n + ".png", rgb);
      add("zeile\n" + n + ".png", deep);
      add("größe" + n + ".png", rgba);
      add("grey16-" + n + ".tif", described);
      add("float" + n + ".tif", testPicture(3, VIPS_FORMAT_FLOAT));
      add("deeper/ascii" + n + ".ppm", rgb);
      add("photo" + n + ".jpg", rgb, false);
      add("web" + n + ".webp", rgba, false);
      cut("cut" + n + ".png", deep);
    }
    add("inks.tif", rgba.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK)), false);
    add("dot.png", rgb.crop(0, 0, 1, 1));
    add("strip.png", rgb.replicate(79, 1).crop(0, 0, 20000, 8));
    add("palette.png", rgb, true, "[palette]");
    add("tall.png", testPicture(1).replicate(1, 79).crop(0, 0, 8, 20000));
    cut("cut.jpg", rgb);
    cut("cut.tif", rgb);
    addBad("empty.jpg", "");
    addBad("text.png", "no picture at all\n");
    addBad("inked.psd", "8BPS and nothing more");
    ASSERT_EQ(cases_.size(), 100U);
  }

  static bool isWritten(const Case& c) { return fs::exists("out/" + c.name); }
  std::ptrdiff_t outputs() const { return std::count_if(cases_.begin(), cases_.end(), isWritten); }

  std::vector<Case> cases_;
};

VImage decoded(const std::string& name) { return imageOf(loadPicture(name)); }

// By the module, as a host plays it: the engine has to give the same samples.
VImage equalized(const std::string& name) {
  Settings settings;
  setBands(settings, "", *bandWord("gain"), contrast);
  const Picture picture = pictureOf(decoded(name).copy_memory(), "");
  const int depth = picture.samples() == SampleType::bytes ? 8 : 32;
  runThroughPlugin(PluginMain, settings.run, depth, picture.record(), picture.record(), {});
  return imageOf(picture);
}

TEST_F(Trial, LeavesWholeOutputsALineForEachFailureAndNothingElseChanged) {
  makeFiles();
  auto expected = files();
  const std::string line = std::string("apply -r in -o out -j 2 --contrast ") + contrast;

  // Killed with no chance to clean up: the processes of the files in hand do that.
  const pid_t process = start(split(line));
  await([&] { return outputs() >= 30; });
  kill(process, SIGKILL);
  EXPECT_TRUE(WIFSIGNALED(finish(process).status));
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const std::ptrdiff_t early = outputs();
  EXPECT_GE(early, 30);
  EXPECT_LT(early, 85) << "it was killed too late to tell anything";

  // Somebody's own file, newer than the input.
  Case& taken = *std::find_if_not(cases_.begin(), cases_.end(), isWritten);
  saveText("out/" + taken.name, "precious");
  expected["out/" + taken.name] = "precious";

  const Ending ending = run(line + " -u");
  EXPECT_EQ(ending.code(), 1);
  std::ptrdiff_t failures = 0;
  for (const Case& c : cases_) {
    if (&c == &taken) continue;
    SCOPED_TRACE(c.name);
    EXPECT_EQ(isWritten(c), c.good);
    if (c.good) {
      expected["out/" + c.name] = contentOf("out/" + c.name);
      const VImage after = decoded("out/" + c.name);
      const VImage source = decoded("in/" + c.name);
      EXPECT_EQ(after.width(), source.width());
      EXPECT_EQ(after.height(), source.height());
      EXPECT_TRUE(!c.lossless || difference(after, equalized("in/" + c.name)) == 0);
    } else {
      ++failures;
      EXPECT_TRUE(contains(ending.errors, "orbel: in/" + c.name + ": "));
    }
  }
  EXPECT_TRUE(files() == expected) << "a file has changed, or is left over";
  std::ptrdiff_t lines = 0;
  std::istringstream errors(ending.errors);
  for (std::string said; std::getline(errors, said);) lines += begins(said, "orbel: in/") ? 1 : 0;
  EXPECT_EQ(lines, failures);
}

TEST_F(Orbel, NamesOutputsByFolderPatternAndSuffixAndRefusesWhatIsThere) {
  for (const char* name : {"in", "dots", "loops", "dots/c.2.png_original"}) fs::create_directory(name);
  for (const char* name : {"in/a.png", "in/b.tif", "in/b.png", "dots/c.1.png", "dots/c.2.png"}) {
    save(name, testPicture(3));
  }
  fs::create_symlink("loop.png", "loops/loop.png");
  fs::create_symlink("c.1.png", "dots/link.png");
  struct Naming {
    const char* line;
    int code;
    std::set<std::string> outputs;
  };
  const Naming namings[] = {
      {"in/a.png in/b.tif", 0, {"in/a_orbel.png", "in/b_orbel.tif"}},
      {"-r loops in/a.png -o t", 1, {"t/a.png"}},  // a loop of links, and nothing else
      {"-r in", 1, {"in/b_orbel.png"}},            // what is there by now is refused, and its results are left alone
      {"in/a.png in/b.tif -o new", 0, {"new/a.png", "new/b.tif"}},
      {"in/a.png in/b.tif -o new", 1, {}},
      {"in/a.png in/b.tif -o new -u", 0, {}},
      {"in/a.png in/b.tif -o x/%s-%s.jpg", 0, {"x/a-a.jpg", "x/b-b.jpg"}},
      {"in/a.png -o y --ext webp", 0, {"y"}},
      {"dots/c.1.png dots/c.2.png -o p/%s", 0, {"p/c.1.png", "p/c.2.png"}},
      {"dots/c.1.png dots/c.2.png -o p/%s_s --ext tif", 0, {"p/c.1_s.tif", "p/c.2_s.tif"}},
      {"dots/c.1.png dots/c.1_orbel.png", 0, {"dots/c.1_orbel.png"}},  // by the same wildcard
      {"in/a.png in/b.tif -o z.png", 2, {}},
      {"in/b.tif in/b.png -o one/ --ext png", 2, {}},  // one name for two
      {"-r in -o tree/%s_t.png", 2, {}},
      {"in/b.tif in/b.png -o one/%s-%e --ext png", 0, {"one/b-tif.png", "one/b-png.png"}},
      {"-r dots -o dots/sub",
       0,
       {"dots/sub/c.1.png", "dots/sub/c.1_orbel.png", "dots/sub/c.2.png", "dots/sub/link.png"}},
      {"-r dots -o dots/sub -f", 0, {}},  // results are no inputs
      {"-r dots -o dots/sub/%s_t",
       0,
       {"dots/sub/c.1_t.png", "dots/sub/c.1_orbel_t.png", "dots/sub/c.2_t.png", "dots/sub/link_t.png"}},
      {"-r one -o one/%s_t", 0, {"one/b-tif_t.png", "one/b-png_t.png"}},
      {"-r one -o one/%s_t -f", 0, {}},
      {"in/a.png --in-place --contrast 0", 0, {"in/a.png_original"}},
      {"in/b.tif --in-place --no-backup --contrast 0", 0, {}},
      {"dots/link.png dots/c.1.png --in-place", 1, {"dots/link.png_original"}},  // one file by two names
      {"dots/c.2.png --in-place", 1, {}},                                        // a folder is in the original's way
      {"dots/c.2.png --in-place --ext tif", 2, {}},
      {"dots/c.2.png --in-place -u", 2, {}},
      {"in/a.png in/b.tif -u", 0, {}},
      {"in/a.png in/b.tif -o in/%s.png -u", 1, {}},  // a.png is an input itself
      {"in/a.png --in-place --no-backup --recipe", 0, {"in/a.png.toml"}},
      {"in/a.png --in-place --no-backup --recipe", 1, {}},  // the recipe isn't the picture
      {"in/a.png -o dry.png --dry-run", 0, {}},
      {"in/a.png -o recipe.png --recipe", 0, {"recipe.png", "recipe.png.toml"}},
  };
  for (const Naming& naming : namings) {
    SCOPED_TRACE(naming.line);
    const auto before = files();
    const Ending ending = run(std::string("apply ") + naming.line);
    EXPECT_EQ(ending.code(), naming.code) << ending.errors;
    std::set<std::string> made;
    for (const auto& [name, content] : files()) {
      if (before.count(name) == 0) made.insert(name);
    }
    EXPECT_EQ(made, naming.outputs);
  }
}

// Two would take more than there is: a temporary file stands for each that is in work.
TEST_F(Orbel, WaitsForTheMemoryThatAnotherHas) {
  for (const char* name : {"a.pgm", "b.pgm", "c.pgm"}) save(name, testPicture(1).replicate(4, 4));
  const Watch watch;
  runWell("apply a.pgm b.pgm c.pgm -j 3 --memory 50M --radius 9 --edge on");
  int inWork = 0;
  int begun = 0;
  for (const auto& [appears, name] : watch.events()) {
    if (!begins(name, ".orbel-")) continue;
    inWork += appears ? 1 : -1;
    begun += appears ? 1 : 0;
    EXPECT_LE(inWork, 1);
  }
  EXPECT_EQ(begun, 3);
}

// Each step follows those before it.
TEST_F(Orbel, UpdatesWhatIsOlderOrMadeOtherwise) {
  const auto set = [](const std::string& file, int seconds) {
    fs::last_write_time(file, fs::last_write_time("in.png") + std::chrono::seconds(seconds));
  };
  const auto nothing = [] {};
  struct Step {
    const char* options;
    bool isMade;
    std::function<void()> before;
  };
  for (const char* extension : {"png", "jpg", "tif", "webp", "heic", "ppm"}) {
    const std::string out = std::string("out.") + extension;
    const bool isForgetful = extension == std::string("ppm");  // but for its recipe
    const Step steps[] = {
        {"-p clarity", true, nothing},
        {"-p clarity", false, nothing},
        {"-p clarity --mask mask.png", true, nothing},
        {"-p clarity --mask mask.png", false, nothing},
        {"-p clarity --mask mask.png", true, [] { save("mask.png", testPicture(1).invert()); }},
        {"-p crisp -d u8", true, nothing},
        {"-p crisp", true, nothing},
        {"-p crisp", false, [&] { set(out, 0); }},
        {"-p crisp", true, [&] { set(out, -1); }},
        {"-p landscape", false, [&] { set(out, 100); }},  // somebody has worked on it
        {"-p landscape -f", true, nothing},
        {"-p crisp", false, [&] { fs::remove(out + ".toml"), save(out, testPicture(3)); }},  // somebody's own
        {"-p crisp", true, [&] { set(out, -1); }}};
    save("in.png", testPicture(3));
    save("mask.png", testPicture(1));
    set("in.png", -1000);
    set("mask.png", 0);
    int number = 0;
    for (const Step& step : steps) {
      SCOPED_TRACE(out + ", step " + std::to_string(++number) + ": " + step.options);
      step.before();
      const Ending ending =
          runWell("apply in.png -u -o " + out + " " + step.options + (isForgetful ? " --recipe" : ""));
      EXPECT_EQ(contains(ending.output, " -> "), step.isMade) << ending.output;
    }
  }
}

TEST_F(Orbel, ConvertsDepthsAndColourModelsWithANote) {
  struct Conversion {
    const char* input;
    VImage picture;
    const char* packed;
    const char* options;
    const char* output;
    VipsBandFormat format;
    const char* note;
  };
  const VImage rgb = testPicture(3);
  const VImage inks = testPicture(4).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK));
  const VImage lab = rgb.colourspace(VIPS_INTERPRETATION_LABS);
  const VImage deep = testPicture(4, VIPS_FORMAT_USHORT);
  VImage paged = rgb.join(deep.extract_band(0, VImage::option()->set("n", 3)) / 257, VIPS_DIRECTION_VERTICAL)
                     .cast(VIPS_FORMAT_UCHAR);
  paged.set(VIPS_META_PAGE_HEIGHT, rgb.height());
  const Conversion conversions[] = {
      {"inks.tif", inks, "", "", "inks.tif", VIPS_FORMAT_UCHAR, "inks (CMYK) converted"},
      {"lab.tif", lab, "", "", "lab.tif", VIPS_FORMAT_USHORT, "Lab converted"},
      {"deep.png", deep, "", " -d u8", "deep.png", VIPS_FORMAT_UCHAR, ""},
      {"flat.png", rgb, "", " -d float --ext tif", "flat.tif", VIPS_FORMAT_FLOAT, ""},
      {"byte.png", rgb, "", " -d u16", "byte.png", VIPS_FORMAT_USHORT, ""},
      {"palette.png", rgb, "[palette]", "", "palette.png", VIPS_FORMAT_UCHAR, "indexed colours converted"},
      {"lines.png", rgb[0] > 99, "[bitdepth=1]", "", "lines.png", VIPS_FORMAT_UCHAR, "one-bit samples converted"},
      {"fax.tif", rgb[0] > 99, "[bitdepth=1,compression=ccittfax4]", "", "fax.tif", VIPS_FORMAT_UCHAR,
       "its compression (CCITT Group 4) isn't kept"},
      {"paged.tif", paged, "", " --page 2", "paged.tif", VIPS_FORMAT_UCHAR, ""},
      {"lines.tif", rgb[0] > 99, "[bitdepth=1]", "", "lines.tif", VIPS_FORMAT_UCHAR, "one-bit samples converted"}};
  save("fake.jpg", rgb);
  fs::rename("fake.jpg", "fake.png");
  const Ending misnamed = runWell("apply -o out/ fake.png");
  EXPECT_TRUE(contains(misnamed.errors, "is a JPEG file by its content, and comes back as PNG")) << misnamed.errors;
  for (const Conversion& c : conversions) {
    SCOPED_TRACE(c.input);
    save(std::string(c.input) + c.packed, c.picture);
    const Ending ending = runWell(std::string("apply -o out/ ") + c.input + c.options);
    EXPECT_TRUE(contains(ending.errors, c.note)) << ending.errors;
    EXPECT_EQ(load(std::string("out/") + c.output).format(), c.format);
  }
  // White to white, alpha too, within half a level of the coarser depth.
  EXPECT_LE(difference(load("deep.png") / 257, load("out/deep.png")), 0.5 + 1e-6);
  EXPECT_EQ(difference(rgb * 257, load("out/byte.png")), 0);
  EXPECT_LE(difference(rgb / 255, load("out/flat.tif")), 1e-6);
  EXPECT_EQ(difference(paged.crop(0, 256, 256, 256), load("out/paged.tif")), 0);
}

// Whose samples would go into 8 bits, too.
TEST_F(Orbel, TakesGreyAndDepthOfAPhotoshopFileFromItsHeader) {
  const std::string head("8BPS\0\1\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\2\0\20\0\1", 26);
  const std::string samples("\0\0\x11\x11\x80\x80\xff\xff", 8);
  saveText("in.psd", head + std::string(14, '\0') + samples);
  runWell("apply in.psd -o out/");
  const VImage after = load("out/in.tif");
  EXPECT_EQ(after.bands(), 1);
  EXPECT_EQ(after.format(), VIPS_FORMAT_USHORT);
  EXPECT_EQ(after(1, 1), std::vector<double>{65535});
}

}  // namespace
