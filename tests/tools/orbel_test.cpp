// Runs the built program on files, as people do, and looks at what it leaves behind.

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>

#include "files/failure.h"
#include "files/target_file.h"
#include "orbel_run.h"
#include "pictures/contact_sheet.h"
#include "pictures/samples.h"
#include "pictures/vips_picture.h"

using namespace orbel;

namespace {

struct Kind {
  const char* extension;
  int bands;
  VipsBandFormat format;
};
std::ostream& operator<<(std::ostream& out, const Kind& kind) {
  return out << kind.extension << ' ' << kind.bands << " bands, format " << kind.format;
}
class Kinds : public Orbel, public testing::WithParamInterface<Kind> {};

// As they were at unit gains. Gains of 0, no residual, and a half on top leave one flat value: white / 2 on the scale
// of each format, and the alpha.
TEST_P(Kinds, ComeBackAndShowTheirWhite) {
  const auto [extension, bands, format] = GetParam();
  const std::string plain = std::string("plain.") + extension;
  const std::string file = std::string("a file [x=1] ü.") + extension;
  save(plain, testPicture(bands, format));
  const VImage before = load(plain);
  runWell(Words{plain, "same." + plain});
  const VImage same = load("same." + plain);
  EXPECT_EQ(same.bands(), before.bands());
  EXPECT_EQ(same.format(), before.format());
  EXPECT_EQ(same.interpretation(), before.interpretation());
  EXPECT_LE(difference(before, same), format == VIPS_FORMAT_FLOAT ? 1e-6 : 0);

  fs::rename(plain, file);
  runWell(Words{file, file, "-f", "--set", "CON1=0", "--contrast", "1,0,0,0,0", "--factor", "0", "--half", "--planes"});
  fs::rename(file, plain);
  const VImage after = load(plain);
  const double middle = format == VIPS_FORMAT_UCHAR ? 128 : format == VIPS_FORMAT_USHORT ? 32768 : 0.5;
  const int colours = bands < 3 ? 1 : 3;
  for (int band = 0; band < colours; ++band) EXPECT_EQ((after[band] - middle).abs().max(), 0);
  EXPECT_TRUE(bands == colours || difference(before[bands - 1], after[bands - 1]) == 0);
}

INSTANTIATE_TEST_SUITE_P(Files, Kinds,
                         testing::Values(Kind{"png", 1, VIPS_FORMAT_UCHAR}, Kind{"png", 4, VIPS_FORMAT_UCHAR},
                                         Kind{"tif", 2, VIPS_FORMAT_UCHAR}, Kind{"ppm", 3, VIPS_FORMAT_UCHAR},
                                         Kind{"pgm", 1, VIPS_FORMAT_USHORT}, Kind{"png", 4, VIPS_FORMAT_USHORT},
                                         Kind{"tif", 3, VIPS_FORMAT_USHORT}, Kind{"tif", 4, VIPS_FORMAT_FLOAT},
                                         Kind{"pfm", 1, VIPS_FORMAT_FLOAT}, Kind{"pfm", 3, VIPS_FORMAT_FLOAT}));

void setBlob(VImage& picture, const char* name, VipsBlob* blob) {
  std::size_t size = 0;
  const void* const bytes = vips_blob_get(blob, &size);
  vips_image_set_blob_copy(picture.get_image(), name, bytes, size);
  vips_area_unref(VIPS_AREA(blob));
}

std::string blobOf(const VImage& picture, const char* name) {
  std::size_t size = 0;
  if (picture.get_typeof(name) == 0) return "";
  const auto* const bytes = static_cast<const char*>(picture.get_blob(name, &size));
  return {bytes, size};
}

class Metadata : public Orbel, public testing::WithParamInterface<const char*> {};

TEST_P(Metadata, GoesThroughUntouched) {
  VImage picture = testPicture(3);
  VipsBlob* profile = nullptr;
  ASSERT_EQ(vips_profile_load("p3", &profile, nullptr), 0);
  setBlob(picture, VIPS_META_ICC_NAME, profile);
  const std::string xmp =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
      "<rdf:Description rdf:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmp:Rating='5'/></rdf:RDF></x:xmpmeta>";
  setBlob(picture, VIPS_META_XMP_NAME, vips_blob_copy(xmp.data(), xmp.size()));
  picture.set("exif-ifd0-Artist", "Ada (Ada, ASCII, 4 components, 4 bytes)");
  picture.set(VIPS_META_ORIENTATION, 6);
  const std::string in = std::string("in.") + GetParam();
  const std::string out = std::string("out.") + GetParam();
  save(in, picture.copy(VImage::option()->set("xres", 11.811)->set("yres", 11.811)));
  runWell(in + " " + out + " --contrast 150");
  const VImage before = imageOf(loadPicture(in));
  const VImage after = imageOf(loadPicture(out));
  for (const char* name : {VIPS_META_ICC_NAME, VIPS_META_EXIF_NAME}) {
    EXPECT_EQ(blobOf(after, name), blobOf(before, name)) << name;
  }
  // What it was made with is said beside the rest, which keeps every byte.
  const std::string packet = blobOf(after, VIPS_META_XMP_NAME);
  const std::size_t own = packet.find(" <rdf:Description rdf:about=\"\" xmlns:orbel=");
  ASSERT_NE(own, std::string::npos);
  EXPECT_EQ(packet.substr(0, own) + packet.substr(packet.find("</rdf:RDF>")), blobOf(before, VIPS_META_XMP_NAME));
  EXPECT_FALSE(blobOf(before, VIPS_META_ICC_NAME).empty());
  EXPECT_FALSE(blobOf(before, VIPS_META_XMP_NAME).empty());
  // The library's PNG files hold no orientation.
  EXPECT_EQ(vips_image_get_orientation(after.get_image()), GetParam() == std::string("png") ? 1 : 6);
  EXPECT_EQ(after.xres(), before.xres());
  EXPECT_NEAR(before.xres(), 11.811, 0.001);
  EXPECT_GT(difference(before, after), 0);
}
INSTANTIATE_TEST_SUITE_P(Files, Metadata, testing::Values("jpg", "png", "tif", "webp", "heic"));

// A thumbnail shows the picture beside which it stands, at most 160 pixels a side.
TEST_F(Orbel, RenewsThumbnails) {
  const char* const thumbnail = "jpeg-thumbnail-data";
  VImage picture = testPicture(3).replicate(2, 1).copy_memory();
  setBlob(picture, thumbnail, VImage::black(160, 80).jpegsave_buffer());
  save("in.jpg", picture);
  for (const std::string out : {"out.jpg", "out.webp"}) {
    for (const std::string options : {"", " --ref-edge 200", " --ref-edge 200 --crop 240x120+7+5"}) {
      runWell("in.jpg " + out + " -f --contrast 20 --factor 50 --planes" + options);
      const std::string jpeg = blobOf(load(out), thumbnail);
      const VImage shown = VImage::new_from_buffer(jpeg, "");
      const VImage expected = load(out).thumbnail_image(160);
      ASSERT_EQ(shown.height(), expected.height());
      EXPECT_LE((shown - expected).abs().avg(), 6) << out << options;
    }
  }
}

// Shown upright, the part is the whole's.
TEST_F(Orbel, WritesAPartAsTheWholeHasIt) {
  VImage picture = testPicture(3);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    picture = picture.copy();
    picture.set(VIPS_META_ORIENTATION, orientation);
    save("in.tif", picture);
    for (const std::string options : {" --contrast 150", " --contrast 150 --ref-edge 99 --cross 4"}) {
      runWell("in.tif whole.tif -f" + options);
      runWell("in.tif part.tif -f --crop 40x30+25+11" + options);
      const VImage expected = load("whole.tif").autorot().extract_area(25, 11, 40, 30);
      EXPECT_EQ(difference(load("part.tif").autorot(), expected), 0) << orientation << options;
    }
  }
  EXPECT_EQ(run("in.tif part.tif -f --crop 9999x1+0+0").code(), 1);
  for (const char* wrong : {"40x30", "40x30+1", "0x30+1+1", "40x30+-1+0", "ax30+1+1"}) {
    EXPECT_EQ(run(std::string("in.tif part.tif -f --crop ") + wrong).code(), 2) << wrong;
  }
}

