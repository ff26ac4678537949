// Runs the built program on files, as people do, and looks at what it leaves behind.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <thread>

#include "orbel_run.h"

namespace {

struct Kind {
  const char* extension;
  int bands;
  VipsBandFormat format;
  double tolerance;
};
std::ostream& operator<<(std::ostream& out, const Kind& kind) {
  return out << kind.extension << ' ' << kind.bands << " bands, format " << kind.format;
}
class Kinds : public Orbel, public testing::WithParamInterface<Kind> {};

TEST_P(Kinds, ComeBackAsTheyWereAtUnitGains) {
  const auto [extension, bands, format, tolerance] = GetParam();
  const std::string in = path(std::string("in.") + extension);
  const std::string out = path(std::string("out.") + extension);
  testPicture(bands, format).write_to_file(in.c_str());
  const Ending outcome = run({in, out});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  const VImage before = load(in);
  const VImage after = load(out);
  EXPECT_EQ(after.bands(), before.bands());
  EXPECT_EQ(after.format(), before.format());
  EXPECT_EQ(after.interpretation(), before.interpretation());
  EXPECT_LE(difference(before, after), tolerance);
}

// Gains of 0, no residual, and a half on top leave one flat value: white / 2 on the scale of each format.
TEST_P(Kinds, ShowTheirWhiteAndKeepTheirAlpha) {
  const auto [extension, bands, format, tolerance] = GetParam();
  const std::string file = path(std::string("a file [x=1] ü.") + extension);
  testPicture(bands, format).write_to_file(path(std::string("plain.") + extension).c_str());
  fs::rename(path(std::string("plain.") + extension), file);
  const VImage before = vips::VImage::new_from_source(vips::VSource::new_from_file(file.c_str()), "").copy_memory();
  const Ending outcome =
      run({file, file, "-f", "--set", "CON1=0", "--contrast", "1,0,0,0,0", "--factor", "0", "--half", "--planes"});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  const VImage after = vips::VImage::new_from_source(vips::VSource::new_from_file(file.c_str()), "").copy_memory();
  const double middle = format == VIPS_FORMAT_UCHAR ? 128 : format == VIPS_FORMAT_USHORT ? 32768 : 0.5;
  const int colours = bands < 3 ? 1 : 3;
  for (int band = 0; band < colours; ++band) {
    EXPECT_EQ(after[band].min(), middle);
    EXPECT_EQ(after[band].max(), middle);
  }
  if (bands != colours) {
    EXPECT_EQ(difference(before[bands - 1], after[bands - 1]), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Kinds,
                         testing::Values(Kind{"png", 3, VIPS_FORMAT_UCHAR, 0}, Kind{"png", 1, VIPS_FORMAT_UCHAR, 0},
                                         Kind{"png", 4, VIPS_FORMAT_UCHAR, 0}, Kind{"tif", 2, VIPS_FORMAT_UCHAR, 0},
                                         Kind{"ppm", 3, VIPS_FORMAT_UCHAR, 0}, Kind{"pgm", 1, VIPS_FORMAT_USHORT, 0},
                                         Kind{"png", 4, VIPS_FORMAT_USHORT, 0}, Kind{"png", 1, VIPS_FORMAT_USHORT, 0},
                                         Kind{"tif", 3, VIPS_FORMAT_USHORT, 0}, Kind{"tif", 3, VIPS_FORMAT_FLOAT, 1e-6},
                                         Kind{"tif", 4, VIPS_FORMAT_FLOAT, 1e-6},
                                         Kind{"pfm", 1, VIPS_FORMAT_FLOAT, 1e-6},
                                         Kind{"pfm", 3, VIPS_FORMAT_FLOAT, 1e-6}));

class Metadata : public Orbel, public testing::WithParamInterface<const char*> {};

TEST_P(Metadata, GoesThroughUntouched) {
  const std::string in = path(std::string("in.") + GetParam());
  const std::string out = path(std::string("out.") + GetParam());
  VImage picture = testPicture(3, VIPS_FORMAT_UCHAR);
  VipsBlob* profile = nullptr;
  ASSERT_EQ(vips_profile_load("p3", &profile, nullptr), 0);
  std::size_t size = 0;
  const void* bytes = vips_blob_get(profile, &size);
  vips_image_set_blob_copy(picture.get_image(), VIPS_META_ICC_NAME, bytes, size);
  vips_area_unref(VIPS_AREA(profile));
  const std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rating>5</rating></x:xmpmeta>";
  vips_image_set_blob_copy(picture.get_image(), VIPS_META_XMP_NAME, xmp.data(), xmp.size());
  picture.set("exif-ifd0-Artist", "Ada (Ada, ASCII, 4 components, 4 bytes)");
  picture.set(VIPS_META_ORIENTATION, 6);
  picture.copy(VImage::option()->set("xres", 11.811)->set("yres", 11.811)).write_to_file(in.c_str());

  const Ending outcome = run({in, out, "--contrast", "150"});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  const VImage before = load(in);
  const VImage after = load(out);
  ASSERT_NE(before.get_typeof(VIPS_META_ICC_NAME), 0UL);
  ASSERT_NE(before.get_typeof(VIPS_META_XMP_NAME), 0UL);
  int compared = 0;
  for (const char* name : {VIPS_META_ICC_NAME, VIPS_META_XMP_NAME, VIPS_META_EXIF_NAME}) {
    if (before.get_typeof(name) == 0) continue;
    ASSERT_NE(after.get_typeof(name), 0UL) << name;
    std::size_t sizes[2] = {};
    const void* blobs[2] = {before.get_blob(name, &sizes[0]), after.get_blob(name, &sizes[1])};
    EXPECT_EQ(std::string(static_cast<const char*>(blobs[0]), sizes[0]),
              std::string(static_cast<const char*>(blobs[1]), sizes[1]))
        << name;
    ++compared;
  }
  EXPECT_GE(compared, 2);
  // The library's PNG files hold no orientation.
  if (GetParam() != std::string("png")) {
    EXPECT_EQ(before.get_int(VIPS_META_ORIENTATION), 6);
    EXPECT_EQ(after.get_int(VIPS_META_ORIENTATION), 6);
  }
  EXPECT_EQ(after.xres(), before.xres());
  EXPECT_GT(difference(before, after), 0);
}
INSTANTIATE_TEST_SUITE_P(Files, Metadata, testing::Values("jpg", "png", "tif", "webp"));

// A thumbnail shows the picture beside which it stands, at most 160 pixels a side.
TEST_F(Orbel, RenewsThumbnails) {
  VImage picture = testPicture(3, VIPS_FORMAT_UCHAR).replicate(2, 1).copy_memory();
  VipsBlob* const jpeg = VImage::black(160, 80).jpegsave_buffer();
  std::size_t size = 0;
  const void* bytes = vips_blob_get(jpeg, &size);
  vips_image_set_blob_copy(picture.get_image(), "jpeg-thumbnail-data", bytes, size);
  vips_area_unref(VIPS_AREA(jpeg));
  picture.write_to_file(path("in.jpg").c_str());
  for (const char* out : {"out.jpg", "out.webp", "out.tif"}) {
    const Ending outcome = run({path("in.jpg"), path(out), "--contrast", "0", "--factor", "0", "--half", "--planes"});
    ASSERT_EQ(outcome.code(), 0) << outcome.errors;
    const VImage after = load(path(out));
    if (after.get_typeof("jpeg-thumbnail-data") == 0) {
      EXPECT_EQ(out, std::string("out.tif"));
      continue;
    }
    const void* const thumbnail = after.get_blob("jpeg-thumbnail-data", &size);
    const VImage shown = VImage::new_from_buffer(thumbnail, size, "");
    EXPECT_EQ(shown.width(), 160);
    EXPECT_EQ(shown.height(), 80);
    EXPECT_LE((shown - 128).abs().max(), 2) << out;
  }
}

TEST_F(Orbel, RecipesMakeThePictureAgain) {
  testPicture(3, VIPS_FORMAT_UCHAR).write_to_file(path("in.png").c_str());
  const std::vector<std::string> first = {path("in.png"), path("out.png"), "--factor", "90",      "--mix",
                                          "80",           "--ref-edge",    "300",      "--recipe"};
  Ending outcome = run(first);
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  outcome = run({path("in.png"), path("again.png"), "-p", path("out.png.toml")});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  EXPECT_EQ(difference(load(path("out.png")), load(path("again.png"))), 0);
  EXPECT_GT(difference(load(path("in.png")), load(path("again.png"))), 0);

  fs::remove(path("out.png"));
  outcome = run(first);
  EXPECT_EQ(outcome.code(), 1);
  EXPECT_NE(outcome.errors.find(path("out.png.toml") + ": is there already"), std::string::npos) << outcome.errors;
  EXPECT_FALSE(fs::exists(path("out.png")));
}

// As a shell with the completion loaded asks for it.
TEST_F(Orbel, CompletesInBash) {
  const std::vector<std::pair<std::string, std::string>> lines = {{"orbel pre", "presets\n"},
                                                                  {"orbel apply --contr", "--contrast\n"},
                                                                  {"orbel presets sh", "show\n"},
                                                                  {"orbel bands --mem", "--memory\n"},
                                                                  {"orbel in.png out.png --contr", "--contrast\n"}};
  for (const auto& [line, expected] : lines) {
    const std::string words = "COMP_WORDS=(" + line + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1));";
    const std::string script = "cd " + folder_.string() + "; source <(" + program_ + " completion bash); " + words +
                               " _orbel; printf '%s\\n' \"${COMPREPLY[@]}\" >words";
    ASSERT_EQ(std::system(("bash -c '" + std::regex_replace(script, std::regex("'"), "'\\''") + "'").c_str()), 0);
    EXPECT_EQ(contentOf(path("words")), expected) << line;
  }
}

// What can't be done ends with one line about the right file, and leaves the target and its folder as they were.
struct Trouble {
  const char* name;
  void (*prepare)(const std::string& in);
  const char* target;
  const char* says;
  rlim_t fileLimit = RLIM_INFINITY;
};
std::ostream& operator<<(std::ostream& out, const Trouble& trouble) { return out << trouble.name; }

void good(const std::string& in) { testPicture(3, VIPS_FORMAT_UCHAR).write_to_file(in.c_str(), VImage::option()); }
void absent(const std::string&) {}
void folder(const std::string& in) { fs::create_directory(in); }
void empty(const std::string& in) { std::ofstream stream(in); }
void text(const std::string& in) { std::ofstream(in) << "no picture at all\n"; }
void shortened(const std::string& in) {
  good(in);
  fs::resize_file(in, fs::file_size(in) * 2 / 3);
}
void shortenedJpeg(const std::string& in) {
  const std::string jpeg = in + ".jpg";
  shortened(jpeg);
  fs::rename(jpeg, in);
}
void manyChannels(const std::string& in) { testPicture(6, VIPS_FORMAT_UCHAR).tiffsave(in.c_str()); }
void paged(const std::string& in) {
  const VImage picture = testPicture(3, VIPS_FORMAT_UCHAR).copy();
  vips_image_set_int(picture.get_image(), VIPS_META_PAGE_HEIGHT, 128);
  picture.tiffsave(in.c_str());
}
void integers(const std::string& in) { testPicture(3, VIPS_FORMAT_INT).tiffsave(in.c_str()); }
void withAlpha(const std::string& in) { testPicture(4, VIPS_FORMAT_UCHAR).write_to_file(in.c_str()); }
void deep(const std::string& in) { testPicture(3, VIPS_FORMAT_USHORT).write_to_file(in.c_str()); }
void real(const std::string& in) { testPicture(3, VIPS_FORMAT_FLOAT).tiffsave(in.c_str()); }

// The file that a function was loaded from.
std::string libraryOf(void* function) {
  Dl_info info{};
  return dladdr(function, &info) == 0 ? "" : info.dli_fname;
}

// Above the 1 kB that clang's OpenMP runtime writes for itself when it is loaded, and below any of the pictures.
constexpr rlim_t fullDisk = 1200;

class Troubles : public Orbel, public testing::WithParamInterface<Trouble> {};

TEST_P(Troubles, LeaveTheTargetAsItWas) {
  const Trouble& trouble = GetParam();
  const std::string in = path("in.png");
  const std::string out = path(trouble.target);
  trouble.prepare(in);
  std::ofstream(out) << "precious";
  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit limit{std::min(trouble.fileLimit, old.rlim_max), old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  const pid_t process = start({in, out, "-f"});
  setrlimit(RLIMIT_FSIZE, &old);
  const Ending outcome = finish(process);
  EXPECT_EQ(outcome.code(), 1);
  EXPECT_EQ(outcome.errors.rfind("orbel: " + folder_.string(), 0), 0U) << outcome.errors;
  EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  EXPECT_NE(outcome.errors.find(trouble.says), std::string::npos) << outcome.errors;
  EXPECT_EQ(contentOf(out), "precious");
  EXPECT_FALSE(temporaryIsThere());
}
INSTANTIATE_TEST_SUITE_P(Files, Troubles,
                         testing::Values(Trouble{"Missing", absent, "out.png", "in.png: No such file"},
                                         Trouble{"Folder", folder, "out.png", "in.png: is a folder; -r takes"},
                                         Trouble{"Empty", empty, "out.png", "in.png: the file is empty"},
                                         Trouble{"Text", text, "out.png", "in.png: "},
                                         Trouble{"Cut", shortened, "out.png", "in.png: "},
                                         Trouble{"CutJpeg", shortenedJpeg, "out.png", "in.png: "},
                                         Trouble{"Channels", manyChannels, "out.tif", "6 channels"},
                                         Trouble{"Paged", paged, "out.tif", "several pages"},
                                         Trouble{"Integers", integers, "out.tif", "sample type (int)"},
                                         Trouble{"Extension", good, "out.xyz", "out.xyz: 'xyz' doesn't tell"},
                                         Trouble{"AlphaToJpeg", withAlpha, "out.jpg", "JPEG files hold no alpha"},
                                         Trouble{"DeepToJpeg", deep, "out.jpg", "JPEG files hold no 16-bit"},
                                         Trouble{"FloatToPng", real, "out.png", "PNG files hold no float"},
                                         Trouble{"FullPng", good, "out.png", "out.png: File too large\n", fullDisk},
                                         Trouble{"FullTiff", good, "out.tif", "out.tif: File too large\n", fullDisk},
                                         Trouble{"FullJp2", good, "out.jp2", "out.jp2: File too large\n", fullDisk},
                                         Trouble{"FullJpeg", good, "out.jpg", "out.jpg: File too large\n", fullDisk}),
                         [](const auto& trouble) { return std::string(trouble.param.name); });

TEST_F(Orbel, NamesTheTargetThatCannotBeWritten) {
  good(path("in.png"));
  const Ending outcome = run({path("in.png"), path("nowhere/out.png")});
  EXPECT_EQ(outcome.code(), 1);
  EXPECT_EQ(outcome.errors.rfind("orbel: " + path("nowhere/out.png") + ": ", 0), 0U) << outcome.errors;
}

TEST_F(Orbel, KeepsPermissionsAndFollowsLinks) {
  good(path("real.png"));
  fs::create_symlink("real.png", path("link.png"));
  chmod(path("real.png").c_str(), 0604);
  const std::string before = contentOf(path("real.png"));
  const Ending outcome = run({path("link.png"), path("link.png"), "-f", "--contrast", "300"});
  ASSERT_EQ(outcome.code(), 0) << outcome.errors;
  EXPECT_TRUE(fs::is_symlink(path("link.png")));
  EXPECT_NE(contentOf(path("real.png")), before);
  struct stat file {};
  ASSERT_EQ(stat(path("real.png").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 07777, 0604U);
}

TEST_F(Orbel, LeavesNothingBehindWhenItIsStopped) {
  testPicture(3, VIPS_FORMAT_UCHAR).replicate(16, 8).write_to_file(path("in.png").c_str());
  const pid_t process = start({path("in.png"), path("out.png")});
  for (int i = 0; i < 6000 && !temporaryIsThere(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_TRUE(temporaryIsThere());
  kill(process, SIGTERM);
  const Ending outcome = finish(process);
  EXPECT_EQ(outcome.code(), 130);
  EXPECT_EQ(outcome.errors, "orbel: " + path("in.png") + ": interrupted\n");
  EXPECT_FALSE(temporaryIsThere());
  EXPECT_FALSE(fs::exists(path("out.png")));
}

TEST_F(Orbel, NamesTheOptionAndTheValueThatItDoesNotUnderstand) {
  const std::vector<std::vector<std::string>> wrong = {
      {"--contrast", "1,2"}, {"--radius", "1,2,3,4,x"}, {"--threshold", ""},  {"--edges", "maybe"},
      {"--factor", "inf"},   {"--cross", "1.5"},        {"--set", "CON6=1"},  {"--set", "CON1"},
      {"--set", "HALF=2"},   {"--set", "WDTH=3e9"},     {"--memory", "-1"},   {"--max-minutes", "nan"},
      {"--depth", "0"},      {"--progress", "1"},       {"--host-depth", ""}, {"--ext", "xyz"}};
  for (const auto& option : wrong) {
    const Ending outcome = run({"in.png", "out.png", option[0], option[1]});
    EXPECT_EQ(outcome.code(), 2) << option[0];
    EXPECT_EQ(outcome.errors.rfind("orbel: " + option[0], 0), 0U) << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  }
}

// 3 * 4001 * 4001 taps on 8 megapixels and more: hours, on up to 200 cores.
TEST_F(Orbel, RefusesHoursOfWorkUnlessTheyAreAskedFor) {
  testPicture(1, VIPS_FORMAT_UCHAR).replicate(16, 8).write_to_file(path("in.png").c_str());
  std::vector<std::string> arguments = {path("in.png"), path("out.png"), "--radius", "500", "--edge", "on", "--planes"};
  const Ending refused = run(arguments);
  EXPECT_EQ(refused.code(), 1);
  EXPECT_EQ(refused.errors.rfind("orbel: " + path("in.png") + ": these settings ask for about ", 0), 0U)
      << refused.errors;
  EXPECT_FALSE(fs::exists(path("out.png")));

  arguments.insert(arguments.end(), {"--max-minutes", "0"});
  const pid_t process = start(arguments);
  for (int i = 0; i < 6000 && !temporaryIsThere(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_TRUE(temporaryIsThere()) << "the work has not begun";
  kill(process, SIGTERM);
  finish(process);
}

TEST_F(Orbel, NamesTheRadiusThatNoRunHasRoomFor) {
  good(path("in.png"));
  const Ending outcome = run({path("in.png"), path("out.png"), "--radius", "9000"});
  EXPECT_EQ(outcome.code(), 1);
  // 65535 - 128 samples in band 2, half of them on either side, four times the radius.
  EXPECT_EQ(outcome.errors, "orbel: " + path("in.png") +
                                ": --radius 9000 in band 2 is too large for edge protection on this picture; at most "
                                "8175.75\n");
}

struct ModuleFile {
  const char* name;
  void (*prepare)(const std::string& file);
  const char* says;  // null: runs
};

TEST_F(Orbel, RunsThePluginThatItIsGiven) {
  const std::vector<ModuleFile> modules = {
      {"good", [](const std::string& file) { fs::copy_file(ORBEL_MODULE, file); }, nullptr},
      {"missing", absent, "can't load this plug-in: cannot open shared object file: No such file or directory"},
      {"folder", folder, "can't load this plug-in: "},
      {"empty", empty, "can't load this plug-in: file too short"},
      {"text", text, "can't load this plug-in: "},
      {"program", [](const std::string& file) { fs::copy_file(ORBEL_PROGRAM, file); }, "can't load this plug-in: "},
      {"library",
       [](const std::string& file) {
         fs::copy_file(libraryOf(reinterpret_cast<void*>(static_cast<double (*)(double)>(&std::erf))), file);
       },
       "this is no plug-in, it has no PluginMain"}};
  good(path("in.png"));
  for (const ModuleFile& module : modules) {
    const std::string file = path(std::string(module.name) + ".so");
    module.prepare(file);
    const Ending outcome = run({path("in.png"), path("out.png"), "--plugin", file});
    EXPECT_EQ(outcome.code(), module.says == nullptr ? 0 : 3) << module.name;
    const std::string line = module.says == nullptr ? "" : "orbel: " + file + ": " + module.says;
    EXPECT_EQ(outcome.errors.substr(0, line.size()), line) << module.name;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), line.empty() ? 0 : 1) << outcome.errors;
    EXPECT_EQ(fs::remove(path("out.png")), module.says == nullptr) << module.name;
  }
}

// Wherever it is called from.
TEST_F(Orbel, RunsThePluginBesideIt) {
  good(path("in.png"));
  program_ = path("orbel");
  fs::copy_file(ORBEL_PROGRAM, program_);
  const Ending alone = run({path("in.png"), path("out.png")});
  EXPECT_EQ(alone.code(), 3);
  EXPECT_EQ(alone.errors.rfind("orbel: " + path("OrbelBandEqualizer.so") + ": can't load", 0), 0U) << alone.errors;
  fs::copy_file(ORBEL_MODULE, path("OrbelBandEqualizer.so"));
  fs::create_symlink(program_, path("link"));
  program_ = path("link");
  const Ending outcome = run({path("in.png"), path("out.png")});
  EXPECT_EQ(outcome.code(), 0) << outcome.errors;
}

}  // namespace
