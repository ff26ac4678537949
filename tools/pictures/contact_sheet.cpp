#include "pictures/contact_sheet.h"

#include <algorithm>

#include "pictures/errors.h"
#include "pictures/samples.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

namespace {

constexpr int longestSide = 480;
constexpr int columns = 3;
constexpr int gap = 16;
constexpr double white = 255;

VImage reduced(const VImage& picture) {
  const double scale = std::min(1.0, static_cast<double>(longestSide) / std::max(picture.width(), picture.height()));
  return scaledTo(VIPS_FORMAT_UCHAR, scale < 1 ? picture.resize(scale) : picture);
}

// Dark on white.
VImage labelPicture(const std::string& text, int bands) {
  const VImage ink = VImage::text(text.c_str(), VImage::option()->set("font", "sans 10")->set("dpi", 96));
  const VImage paper = (white - ink).cast(VIPS_FORMAT_UCHAR);
  return bands == 1 ? paper : VImage::bandjoin({paper, paper, paper});
}

VImage labelled(const VImage& small, const std::string& label) {
  const VImage text =
      labelPicture(label, small.bands()).copy(VImage::option()->set("interpretation", small.interpretation()));
  return small
      .join(text, VIPS_DIRECTION_VERTICAL,
            VImage::option()->set("expand", true)->set("shim", gap / 2)->set("background", std::vector<double>{white}))
      .copy_memory();
}

}  // namespace

void ContactSheet::add(const Picture& picture, const std::string& label) {
  cells_.push_back(translated(nameOf(picture), Cause::Other,
                              [&] { return pictureOf(labelled(reduced(imageOf(picture)), label), nameOf(picture)); }));
}

Picture ContactSheet::sheet() const {
  const std::string& name = nameOf(cells_.front());
  return translated(name, Cause::Other, [&] {
    std::vector<VImage> cells;
    for (const Picture& cell : cells_) cells.push_back(imageOf(cell));
    const VImage joined = VImage::arrayjoin(
        cells,
        VImage::option()->set("across", columns)->set("shim", gap)->set("background", std::vector<double>{white}));
    return pictureOf(joined.embed(gap, gap, joined.width() + 2 * gap, joined.height() + 2 * gap,
                                  VImage::option()->set("extend", VIPS_EXTEND_WHITE)),
                     name);
  });
}

}  // namespace orbel