// EXIF tells of the old orientation still, and nobody may believe it.
TEST_F(Orbel, StaysUprightInSheets) {
  VImage turned = testPicture(3).crop(0, 0, 30, 20).copy();
  turned.set(VIPS_META_ORIENTATION, 6);
  save("in.jpg", turned);
  const Picture upright = uprightColours(loadPicture("in.jpg"));
  const Picture room = roomFor(upright, SampleType::bytes);
  for (const Picture& picture : {upright, room}) {
    EXPECT_EQ(picture.orientation(), 1);
    EXPECT_EQ(picture.width(), 20);
    EXPECT_EQ(picture.height(), 30);
  }
  save("alpha.png", testPicture(2));
  EXPECT_FALSE(uprightColours(loadPicture("alpha.png")).hasAlpha());
}

TEST_F(Orbel, RecipesMakeThePictureAgain) {
  save("in.png", testPicture(3));
  runWell("in.png out.png --factor 90 --mix 80 --ref-edge 300 --recipe");
  runWell("in.png again.png -p out.png.toml");
  EXPECT_EQ(difference(load("out.png"), load("again.png")), 0);
  EXPECT_GT(difference(load("in.png"), load("again.png")), 0);
}

int tiffField(const std::string& file, std::uint32_t tag) {
  TIFF* const tiff = TIFFOpen(file.c_str(), "r");
  std::uint16_t value = 0;
  TIFFGetField(tiff, tag, &value);
  TIFFClose(tiff);
  return value;
}

