#include "pictures/photoshop_file.h"

#include <fstream>
#include <iterator>

#include "pictures/samples.h"

namespace orbel {

using vips::VImage;

namespace {

std::string contentOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// That library gives grey in three equal planes, and the depth that the samples happen to need instead of the file's.
VImage asPhotoshopHasIt(VImage picture, int bits) {
  const VipsInterpretation model = picture.interpretation();
  const bool grey = model == VIPS_INTERPRETATION_B_W || model == VIPS_INTERPRETATION_GREY16;
  if (grey && picture.bands() == 3) picture = picture[0];
  if (grey && picture.bands() == 4) picture = picture[0].bandjoin(picture[3]);
  const VipsBandFormat format = formatFor(bits == 8 ? SampleType::bytes : SampleType::words);
  const bool differs =
      (bits == 8 && picture.format() == VIPS_FORMAT_USHORT) || (bits == 16 && picture.format() == VIPS_FORMAT_UCHAR);
  const bool inks = model == VIPS_INTERPRETATION_CMYK;
  return differs && !inks ? scaledTo(format, picture) : picture;
}

}  // namespace

VImage openPhotoshop(const std::string& name, int bits) {
  const std::string content = contentOf(name);  // it takes no stream
  VipsBlob* const blob = vips_blob_copy(content.data(), content.size());
  VImage picture = VImage::magickload_buffer(blob, VImage::option()->set("fail_on", VIPS_FAIL_ON_ERROR));
  vips_area_unref(VIPS_AREA(blob));
  return asPhotoshopHasIt(picture, bits);
}

}  // namespace orbel
