// What surrounds the plug-in: radii that scale, masks, and the blend with the original.

#include "finish.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

#include "bands.h"
#include "failure.h"

namespace {

namespace fs = std::filesystem;
using vips::VImage;

class FinishTest : public testing::Test {
 protected:
  void SetUp() override {
    VIPS_INIT("finish_test");
    std::string pattern = (fs::temp_directory_path() / "finish-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string save(const std::string& name, const VImage& picture) const {
    picture.write_to_file(path(name).c_str());
    return path(name);
  }
  VImage load(const std::string& name) const { return VImage::new_from_file(path(name).c_str()).copy_memory(); }
  int orbel(const std::string& arguments) const {
    return std::system(("cd " + folder_.string() + " && " ORBEL_PROGRAM " " + arguments + " >/dev/null 2>&1").c_str());
  }

  fs::path folder_;
};

// White to the left of column `edge` and above row `edge`, else black.
VImage corner(int width, int height, int edge, double white) {
  const VImage xy = VImage::xyz(width, height);
  const VImage corner = (xy[0] < edge) & (xy[1] < edge);  // 255 or 0
  return (corner * (white / 255)).cast(white > 255 ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR);
}

SettingsChoice masked(const std::string& file, double mix = 100) {
  SettingsChoice choice;
  choice.mask = file;
  choice.mix = mix;
  return choice;
}

TEST_F(FinishTest, RadiiScaleWithThePicture) {
  SettingsChoice choice;
  choice.settings.setBands("", "RAD", "1,2,3,4,5");
  EXPECT_EQ(settingsFor(choice, 4000, 3000).value("RAD5"), 5);
  choice.refEdge = 2000;
  EXPECT_EQ(settingsFor(choice, 3000, 4000).value("RAD1"), 2);
  EXPECT_EQ(settingsFor(choice, 4000, 3000).value("RAD5"), 10);
  EXPECT_EQ(settingsFor(choice, 4000, 3000).value("THR5"), 10);
}

TEST_F(FinishTest, BlendIsExactAtItsEnds) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  constexpr float infinity = std::numeric_limits<float>::infinity();
  const std::vector<std::vector<float>> cases = {// original, result, weight, blend
                                                 {0.1F, 0.7F, 0, 0.1F},      {0.1F, 0.7F, 1, 0.7F},
                                                 {0.25F, 0.75F, 0.5F, 0.5F}, {2, -1, 0.25F, 1.25F},
                                                 {0.1F, nan, 0, 0.1F},       {infinity, 0.7F, 1, 0.7F}};
  for (const auto& c : cases) {
    Document original{1, 1, 32, {std::vector<unsigned char>(4)}};
    Document result = original;
    std::memcpy(original.planes[0].data(), &c[0], 4);
    std::memcpy(result.planes[0].data(), &c[1], 4);
    blend(original, {c[2]}, result);
    float blended = 0;
    std::memcpy(&blended, result.planes[0].data(), 4);
    EXPECT_EQ(blended, c[3]);
  }
}

// The weight at three places of an upright picture of 40 x 20: in the white corner, beside it, and below it.
TEST_F(FinishTest, MasksAreWhiteWhereTheResultShows) {
  const VImage grey = corner(40, 20, 10, 255);
  const VImage opaque = VImage::black(40, 20) + 255;
  const std::vector<std::pair<const char*, VImage>> masks = {
      {"grey.png", grey},
      {"deep.png", corner(40, 20, 10, 65535).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_GREY16))},
      {"colour.png",
       VImage::bandjoin({grey, grey, grey}).copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))},
      {"alpha.png", opaque.cast(VIPS_FORMAT_UCHAR).bandjoin(grey)},
      {"double.png", corner(80, 40, 20, 255)},
      {"odd.png", corner(81, 41, 20, 255)},
      {"half.png", corner(20, 10, 5, 255)}};
  for (const auto& [name, mask] : masks) {
    const std::vector<float> weights = weightsOf(masked(save(name, mask), 50), VImage::black(40, 20));
    EXPECT_NEAR(weights.at(5 * 40 + 5), 0.5F, 1e-6F) << name;
    EXPECT_NEAR(weights.at(5 * 40 + 15), 0, 1e-6F) << name;
    EXPECT_NEAR(weights.at(15 * 40 + 5), 0, 1e-6F) << name;
  }
  for (const VImage& wrong : {corner(20, 40, 10, 255), corner(40, 24, 10, 255), corner(10, 7, 3, 255)}) {
    EXPECT_THROW(weightsOf(masked(save("wrong.png", wrong)), VImage::black(40, 20)), Failure);
  }
  EXPECT_THROW(weightsOf(masked(path("nowhere.png")), VImage::black(40, 20)), Failure);
}