// Compression of TIFF files, its predictor by the kind of the samples, and the chroma of JPEG files.
TEST_F(Orbel, KeepsPackings) {
  struct Packing {
    const char* compression;
    const char* options;
    VipsBandFormat samples;
    int written, predictor;
  };
  const Packing packings[] = {
      {"none", "", VIPS_FORMAT_UCHAR, COMPRESSION_NONE, 0},
      {"lzw", "", VIPS_FORMAT_USHORT, COMPRESSION_LZW, PREDICTOR_HORIZONTAL},
      {"deflate", "", VIPS_FORMAT_FLOAT, COMPRESSION_ADOBE_DEFLATE, PREDICTOR_FLOATINGPOINT},
      {"packbits", "", VIPS_FORMAT_UCHAR, COMPRESSION_PACKBITS, 0},
      {"zstd", " --compression keep", VIPS_FORMAT_UCHAR, COMPRESSION_ZSTD, PREDICTOR_HORIZONTAL},
      {"zstd", " --compression none", VIPS_FORMAT_UCHAR, COMPRESSION_NONE, 0},
      {"jpeg", "", VIPS_FORMAT_UCHAR, COMPRESSION_ADOBE_DEFLATE, PREDICTOR_HORIZONTAL},
      {"webp", "", VIPS_FORMAT_UCHAR, COMPRESSION_ADOBE_DEFLATE, PREDICTOR_HORIZONTAL}};
  for (const Packing& p : packings) {
    SCOPED_TRACE(p.compression + std::string(p.options));
    save(std::string("in.tif[compression=") + p.compression + "]", testPicture(3, p.samples));
    const Ending ending = runWell(std::string("in.tif out.tif -f") + p.options);
    EXPECT_EQ(tiffField("out.tif", TIFFTAG_COMPRESSION), p.written);
    EXPECT_EQ(tiffField("out.tif", TIFFTAG_PREDICTOR), p.predictor);
    EXPECT_LE(difference(load("in.tif"), load("out.tif")), p.samples == VIPS_FORMAT_FLOAT ? 1e-6 : 0);
    const bool lost = p.written == COMPRESSION_ADOBE_DEFLATE && p.compression != std::string("deflate");
    EXPECT_EQ(contains(ending.errors, "isn't kept; packed by deflate"), lost) << ending.errors;
  }

  const auto chroma = [](const std::string& file) -> std::string {
    return load(file).get_string("jpeg-chroma-subsample");
  };
  save("whole.jpg[Q=95]", testPicture(3));
  save("half.jpg[Q=80]", testPicture(3));
  runWell("whole.jpg whole60.jpg --quality 60");
  runWell("half.jpg half95.jpg");
  EXPECT_EQ(chroma("whole60.jpg"), "4:4:4");
  EXPECT_EQ(chroma("half95.jpg"), "4:2:0");
  // A flat picture whose header is made to say 4:2:2: two by one in the sampling factors of its first component.
  save("flat.jpg[Q=95]", VImage::black(16, 16).bandjoin(std::vector<double>{0, 0}).cast(VIPS_FORMAT_UCHAR));
  std::string jpeg = contentOf("flat.jpg");
  jpeg[jpeg.find("\xFF\xC0") + 11] = 0x21;
  saveText("flat.jpg", jpeg);
  const Ending ending = runWell("flat.jpg out.jpg");
  EXPECT_TRUE(contains(ending.errors, "its chroma, one sample for 2 x 1 pixels, comes back in full")) << ending.errors;
  EXPECT_EQ(chroma("out.jpg"), "4:4:4");

  save("exact.webp[lossless]", testPicture(3));
  runWell("exact.webp exactly.webp");
  EXPECT_EQ(difference(load("exact.webp"), load("exactly.webp")), 0);
}

