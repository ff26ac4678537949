#include "plugin/plugin_run.h"

#include <algorithm>
#include <new>

#include "plugin/script_descriptor.h"

namespace orbel {

namespace {

int coloursOf(const orbel_picture& picture) { return picture.channels < 3 ? 1 : 3; }

orbel_picture coloursAlone(orbel_picture picture) {
  picture.channels = coloursOf(picture);
  return picture;
}

orbel_picture recordOf(Document& document) {
  orbel_picture picture{};
  const orbel_samples samples = document.depth == 8    ? ORBEL_UINT8
                                : document.depth == 16 ? ORBEL_UINT16_HOST
                                                       : ORBEL_FLOAT32;
  const auto planes = static_cast<std::int32_t>(document.planes.size());
  orbel_picture_planar(&picture, sizeof picture, samples, document.width, document.height, planes,
                       document.planes[0].data(), static_cast<std::ptrdiff_t>(document.rowBytes()));
  for (std::int32_t i = 0; i < planes; ++i) picture.base[i] = document.planes[static_cast<std::size_t>(i)].data();
  return picture;
}

void convert(const orbel_picture& from, const orbel_picture& to) {
  if (orbel_convert(&from, &to) != ORBEL_OK) throw std::bad_alloc();
}

Document documentOf(const orbel_picture& picture, int depth) {
  Document document{picture.width, picture.height, depth, {}};
  document.planes.resize(static_cast<std::size_t>(coloursOf(picture)));
  for (auto& plane : document.planes) plane.resize(document.rowBytes() * static_cast<std::size_t>(document.height));
  convert(coloursAlone(picture), recordOf(document));
  return document;
}

// As the engine blends, which a module knows nothing of.
void blend(const Document& original, const std::vector<float>& mask, float mix, Document& result) {
  const auto pixels = static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height);
  for (std::size_t plane = 0; plane < result.planes.size(); ++plane) {
    const auto* const from = reinterpret_cast<const float*>(original.planes[plane].data());
    auto* const to = reinterpret_cast<float*>(result.planes[plane].data());
    for (std::size_t i = 0; i < pixels; ++i) {
      const float weight = mask.empty() ? mix : mask[i] * mix;
      // Apart, because 0 times an infinity is no number.
      if (weight == 0) {
        to[i] = from[i];
      } else if (weight < 1) {
        to[i] = from[i] * (1 - weight) + to[i] * weight;
      }
    }
  }
}

void carryAlpha(const orbel_picture& source, const orbel_picture& target) {
  if (source.channels % 2 != 0) return;
  const auto alphaOf = [](orbel_picture picture) {
    picture.base[0] = picture.base[picture.channels - 1];
    picture.channels = 1;
    return picture;
  };
  convert(alphaOf(source), alphaOf(target));
}

}  // namespace

void runThroughPlugin(PluginEntry entry, const orbel_settings& settings, int depth, const orbel_picture& source,
                      const orbel_picture& target, const std::vector<float>& mask) {
  Document document = documentOf(source, depth);
  const bool isBlended = settings.mix != 100 || !mask.empty();
  Document original;
  if (isBlended) original = document;
  runPlugin(entry, scriptOf(settings), document);
  if (isBlended) blend(original, mask, static_cast<float>(settings.mix / 100), document);
  convert(recordOf(document), coloursAlone(target));
  carryAlpha(source, target);
}

}  // namespace orbel
