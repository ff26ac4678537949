#include "pictures/contact_sheet.h"

#include <algorithm>

#include "pictures/image_file.h"

namespace orbel {

using vips::VImage;

namespace {

constexpr int longestSide = 480;
constexpr int columns = 3;
constexpr int gap = 16;
constexpr double white = 255;

VImage reduced(const VImage& picture) {
  const double scale = std::min(1.0, static_cast<double>(longestSide) / std::max(picture.width(), picture.height()));
  return withSamples(scale < 1 ? picture.resize(scale) : picture, VIPS_FORMAT_UCHAR);
}

// Dark on white.
VImage labelPicture(const std::string& text, int bands) {
  const VImage ink = VImage::text(text.c_str(), VImage::option()->set("font", "sans 10")->set("dpi", 96));
  const VImage paper = (white - ink).cast(VIPS_FORMAT_UCHAR);
  return bands == 1 ? paper : VImage::bandjoin({paper, paper, paper});
}

}  // namespace

void ContactSheet::add(const VImage& picture, const std::string& label) {
  const VImage small = reduced(picture);
  const VImage text =
      labelPicture(label, small.bands()).copy(VImage::option()->set("interpretation", small.interpretation()));
  cells_.push_back(small
                       .join(text, VIPS_DIRECTION_VERTICAL,
                             VImage::option()
                                 ->set("expand", true)
                                 ->set("shim", gap / 2)
                                 ->set("background", std::vector<double>{white}))
                       .copy_memory());
}

VImage ContactSheet::sheet() const {
  const VImage joined = VImage::arrayjoin(
      cells_,
      VImage::option()->set("across", columns)->set("shim", gap)->set("background", std::vector<double>{white}));
  return joined.embed(gap, gap, joined.width() + 2 * gap, joined.height() + 2 * gap,
                      VImage::option()->set("extend", VIPS_EXTEND_WHITE));
}

}  // namespace orbel