// Turned upright, every picture shows its mask's white corner at the top left.
TEST_F(FinishTest, MasksLieOverThePictureAsItIsShown) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const bool turned = orientation > 4;
    VImage picture = VImage::black(turned ? 20 : 40, turned ? 40 : 20);
    picture.set(VIPS_META_ORIENTATION, orientation);
    std::vector<float> weights = weightsOf(masked(save("mask.png", corner(40, 20, 10, 255))), picture);
    VImage stored = VImage::new_from_memory(weights.data(), weights.size() * sizeof(float), picture.width(),
                                            picture.height(), 1, VIPS_FORMAT_FLOAT);
    stored.set(VIPS_META_ORIENTATION, orientation);
    const VImage shown = stored.autorot().copy_memory();
    ASSERT_EQ(shown.width(), 40);
    EXPECT_EQ((shown * 255 - corner(40, 20, 10, 255)).abs().max(), 0) << orientation;
  }
}

// The program, on a noisy picture of 8 bits.
TEST_F(FinishTest, BlendsBeforeTheDepthGoesBack) {
  const VImage noise = VImage::gaussnoise(64, 48, VImage::option()->set("mean", 128)->set("sigma", 40));
  save("in.png", VImage::bandjoin({noise, noise.flip(VIPS_DIRECTION_HORIZONTAL), noise.rot180(), noise})
                     .cast(VIPS_FORMAT_UCHAR)
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)));
  save("mask.png", corner(64, 48, 24, 255));
  ASSERT_EQ(orbel("in.png full.tif -d float --contrast 250"), 0);
  ASSERT_EQ(orbel("in.png none.png --contrast 250 --mix 0"), 0);
  ASSERT_EQ(orbel("in.png half.png --contrast 250 --mix 50"), 0);
  ASSERT_EQ(orbel("in.png masked.png --contrast 250 --mask mask.png"), 0);
  const VImage in = load("in.png");
  const VImage full = load("full.tif") * 255;
  EXPECT_EQ((load("none.png") - in).abs().max(), 0);
  const auto fits = [&](const std::string& name, const VImage& exact) {
    const VImage clipped = (exact > 255).ifthenelse(255.0, (exact < 0).ifthenelse(0.0, exact));
    EXPECT_LE((load(name) - clipped).extract_band(0, VImage::option()->set("n", 3)).abs().max(), 0.5001) << name;
    EXPECT_EQ((load(name) - in)[3].abs().max(), 0) << name;
  };
  fits("half.png", (in + full) / 2);
  fits("masked.png", load("mask.png").ifthenelse(full, in));
  EXPECT_NE(orbel("in.png deep.png --mix 50 --host-depth 16"), 0);
  save("wrong.png", corner(20, 40, 10, 255));
  EXPECT_EQ(orbel("in.png dry.png --mask mask.png --dry-run"), 0);
  EXPECT_EQ(orbel("in.png dry.png --mask wrong.png --dry-run"), 256 * 1);
}

// The bands less middle grey, and the residual, are the equalized picture.
TEST_F(FinishTest, BandsAddUp) {
  const VImage noise = VImage::gaussnoise(70, 50, VImage::option()->set("mean", 0.5)->set("sigma", 0.2));
  save("in.tif", VImage::bandjoin({noise, noise.rot180(), noise.flip(VIPS_DIRECTION_VERTICAL)})
                     .cast(VIPS_FORMAT_FLOAT)
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB)));
  const std::string settings = " --contrast 150,0,80,-20,300 --edges on,off,on,off,on --factor 90 --cross 5 --half";
  ASSERT_EQ(orbel("bands in.tif -o bands" + settings), 0);
  ASSERT_EQ(orbel("in.tif whole.tif" + settings + " --no-half --planes --cross 0"), 256 * 2)
      << "a flag and its opposite";
  ASSERT_EQ(orbel("in.tif whole.tif --planes --contrast 150,0,80,-20,300 --edges on,off,on,off,on --factor 90"), 0);
  VImage sum = load("bands/residual.tif");
  for (const char* band : {"1", "2", "3", "4", "5"}) sum += load(std::string("bands/band") + band + ".tif") - 0.5;
  EXPECT_LT((sum - load("whole.tif")).abs().max(), 2e-6);
  EXPECT_GT(load("bands/contact-sheet.png").width(), 3 * 70);
  EXPECT_EQ(orbel("bands in.tif -o bands"), 256 * 1);
  EXPECT_EQ(orbel("bands in.tif -o bands -f --ref-edge 70"), 0);
  EXPECT_EQ(orbel("bands in.tif -o none --memory 50M"), 256 * 1);
  EXPECT_FALSE(fs::exists(path("none")));
}

}  // namespace
