#include "pictures/contact_sheet.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

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

VImage above(const VImage& upper, const VImage& lower) {
  return upper.join(
      lower, VIPS_DIRECTION_VERTICAL,
      VImage::option()->set("expand", true)->set("shim", gap / 2)->set("background", std::vector<double>{white}));
}

VImage labelled(const VImage& small, const std::string& label) {
  const VImage text =
      labelPicture(label, small.bands()).copy(VImage::option()->set("interpretation", small.interpretation()));
  return above(small, text).copy_memory();
}

// By how much a band's contrast is raised: in steps that can be said, and not at all where there is next to nothing.
double stretchOf(const VImage& band) {
  constexpr double grey = 128;
  constexpr double filled = 96;  // levels on either side
  const VImage away = (band - grey).abs().cast(VIPS_FORMAT_UCHAR);
  const double most = away.bandmean().percent(99);
  return most < 1 ? 1 : std::max(1.0, std::round(10 * filled / most) / 10);
}

}  // namespace

void ContactSheet::add(const Picture& picture, const std::string& label) {
  cells_.push_back(translated(nameOf(picture), Cause::Other,
                              [&] { return pictureOf(labelled(reduced(imageOf(picture)), label), nameOf(picture)); }));
}

void ContactSheet::addBand(const Picture& band, const std::string& label) {
  cells_.push_back(translated(nameOf(band), Cause::Other, [&] {
    const VImage small = reduced(imageOf(band));
    const double stretch = stretchOf(small);
    const VImage shown = ((small - 128) * stretch + 128).cast(VIPS_FORMAT_UCHAR);
    const VImage same = shown.copy(VImage::option()->set("interpretation", small.interpretation()));
    const std::string said = stretch > 1 ? fmt::format("{}\nshown {:.4g} times as strong", label, stretch) : label;
    return pictureOf(labelled(same, said), nameOf(band));
  }));
}

void ContactSheet::addWithPart(const Picture& picture, const Rectangle& part, const std::string& label) {
  cells_.push_back(translated(nameOf(picture), Cause::Other, [&] {
    const VImage& image = imageOf(picture);
    const VImage cut = scaledTo(VIPS_FORMAT_UCHAR, image.extract_area(part.x, part.y, part.width, part.height));
    return pictureOf(labelled(above(reduced(image), cut), label), nameOf(picture));
  }));
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
