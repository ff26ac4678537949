// What becomes of a picture's tags: written with exiftool, read with exiv2, which has no part in how they get there.

#include <sys/file.h>

#include <cstdio>
#include <cstdlib>

#include "orbel_run.h"
#include "pictures/exiftool.h"
#include "pictures/hidden_metadata.h"

using namespace orbel;

namespace {

// On names that mean nothing to a shell.
std::string said(const std::string& command) {
  FILE* const stream = popen(command.c_str(), "r");
  std::string text;
  for (int c = 0; (c = std::fgetc(stream)) != EOF;) text += static_cast<char>(c);
  EXPECT_EQ(pclose(stream), 0) << command << ": packages libimage-exiftool-perl and exiv2";
  return text;
}

constexpr const char* allTags = "Acme\n52/1 30/1 0/1\n東京\nŁódź\n4\n";

std::string tagsIn(const fs::path& file) {
  const std::string name = fs::temp_directory_path() / ("orbel-read-" + std::to_string(getpid()));
  fs::copy_file(file, name, fs::copy_options::overwrite_existing);
  const std::string keys =
      " -K Exif.Image.Make -K Exif.GPSInfo.GPSLatitude -K Iptc.Application2.City -K Iptc.Application2.Keywords"
      " -K Xmp.xmp.Rating ";
  std::string tags = said("exiv2 -q -Pv" + keys + name);
  fs::remove(name);
  return tags;
}

class Tags : public Orbel {
 protected:
  static void makePictures() {
    for (const char* name : {"plain.jpg", "plain.png", "plain.tif"}) save(name, testPicture(3));
    said(
        "exiftool -q -m -overwrite_original -Make=Acme -GPSLatitude=52.5 -GPSLatitudeRef=N -XMP-xmp:Rating=4 "
        "-IPTC:CodedCharacterSet=UTF8 -IPTC:City=Łódź -IPTC:Keywords=東京 plain.jpg plain.png plain.tif");
    for (const char* name : {"plain.jpg", "plain.png", "plain.tif"}) ASSERT_EQ(tagsIn(name), allTags);
  }
  void TearDown() override {
    setenv("PATH", path_.c_str(), 1);
    Orbel::TearDown();
  }