TEST_F(Orbel, EndsQuietlyWithItsReader) {
  save("in.png", testPicture(3));
  const std::string line = program_ + " apply in.png -o - --ext ppm -q | head -c 1";
  program_ = "/bin/bash";
  EXPECT_EQ(runWell(Words{"-c", line}).errors, "");
}

// As a shell with the completion loaded asks for it.
TEST_F(Orbel, CompletesInBash) {
  const std::pair<const char*, const char*> lines[] = {{"orbel pre", "presets\n"},
                                                       {"orbel apply --contr", "--contrast\n"},
                                                       {"orbel presets sh", "show\n"},
                                                       {"orbel bands --mem", "--memory\n"},
                                                       {"orbel in.png out.png --contr", "--contrast\n"}};
  const std::string orbel = program_;
  program_ = "/bin/bash";
  for (const auto& [line, expected] : lines) {
    const std::string ask = "source <(" + orbel + " completion bash); COMP_WORDS=(" + line + "); ";
    const std::string answer = "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _orbel; printf '%s\\n' \"${COMPREPLY[@]}\"";
    EXPECT_EQ(runWell(Words{"-c", ask + answer}).output, expected) << line;
  }
}

// ---- What can't be done

class Troubles : public Orbel {
 protected:
  void SetUp() override {
    Orbel::SetUp();
    save("good.png", testPicture(3));
    save("good.jpg", testPicture(3));
    save("alpha.png", testPicture(4));
    save("deep.png", testPicture(3, VIPS_FORMAT_USHORT));
    save("floats.tif", testPicture(3, VIPS_FORMAT_FLOAT));
    save("integers.tif", testPicture(3, VIPS_FORMAT_INT));
    save("six.tif", testPicture(6));
    save("large.png", testPicture(1).replicate(16, 8));
    VImage paged = testPicture(3).copy();
    vips_image_set_int(paged.get_image(), VIPS_META_PAGE_HEIGHT, 128);
    save("paged.tif", paged);
    fs::create_directory("folder.png");
    saveText("empty.png", "");
    saveText("text.png", "no picture at all\n");
    saveText("nothing.ppm", "P6 0 0 255\n");
    fs::create_symlink("loop.png", "loop.png");
    fs::copy_file("good.jpg", "preview.cr2");
    for (const char* extension : {"png", "jpg"}) {
      const std::string whole = contentOf(std::string("good.") + extension);
      saveText(std::string("cut.") + extension, whole.substr(0, whole.size() * 2 / 3));
      saveText(std::string("out.") + extension, "precious");
    }
    saveText("good.png.toml", "precious");
  }

