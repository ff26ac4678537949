// Pictures as the other rooms see them: samples in memory, and metadata that stay with them.

#include "pictures/picture.h"

#include <cstdint>

#include "files/failure.h"
#include "orbel_run.h"
#include "pictures/contact_sheet.h"
#include "pictures/samples.h"
#include "pictures/save.h"
#include "pictures/vips_picture.h"

using namespace orbel;

namespace {

using PictureTest = Orbel;

void write(const Picture& picture, const std::string& name) {
  const int file = open(name.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  savePicture(picture, writableFormat(extensionOf(name), name), file, name);
  close(file);
}

TEST_F(PictureTest, RoomHasAllOfThePictureButItsColours) {
  VImage turned = testPicture(4).crop(0, 0, 30, 20).copy(VImage::option()->set("xres", 11.811)->set("yres", 5.0));
  turned.set(VIPS_META_ORIENTATION, 6);
  turned.set("exif-ifd0-Make", "Acme (Acme, ASCII, 5 components, 5 bytes)");
  save("in.webp", turned);
  const Picture picture = withXmp(loadPicture("in.webp"), "<packet/>");
  for (const SampleType samples : {SampleType::bytes, SampleType::words, SampleType::floats}) {
    const Picture room = roomFor(picture, samples);
    const orbel_picture record = room.record();
    EXPECT_EQ(record.width, 30);
    EXPECT_EQ(record.height, 20);
    EXPECT_EQ(record.channels, 4);
    EXPECT_EQ(record.column_step, 4 * bytesOf(samples));
    EXPECT_EQ(record.row_step, 30 * record.column_step);
    EXPECT_EQ(room.samples(), samples);
    EXPECT_EQ(room.orientation(), 6);
    EXPECT_EQ(room.loader(), "webp");
    EXPECT_EQ(xmpOf(room), "<packet/>");
    EXPECT_EQ(imageOf(room).xres(), imageOf(picture).xres());
    EXPECT_NE(record.base[0], picture.record().base[0]);
    EXPECT_LE(difference(imageOf(room)[3] / whiteOf(formatFor(samples)), imageOf(picture)[3] / 255), 1e-7);
  }
  // What is written into the room is in the file.
  const Picture room = roomFor(picture, SampleType::bytes);
  const orbel_picture record = room.record();
  std::fill_n(static_cast<std::uint8_t*>(record.base[0]), 30 * 20 * 4, std::uint8_t{7});
  write(room, "out.png");
  EXPECT_EQ(difference(load("out.png"), VImage::black(30, 20) + 7), 0);
}

// EXIF tells of the old orientation still, and nobody may believe it.
TEST_F(PictureTest, StaysUpright) {
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

// The library's own errors stay where they are from.
TEST_F(PictureTest, FailuresNameTheFile) {
  save("whole.png", testPicture(3));
  const std::string content = contentOf("whole.png");
  saveText("cut.png", content.substr(0, content.size() / 2));
  const auto expectFailure = [](const auto& work, const std::string& file, Cause cause) {
    try {
      work();
      ADD_FAILURE() << file;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.file, file);
      EXPECT_EQ(failure.cause, cause) << failure.what();
      EXPECT_EQ(failure.reason.find('\n'), std::string::npos);
    }
  };
  Notes notes;
  expectFailure([] { loadPicture("cut.png"); }, "cut.png", Cause::Damaged);
  expectFailure([&] { requireThatItDecodes(openPicture("cut.png", notes), "cut.png"); }, "cut.png", Cause::Damaged);
  const Picture opened = openPicture("cut.png", notes);
  ContactSheet sheet;
  expectFailure([&] { sheet.add(opened, "label"); }, "cut.png", Cause::Other);
  const FileFormat& tiff = writableFormat("tif", "out.tif");
  expectFailure([&] { savePicture(loadPicture("whole.png"), tiff, -1, "out.tif"); }, "out.tif", Cause::Unwritable);
}

}  // namespace