  // Another program by the name of exiftool.
  void replaceExiftool(const std::string& script) const {
    saveText("bin/exiftool", "#!/bin/sh\nPATH=" + path_ + "\nexec 9>running; flock -s 9\n" + script);
    fs::permissions("bin/exiftool", fs::perms::owner_all);
    setenv("PATH", (fs::current_path() / "bin").c_str(), 1);
  }
  // Whether that program, and what it started, is running.
  static bool exiftoolRuns() {
    const int file = open("running", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const bool runs = flock(file, LOCK_EX | LOCK_NB) != 0;
    close(file);
    return runs;
  }

 private:
  std::string path_ = getenv("PATH");
};

// Characters with a meaning to exiftool, perl, a shell, the image library or printf; a line end, and no UTF-8.
TEST_F(Tags, ComeOverFromAndToAnyName) {
  const std::string odd = "-50%discount%e @[x]|;'\"\\*?\n\xff $(x) ";
  const fs::path work = fs::current_path();
  makePictures();
  for (const auto& [from, into] : {std::pair("jpg", "tif"), std::pair("png", "jpg"), std::pair("tif", "png")}) {
    SCOPED_TRACE(from);
    const std::string plain = std::string("plain.") + from;
    const std::string file = odd + "." + from;
    const std::string result = "%f" + odd + "." + into;
    fs::create_directories(work / odd / odd);
    fs::copy_file(plain, odd + "/" + file);
    fs::copy_file(plain, odd + "/" + odd + "/" + file);
    fs::current_path(work / odd);
    runWell(Words{"apply", "-q", "-o", result, "--", file});
    EXPECT_EQ(tagsIn(result), allTags);
    runWell(Words{"apply", "-q", "--in-place", "--no-backup", "--", file});
    EXPECT_EQ(tagsIn(file), allTags);
    runWell(Words{"apply", "-q", "-j", "2", "-r", "./" + odd, "-o", "./" + odd + "many/"});
    EXPECT_EQ(tagsIn(odd + "many/" + file), allTags);
    fs::current_path(work);
    fs::remove_all(odd);
  }
}

TEST_F(Tags, AreNamedWhenTheyDidNotComeOver) {
  makePictures();
  save("bare.png", testPicture(3));
  save("bare.tif", testPicture(3));
  said("exiftool -q -m -IPTC:all= -o noiptc.png plain.png");
  struct Case {
    const char* exiftool;
    const char* line;
    const char* note;
  };
  const Case cases[] = {
      {"exit 127", "plain.tif -o a.png",
       "may be missing without exiftool (package libimage-exiftool-perl): EXIF, IPTC\n"},
      {"exit 127", "plain.jpg -o b.png",
       "plain.jpg: missing without exiftool (package libimage-exiftool-perl): IPTC\n"},
      {"exit 127", "plain.png -o c.png", "plain.png: may be missing without exiftool"},
      {"exit 127", "bare.png bare.tif noiptc.png plain.jpg", nullptr},  // nothing is missing, nobody is asked
      {"while read -r l; do case $last in -o) echo half >\"$l\"; exit 3; esac; last=$l; done", "plain.tif -o d.png",
       "exiftool could not copy the metadata: it ended before it had answered"},
      {"while read -r l; do case $l in -ex*) echo status 0; echo \"{ready${l#-execute}}\"; esac; done",
       "plain.tif -o e.png", "plain.tif: may be missing, which exiftool could not tell: EXIF, IPTC\n"},
      {"sed -u '/^-IPTC$/d' | exec exiftool \"$@\"", "plain.tif -o f.png", "did not come over: IPTC\n"},
      {"sed -u 's/^-all:all$/-Make/' | exec exiftool \"$@\"", "plain.tif -o g.tif",
       "did not come over: EXIF (GPSLatitude, GPSLatitudeRef, GPSVersionID)\n"},
      {"sed -u 's/^-IPTC$/-IPTC:City=Lodz/' | exec exiftool \"$@\"", "plain.tif -o h.tif",
       "IPTC (City, CodedCharacterSet, EnvelopeRecordVersion, Keywords)\n"},
      {"sed -u 's:^/proc/.*/fd/[0-9]*$:/nowhere:' | exec exiftool \"$@\"", "plain.tif -o i.tif", "exiftool could not"},
      {"exit 127", "plain.jpg -o - --ext tif", "missing, since exiftool has no part in pipes: EXIF, IPTC\n"},
      {"exec exiftool \"$@\"", "plain.tif -o j.webp", "WebP files can't hold here: IPTC\n"},
      {"exec exiftool \"$@\"", "plain.tif -o k.tif", nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    replaceExiftool(c.exiftool);
    const Ending ending = runWell(std::string("apply -f ") + c.line);
    EXPECT_TRUE(c.note == nullptr ? ending.errors.empty() : contains(ending.errors, c.note)) << ending.errors;
    EXPECT_FALSE(temporaryIsThere());
    EXPECT_TRUE(await([] { return !exiftoolRuns(); }));
  }
  EXPECT_EQ(load("d.png").height(), 256);
}

// What is too long for the library or for a segment of a JPEG file, and for an account of it in one piece.
TEST_F(Tags, ComeOverAtAnyLength) {
  makePictures();
  const std::string text(70000, 'x');
  saveText("text", text);
  said("exiftool -q -m -overwrite_original '-XMP-dc:Source<=text' plain.jpg");
  said("exiftool -q -m -overwrite_original '-XMP-dc:Source<=text' '-EXIF:UserComment<=text' plain.png plain.tif");
  const std::pair<const char*, const char*> ways[] = {{"jpg", "jpg"}, {"jpg", "png"}, {"png", "png"},
                                                      {"png", "jpg"}, {"tif", "jpg"}, {"tif", "tif"}};
  for (const auto& [from, into] : ways) {
    SCOPED_TRACE(std::string(from) + " " + into);
    const std::string result = std::string(from) + "." + into;
    EXPECT_EQ(runWell(std::string("plain.") + from + " " + result).errors, "");
    EXPECT_EQ(said("exiftool -s3 -XMP-dc:Source " + result), text + "\n");
    EXPECT_EQ(said("exiftool -s3 -EXIF:UserComment " + result), from == std::string("jpg") ? "" : text + "\n");
  }
}

// Where the library sees no XMP, and where it has IPTC without its frame.
TEST_F(Tags, ComeOverBesideWhatTheResultRemembers) {
  makePictures();
  const std::string head("8BPS\0\1\0\0\0\0\0\0\0\3\0\0\0\2\0\0\0\2\0\10\0\3", 26);
  saveText("plain.psd", head + std::string(14, '\0') + "twelve bytes");
  save("plain.jp2", testPicture(3));
  save("plain.heic", testPicture(3));
  for (const char* from : {"plain.psd", "plain.jp2", "plain.heic"}) {
    SCOPED_TRACE(from);
    said(std::string("exiftool -q -m -overwrite_original -tagsFromFile plain.jpg -all:all --IPTC:all -IPTC ") + from);
    const bool isHeif = from == std::string("plain.heic");
    const std::string result = std::string(from) + (isHeif ? ".heic" : ".jpg");
    for (const char* settings : {"-p clarity", "-p crisp"}) {
      const std::string line = std::string("apply -u -d u8 ") + from + " -o " + result + " " + settings;
      EXPECT_TRUE(contains(runWell(line).output, " -> "));
      EXPECT_TRUE(contains(runWell(line).output, "is up to date\n"));
      EXPECT_EQ(said("exiftool -s3 -XMP-xmp:Rating " + result), "4\n");
      EXPECT_TRUE(isHeif || tagsIn(result) == allTags);
    }
  }
}

TEST_F(Tags, OutliveAnExiftoolThatHangsOrDies) {
  replaceExiftool(
      "while read -r l; do case $l in hang) exec sleep 99;; die) exit 3;;\n"
      "-ex*) echo \"{ready${l#-execute}}\";; *) echo \"$l\";; esac; done\n");
  using Status = ExiftoolAnswer::Status;
  std::map<pid_t, ExiftoolAnswer> answers;
  Exiftool exiftool([&](pid_t asker, const ExiftoolAnswer& answer) { answers[asker] = answer; });
  exiftool.ask(1, {{"one"}, 60});
  exiftool.ask(2, {{"hang"}, 0.3});
  exiftool.ask(3, {{"die"}, 60});
  exiftool.ask(4, {{"four"}, 60});
  exiftool.ask(5, {{"five"}, 60});
  exiftool.forget(4);
  EXPECT_TRUE(await([&] {
    exiftool.attend();
    return answers.count(5) != 0;
  }));
  EXPECT_EQ(answers.size(), 4U);
  EXPECT_EQ(answers[1].text, "one\n");
  EXPECT_EQ(answers[2].status, Status::Failed);
  EXPECT_EQ(answers[3].status, Status::Failed);
  EXPECT_EQ(answers[5].status, Status::Done);
  EXPECT_EQ(answers[5].text, "five\n");
}

TEST_F(Tags, LeaveNoExiftoolBehindAProgramThatIsKilled) {
  makePictures();
  replaceExiftool("exec sleep 99");
  const pid_t process = start(split("apply plain.tif -o result.tif"));
  EXPECT_TRUE(await([] { return exiftoolRuns(); }));
  kill(process, SIGKILL);
  finish(process);
  EXPECT_TRUE(await([] { return !exiftoolRuns(); }));
}

TEST_F(Orbel, LooksForHiddenTagsInEitherByteOrderAndBigTiff) {
  struct Case {
    std::string content;
    bool hides;
  };
  const std::string rest(10, '\0');
  const Case cases[] = {
      {std::string("MM\0*\0\0\0\x08\0\x01\x01\x00", 12) + rest, false},                     // width
      {std::string("MM\0*\0\0\0\x08\0\x01\x01\x0f", 12) + rest, true},                      // maker
      {std::string("II*\0\x08\0\0\0\x02\0\x00\x01", 12) + rest + "\x69\x87" + rest, true},  // width, EXIF
      {std::string("II+\0\x08\0\0\0\x10\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\x00\x01", 26) + rest + rest, false},
      {std::string("II+\0\x08\0\0\0\x10\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\xbb\x83", 26) + rest + rest, true},  // IPTC
      {std::string("II*\0\x08\0\0\0\x02\0\x00\x01", 12) + rest, true},                                       // cut off
  };
  for (const Case& c : cases) {
    saveText("x.tif", c.content);
    EXPECT_EQ(tiffHidesMetadata("x.tif", {}), c.hides) << &c - cases;
  }
}

}  // namespace