  // One line about the right file or option, and all files as they were.
  void expectRefusal(const std::string& line, int code, const std::string& says, rlim_t fileLimit = RLIM_INFINITY) {
    SCOPED_TRACE(line);
    const auto before = files();
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit limit{std::min(fileLimit, old.rlim_max), old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    const pid_t process = start(split(line));
    setrlimit(RLIMIT_FSIZE, &old);
    const Ending ending = finish(process);
    EXPECT_EQ(ending.code(), code);
    EXPECT_TRUE(begins(ending.errors, "orbel: " + says)) << ending.errors;
    EXPECT_EQ(std::count(ending.errors.begin(), ending.errors.end(), '\n'), 1) << ending.errors;
    EXPECT_TRUE(files() == before);
  }
};

struct Refusal {
  const char* line;
  const char* says;
};

TEST_F(Troubles, OfFilesLeaveAllAsItWas) {
  const Refusal refusals[] = {
      {"missing.png out.png -f", "missing.png: No such file"},
      {"folder.png out.png -f", "folder.png: is a folder; -r takes"},
      {"empty.png out.png -f", "empty.png: the file is empty"},
      {"text.png out.png -f", "text.png: is no picture of a known format; convert it"},
      {"nothing.ppm out.png -f", "nothing.ppm: it is damaged, or says of itself"},
      {"preview.cr2 out.png -f", "preview.cr2: is a camera's raw file; develop it"},
      {"loop.png out.png -f", "loop.png: Too many levels of symbolic links\n"},
      {"apply good.png -o loop.png", "loop.png: is there already"},
      {"cut.png out.png -f", "cut.png: "},
      {"cut.jpg out.png -f", "cut.jpg: "},
      {"six.tif out.png -f", "six.tif: has 6 channels"},
      {"paged.tif out.png -f", "paged.tif: has 2 pages or frames; --page N takes one"},
      {"paged.tif out.png -f --page 3", "paged.tif: has 2 pages or frames, and no page 3"},
      {"integers.tif out.png -f", "integers.tif: its sample type (int)"},
      {"good.png out.xyz", "out.xyz: 'xyz' doesn't tell"},
      {"alpha.png out.jpg -f", "out.jpg: JPEG files hold no alpha"},
      {"deep.png out.jpg -f", "out.jpg: JPEG files hold no 16-bit"},
      {"floats.tif out.png -f", "out.png: PNG files hold no float"},
      {"good.png nowhere/out.png", "nowhere/out.png: "},
      {"good.png nowhere/out.png --dry-run", "nowhere/out.png: "},
      {"cut.png out.png -f --dry-run", "cut.png: "},
      {"sheet cut.png -o sheet.png", "cut.png: "},
      {"cut.jpg out.png -f --dry-run", "cut.jpg: "},
      {"good.png out.png", "out.png: is there already; -f"},
      {"apply good.png --in-place --recipe", "good.png.toml: is there already"},
      // 3 * 4001 * 4001 taps on 8 megapixels and more: hours, on up to 200 cores.
      {"large.png out.png -f --radius 500 --edge on --planes", "large.png: these settings ask for about "},
      // 65535 - 128 samples in band 2, half of them on either side, four times the radius.
      {"good.png out.png -f --radius 9000",
       "good.png: --radius 9000 in band 2 is too large for edge protection on this picture; at most 8175.75\n"}};
  for (const auto& [line, says] : refusals) expectRefusal(line, 1, says);
}

// The limit is below any picture.
TEST_F(Troubles, OfAFullDiskLeaveAllAsItWas) {
  for (const std::string out : {"out.png", "out.jpg", "new.tif", "new.jp2"}) {
    expectRefusal("good.png -f " + out, 1, out + ": File too large\n", 1200);
  }
}

TEST_F(Troubles, OfOptionsNameTheOption) {
  for (const char* option :
       {"--gain 1,2",    "--radius 1,2,3,4,x", "--threshold ,",    "--edges maybe",          "--residual inf",
        "--overlay 1.5", "--set CON6=1",       "--set CON1",       "--set HALF=2",           "--set WDTH=3e9",
        "--radius -3",   "--gain 100000",      "--set FCTR=-1001", "--band 2:threshold=256", "--overlay -1",
        "--memory -1",   "--max-minutes nan",  "--depth 0",        "--progress 1",           "--host-depth 9",
        "--ext xyz"}) {
    expectRefusal(std::string("good.png new.png ") + option, 2, split(option)[0]);
  }
}

TEST_F(Troubles, OfThePlainFormSayTheOther) {
  expectRefusal("good.png -p clarity", 2,
                "without a command it is: orbel IN OUT; for one picture or many: orbel apply");
}

// A code that stays, and a reason that doesn't begin with the file's name.
TEST_F(Troubles, HaveCodesForPrograms) {
  saveText("notes.txt", "no picture, and doesn't say so");
  const Ending info = run("info -r --json .");
  EXPECT_TRUE(contains(info.errors, "are no pictures by their names, and left alone: ./good.png.toml, ./notes.txt"));
  EXPECT_TRUE(contains(info.errors, "; a camera's raw file: develop it to a 16-bit TIFF")) << info.errors;
  const std::string told = info.output + run("info --json preview.cr2 absent.png").output +
                           run("apply --json --dry-run good.png -o out.png").output +
                           run("apply --json --dry-run -r . -o new/").output;
  std::map<std::string, std::string> codes;
  std::istringstream lines(told);
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line);
    if (object.value("reason", "").empty()) continue;
    const std::string about = fs::path(object["about"].get<std::string>()).filename();
    codes[about] = object["code"];
    EXPECT_FALSE(contains(object["reason"], about)) << line;
  }
  const std::map<std::string, std::string> expected = {
      {"absent.png", "unreadable"},   {"empty.png", "unreadable"},     {"loop.png", "unreadable"},
      {"text.png", "unknown_format"}, {"out.jpg", "unknown_format"},   {"preview.cr2", "no_picture"},
      {"six.tif", "unsupported"},     {"integers.tif", "unsupported"}, {"paged.tif", "several_pages"},
      {"notes.txt", "no_picture"},    {"nothing.ppm", "damaged"},      {"cut.png", "damaged"},
      {"good.png.toml", "no_picture"}};
  for (const auto& [file, code] : expected) EXPECT_EQ(codes[file], code) << file;
}

