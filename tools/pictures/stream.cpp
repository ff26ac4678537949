#include "pictures/stream.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vips/vips8>

#include "pictures/errors.h"
#include "pictures/samples.h"
#include "pictures/vips_picture.h"

namespace orbel {

using vips::VImage;

namespace {

orbel_samples typeOf(VipsBandFormat format) {
  return format == VIPS_FORMAT_UCHAR ? ORBEL_UINT8 : format == VIPS_FORMAT_USHORT ? ORBEL_UINT16 : ORBEL_FLOAT32;
}

orbel_picture partOf(VipsRegion* region, const VipsRect& part) {
  const VipsImage* const image = region->im;
  const auto rowStep = static_cast<std::ptrdiff_t>(VIPS_REGION_LSKIP(region));
  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, typeOf(image->BandFmt), part.width, part.height, image->Bands,
                            VIPS_REGION_ADDR(region, part.left, part.top), rowStep);
  return picture;
}

struct Taking {
  const std::function<bool(const orbel_picture& lines)>& take;
  bool goesOn = true;
};

extern "C" int takeRegion(VipsRegion* region, VipsRect* area, void* context) {
  Taking& taking = *static_cast<Taking*>(context);
  taking.goesOn = taking.take(partOf(region, *area));
  return taking.goesOn ? 0 : -1;
}

// What a rendered image has beside its pixels.
struct Rendering {
  VImage source;
  VImage mask;
  std::array<VipsImage*, 3> inputs{};  // of which the last is null
  int left = 0;
  int top = 0;
  Render render;
};

extern "C" int renderRegion(VipsRegion* to, void* sequence, void*, void* context, gboolean*) {
  const Rendering& rendering = *static_cast<const Rendering*>(context);
  VipsRegion* const source = static_cast<VipsRegion**>(sequence)[0];
  VipsRegion* const weights = static_cast<VipsRegion**>(sequence)[1];  // null without a mask
  VipsRect part = to->valid;
  part.left += rendering.left;
  part.top += rendering.top;
  if (vips_region_prepare(source, &part) != 0) return -1;
  if (weights != nullptr && vips_region_prepare(weights, &part) != 0) return -1;
  orbel_picture mask{};
  if (weights != nullptr) mask = partOf(weights, part);
  const std::string error = rendering.render(
      {part.left, part.top, partOf(source, part), partOf(to, to->valid), weights != nullptr ? &mask : nullptr});
  if (!error.empty()) vips_error("orbel", "%s", error.c_str());
  return error.empty() ? 0 : -1;
}

extern "C" void forget(VipsImage*, void* rendering) { delete static_cast<Rendering*>(rendering); }

}  // namespace

void readInLines(const Picture& opened, const std::string& name,
                 const std::function<bool(const orbel_picture& lines)>& take) {
  Taking taking{take};
  translated(name, Cause::Damaged, [&] {
    const bool isRead = vips_sink_disc(imageOf(opened).get_image(), takeRegion, &taking) == 0;
    if (!isRead && taking.goesOn) throw vips::VError();
  });
}

Picture rendered(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                 const std::optional<Picture>& mask, const Render& render) {
  return translated(nameOf(source), Cause::Other, [&] {
    auto rendering = std::make_unique<Rendering>();
    rendering->source = imageOf(source);
    rendering->inputs[0] = rendering->source.get_image();
    if (mask) {
      rendering->mask = imageOf(*mask);
      rendering->inputs[1] = rendering->mask.get_image();
    }
    rendering->render = render;
    const VImage image(vips_image_new());
    VipsImage* const made = image.get_image();
    // Of the source alone: an image gets the metadata of all that it is made of, and a mask's are none of the result's.
    if (vips_image_pipelinev(made, VIPS_DEMAND_STYLE_FATSTRIP, rendering->inputs[0], nullptr) != 0) {
      throw vips::VError();
    }
    // Several lines at a time, even where the source is read line by line: what lies between lines is shared.
    made->dhint = VIPS_DEMAND_STYLE_FATSTRIP;
    made->Type = modelFor(formatFor(samples), rendering->source);
    made->BandFmt = formatFor(samples);
    if (part) {
      rendering->left = part->x;
      rendering->top = part->y;
      made->Xsize = part->width;
      made->Ysize = part->height;
    }
    Rendering* const owned = rendering.release();
    g_signal_connect(made, "postclose", G_CALLBACK(forget), owned);
    if (vips_image_generate(made, vips_start_many, renderRegion, vips_stop_many, owned->inputs.data(), owned) != 0) {
      throw vips::VError();
    }
    return pictureOf(image, nameOf(source));
  });
}

}  // namespace orbel
