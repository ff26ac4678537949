// Masks, the blend with the original, and bands that add up.

#include "pictures/mask.h"

#include "files/failure.h"
#include "orbel_run.h"
#include "pictures/vips_picture.h"

using namespace orbel;

namespace {

class MaskTest : public Orbel {
 protected:
  int orbel(const std::string& line) const { return run(line).code(); }
};

// Noise in four bands, the last of which is alpha.
VImage noisy(int width, int height) {
  const VImage noise = VImage::gaussnoise(width, height, VImage::option()->set("mean", 128)->set("sigma", 40));
  return VImage::bandjoin({noise, noise.flip(VIPS_DIRECTION_HORIZONTAL), noise.rot180(), noise})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// White to the left of column `edge` and above row `edge`, else black.
VImage corner(int width, int height, int edge, double white = 255) {
  const VImage xy = VImage::xyz(width, height);
  const VImage corner = (xy[0] < edge) & (xy[1] < edge);  // 255 or 0
  return (corner * (white / 255)).cast(white > 255 ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR);
}

VImage colours(const VImage& picture) { return picture.extract_band(0, VImage::option()->set("n", 3)); }

// At three places of an upright picture of 40 x 20: in the white corner, beside it, and below it.
TEST_F(MaskTest, MasksAreWhiteWhereTheResultShows) {
  const VImage grey = corner(40, 20, 10);
  const VImage opaque = (VImage::black(40, 20) + 255).cast(VIPS_FORMAT_UCHAR);
  const auto as = [](VipsInterpretation model) { return VImage::option()->set("interpretation", model); };
  const std::pair<const char*, VImage> masks[] = {
      {"grey.png", grey},
      {"deep.png", corner(40, 20, 10, 65535).copy(as(VIPS_INTERPRETATION_GREY16))},
      {"colour.png", VImage::bandjoin({grey, grey, grey}).copy(as(VIPS_INTERPRETATION_sRGB))},
      {"alpha.png", opaque.bandjoin(grey)},
      {"double.png", corner(80, 40, 20)},
      {"odd.png", corner(81, 41, 20)},
      {"half.png", corner(20, 10, 5)}};
  for (const auto& [name, mask] : masks) {
    save(name, mask);
    const std::vector<float> weights = maskWeights(name, pictureOf(VImage::black(40, 20), ""));
    EXPECT_NEAR(weights.at(5 * 40 + 5), 1, 1e-6F) << name;
    EXPECT_NEAR(weights.at(5 * 40 + 15), 0, 1e-6F) << name;
    EXPECT_NEAR(weights.at(15 * 40 + 5), 0, 1e-6F) << name;
  }
  for (const VImage& wrong : {corner(20, 40, 10), corner(40, 24, 10), corner(10, 7, 3)}) {
    save("wrong.png", wrong);
    EXPECT_THROW(maskWeights("wrong.png", pictureOf(VImage::black(40, 20), "")), Failure);
  }
  EXPECT_THROW(maskWeights("nowhere.png", pictureOf(VImage::black(40, 20), "")), Failure);
}

// Turned upright, every picture shows its mask's white corner at the top left.
TEST_F(MaskTest, MasksLieOverThePictureAsItIsShown) {
  save("mask.png", corner(40, 20, 10));
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const bool turned = orientation > 4;
    VImage picture = VImage::black(turned ? 20 : 40, turned ? 40 : 20);
    picture.set(VIPS_META_ORIENTATION, orientation);
    std::vector<float> weights = maskWeights("mask.png", pictureOf(picture, ""));
    VImage stored = VImage::new_from_memory(weights.data(), weights.size() * sizeof(float), picture.width(),
                                            picture.height(), 1, VIPS_FORMAT_FLOAT);
    stored.set(VIPS_META_ORIENTATION, orientation);
    const VImage shown = stored.autorot().copy_memory();
    ASSERT_EQ(shown.width(), 40);
    EXPECT_EQ(difference(shown * 255, corner(40, 20, 10)), 0) << orientation;
  }
}

TEST_F(MaskTest, BlendsBeforeTheDepthGoesBack) {
  save("in.png", noisy(64, 48));
  save("mask.png", corner(64, 48, 24));
  ASSERT_EQ(orbel("in.png full.tif -d float --contrast 250"), 0);
  ASSERT_EQ(orbel("in.png blended.png --contrast 250 --mask mask.png --mix 50"), 0);
  const VImage in = load("in.png");
  const VImage blended = load("blended.png");
  const VImage exact = load("mask.png").ifthenelse((in + load("full.tif") * 255) / 2, in);
  const VImage clipped = (exact > 255).ifthenelse(255.0, (exact < 0).ifthenelse(0.0, exact));
  EXPECT_LE(difference(colours(blended), colours(clipped)), 0.5001);
  EXPECT_EQ(difference(blended[3], in[3]), 0);
  const VImage tagged = load("mask.png");
  vips_image_set_blob_copy(tagged.get_image(), VIPS_META_XMP_NAME, "<mask/>", 7);
  save("tagged.tif", tagged);
  ASSERT_EQ(orbel("in.png lines.tif --contrast 250 --mask tagged.tif --mix 50 --ref-edge 64"), 0);
  EXPECT_EQ(xmpOf(loadPicture("lines.tif")).find("<mask/>"), std::string::npos);
  EXPECT_EQ(difference(load("lines.tif"), load("blended.png")), 0);
  EXPECT_EQ(orbel("in.png deep.png --mix 50 --host-depth 16"), 2);
  save("wrong.png", corner(20, 40, 10));
  EXPECT_EQ(orbel("in.png dry.png --mask mask.png --dry-run"), 0);
  EXPECT_EQ(orbel("in.png dry.png --mask wrong.png --dry-run"), 1);
}

// The bands less middle grey, and the residual, are the equalized picture.
TEST_F(MaskTest, BandsAddUp) {
  save("in.tif", (colours(noisy(70, 50)).cast(VIPS_FORMAT_FLOAT) / 255)
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_scRGB)));
  const std::string settings = " --contrast 150,0,80,-20,300 --edges on,off,on,off,on --factor 90";
  ASSERT_EQ(orbel("bands in.tif -o bands --cross 5 --half" + settings), 0);
  ASSERT_EQ(orbel("in.tif whole.tif --half --no-half" + settings), 2) << "a flag and its opposite";
  ASSERT_EQ(orbel("in.tif whole.tif --planes" + settings), 0);
  VImage sum = load("bands/residual.tif");
  for (const char* band : {"1", "2", "3", "4", "5"}) sum += load(std::string("bands/band") + band + ".tif") - 0.5;
  EXPECT_LT(difference(sum, load("whole.tif")), 2e-6);
  const VImage sheet = load("bands/contact-sheet.png");
  EXPECT_GT(sheet.width(), 3 * 70);
  // The faint band 4 at the left of the second row, stretched.
  EXPECT_GT((sheet.extract_area(16, sheet.height() / 2 + 16, 70, 50) - 128).abs().avg(), 15);
  EXPECT_EQ(orbel("bands in.tif -o bands"), 1);
  EXPECT_EQ(orbel("bands in.tif -o bands -f --ref-edge 70"), 0);
  EXPECT_EQ(orbel("bands in.tif -o none --memory 20M"), 1);
  EXPECT_FALSE(fs::exists("none"));
}

// Beside the original, with the part below the whole.
TEST_F(MaskTest, SheetsShowWhatPresetsDo) {
  save("in.png", colours(noisy(300, 200)));
  ASSERT_EQ(orbel("sheet in.png -o sheet.png -p clarity -p crisp"), 0);
  ASSERT_EQ(orbel("in.png out.png -p crisp"), 0);
  const VImage sheet = load("sheet.png");
  constexpr int gap = 16;
  EXPECT_EQ(difference(sheet.extract_area(gap, gap, 300, 200), load("in.png")), 0);
  EXPECT_EQ(difference(sheet.extract_area(3 * gap + 600, gap + 200 + gap / 2, 300, 200), load("out.png")), 0);
  EXPECT_EQ(orbel("sheet in.png -o sheet.png"), 1) << "it is there";
  EXPECT_EQ(orbel("sheet in.png -o other.png --part 300,1"), 2);
}

}  // namespace