TEST_F(Troubles, OfThePluginHaveACodeOfTheirOwn) {
  Dl_info mathematics{};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&std::erf)), &mathematics), 0);
  fs::copy_file(mathematics.dli_fname, "library.so");
  fs::copy_file(ORBEL_PROGRAM, "program.so");
  fs::create_directory("folder.so");
  mkfifo("fifo.so", 0600);
  fs::copy_file(ORBEL_MODULE, "cut.so");
  fs::resize_file("cut.so", 4096);  // what lies at a file's end may be no more than debug information
  const Refusal refusals[] = {{"missing.so", "can't load this plug-in: No such file or directory"},
                              {"folder.so", "can't load this plug-in: it is not a regular file"},
                              {"fifo.so", "can't load this plug-in: it is not a regular file"},
                              {"cut.so", "can't load this plug-in: the file is cut short"},
                              {"empty.png", "can't load this plug-in: file too short"},
                              {"program.so", "can't load this plug-in: "},
                              {"library.so", "this is no plug-in, it has no PluginMain"}};
  for (const auto& [file, says] : refusals) {
    const std::string name = fs::absolute(file).string();
    expectRefusal("good.png out.png -f --plugin " + name, 3, name + ": " + says);
  }
  runWell("good.png out.png -f --plugin " ORBEL_MODULE);
}

// Wherever it is called from.
TEST_F(Orbel, RunsThePluginBesideIt) {
  save("in.png", testPicture(3));
  program_ = fs::absolute("orbel").string();
  fs::copy_file(ORBEL_PROGRAM, program_);
  runWell("in.png alone.png");  // the engine is in the program
  const Ending alone = run("in.png out.png --host-depth 8");
  EXPECT_EQ(alone.code(), 3);
  EXPECT_TRUE(contains(alone.errors, "OrbelBandEqualizer.so: can't load")) << alone.errors;
  fs::copy_file(ORBEL_MODULE, "OrbelBandEqualizer.so");
  fs::create_symlink(program_, "link");
  program_ = fs::absolute("link").string();
  runWell("in.png out.png --host-depth 8");
}

TEST_F(Orbel, KeepsPermissionsAndFollowsLinks) {
  const mode_t usual = umask(022);
  save("real.png", testPicture(3));
  fs::create_symlink("real.png", "link.png");
  chmod("real.png", 0660);
  runWell("link.png new.png --recipe");
  EXPECT_EQ(fs::status("new.png").permissions(), fs::perms{0640});
  EXPECT_EQ(fs::status("new.png.toml").permissions(), fs::perms{0640});
  chmod("real.png", 0666);
  const std::string before = contentOf("real.png");
  runWell("link.png link.png -f --contrast 300");
  EXPECT_TRUE(fs::is_symlink("link.png"));
  EXPECT_NE(contentOf("real.png"), before);
  EXPECT_EQ(fs::status("real.png").permissions(), fs::perms{0666});
  umask(usual);
}

TEST_F(Orbel, ReplacesWithoutAGapAndKeepsTheFirstOriginal) {
  save("in.png", testPicture(3));
  const std::string first = contentOf("in.png");
  const Watch watch;
  for (const char* contrast : {"50", "300"}) {
    const std::string before = contentOf("in.png");
    runWell(std::string("apply in.png --in-place --contrast ") + contrast);
    EXPECT_NE(contentOf("in.png"), before);
    EXPECT_EQ(contentOf("in.png_original"), first);
  }
  for (const auto& [appears, name] : watch.events()) EXPECT_TRUE(appears || name != "in.png");
  EXPECT_EQ(files().size(), 2U);
}

// What fails here is the very last step, and so all before it has been done.
TEST_F(Orbel, KeepsNoOriginalOfWhatIsNotReplaced) {
  saveText("file", "as it was");
  TargetFile target("file", true);
  fs::remove(target.temporary());
  EXPECT_THROW(target.replace(true), Failure);
  EXPECT_EQ(files(), (std::map<std::string, std::string>{{"file", "as it was"}}));
}

// In hours of work, which begins where it is asked for.
TEST_F(Orbel, LeavesNothingBehindWhenItIsStopped) {
  save("in.png", testPicture(1).replicate(16, 8));
  const Words line = split("in.png out.png --radius 500 --edge on --planes --max-minutes 0");
  const pid_t process = start(line);
  EXPECT_TRUE(await(temporaryIsThere)) << "the work has not begun";
  kill(process, SIGTERM);
  const Ending ending = finish(process);
  EXPECT_EQ(ending.code(), 130);
  EXPECT_EQ(ending.errors, "orbel: in.png: interrupted\n");
  EXPECT_EQ(files().size(), 1U);

  // Nor when the process of the file gets no chance to clean up; its number is in the temporary file's name.
  const pid_t parent = start(line);
  EXPECT_TRUE(await(temporaryIsThere)) << "the work has not begun";
  std::string temporary;
  for (const auto& [name, content] : files()) temporary = begins(name, ".orbel-") ? name : temporary;
  kill(std::stoi(temporary.substr(temporary.rfind('-') + 1)), SIGKILL);
  EXPECT_EQ(finish(parent).errors, "orbel: in.png: the work was ended by a signal: Killed\n");
  EXPECT_EQ(files().size(), 1U);
}

}  // namespace
