// Samples between the host's types and floats.
#include <cstddef>
#include <cstring>

#include "host/filter_run.h"
#include "image/kiv_image.h"
#include "image/parallel.h"

namespace {

constexpr float scaleFrom8 = 1.0F / 255.0F;  // applied as a multiplication
constexpr float scaleFrom16 = 1.0F / static_cast<float>(white16);

template <typename Sample>
Sample saturate(float value) {
  constexpr float most = sizeof(Sample) == 1 ? 255.0F : 65535.0F;
  // Beyond 32 bits and NaN, conversion gives the most negative integer, and so 0; written out, since C++ leaves it
  // open.
  value = value < 2147483648.0F ? value : 0.0F;
  value = value > most ? most : value;
  value = value > 0.0F ? value : 0.0F;
  // From 2^23 on floats are whole numbers: the sum is rounded to nearest, ties to even. Unlike rint this becomes vector
  // code on every processor.
  const float rounded = (value + 8388608.0F) - 8388608.0F;
  return static_cast<Sample>(static_cast<std::int32_t>(rounded));
}

// Host samples may lie at odd addresses, so they are moved as bytes; step counts elements.
template <typename Source, typename Target, typename Operation>
void convertRows(const Source* src, Target* dst, std::int32_t height, std::int32_t width, std::int32_t srcStep,
                 std::int32_t dstStep, Operation operation) {
  if (height < 1 || width < 1) return;
  const auto* from = reinterpret_cast<const unsigned char*>(src);
  auto* to = reinterpret_cast<unsigned char*>(dst);
  const auto fromStep = srcStep * static_cast<std::ptrdiff_t>(sizeof(Source));
  const auto toStep = dstStep * static_cast<std::ptrdiff_t>(sizeof(Target));
  eachIndex(height, [&](int y) {
    const unsigned char* fromRow = from + y * fromStep;
    unsigned char* toRow = to + y * toStep;
    for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
      Source sample;
      std::memcpy(&sample, fromRow + x * sizeof sample, sizeof sample);
      const Target converted = operation(sample);
      std::memcpy(toRow + x * sizeof converted, &converted, sizeof converted);
    }
  });
}

}  // namespace

void ConvertFromUint8Kiv(float* dst, const unsigned char* src, std::int32_t height, std::int32_t width,
                         std::int32_t srcStep, std::int32_t dstStep, float scale) {
  convertRows(src, dst, height, width, srcStep, dstStep,
              [scale](unsigned char sample) { return static_cast<float>(sample) * scale; });
}

void ConvertFromUint16Kiv(float* dst, const unsigned short* src, std::int32_t height, std::int32_t width,
                          std::int32_t srcStep, std::int32_t dstStep, float scale) {
  convertRows(src, dst, height, width, srcStep, dstStep,
              [scale](unsigned short sample) { return static_cast<float>(sample) * scale; });
}

void ConvertToUint8Kiv(unsigned char* dst, const float* src, std::int32_t height, std::int32_t width,
                       std::int32_t srcStep, std::int32_t dstStep, float scale) {
  convertRows(src, dst, height, width, srcStep, dstStep,
              [scale](float sample) { return saturate<unsigned char>(sample * scale); });
}

void ConvertToUint16Kiv(unsigned short* dst, const float* src, std::int32_t height, std::int32_t width,
                        std::int32_t srcStep, std::int32_t dstStep, float scale) {
  convertRows(src, dst, height, width, srcStep, dstStep,
              [scale](float sample) { return saturate<unsigned short>(sample * scale); });
}

void ConvertFromPs(KivImage&& plane, PS_Database& db) {
  const std::int32_t step = plane.stride / static_cast<std::int32_t>(sizeof(float));
  switch (db.depthCode) {
    case 0:
      ConvertFromUint8Kiv(plane.planes[0], static_cast<const unsigned char*>(db.inData), plane.size.height,
                          plane.size.width, db.inRowBytes, step, scaleFrom8);
      break;
    case 1:
      ConvertFromUint16Kiv(plane.planes[0], static_cast<const unsigned short*>(db.inData), plane.size.height,
                           plane.size.width, db.inRowBytes / 2, step, scaleFrom16);
      break;
    case 2:
      ippiCopy_32f_C1R(static_cast<const float*>(db.inData), db.inRowBytes, plane.planes[0], plane.stride, plane.size);
      break;
    default:
      break;
  }
}

void ConvertToPs(KivImage&& plane, PS_Database& db) {
  const std::int32_t step = plane.stride / static_cast<std::int32_t>(sizeof(float));
  switch (db.depthCode) {
    case 0:
      ConvertToUint8Kiv(static_cast<unsigned char*>(db.outData), plane.planes[0], plane.size.height, plane.size.width,
                        step, db.outRowBytes, 255.0F);
      break;
    case 1:
      ConvertToUint16Kiv(static_cast<unsigned short*>(db.outData), plane.planes[0], plane.size.height, plane.size.width,
                         step, db.outRowBytes / 2, static_cast<float>(white16));
      break;
    case 2:
      ippiCopy_32f_C1R(plane.planes[0], plane.stride, static_cast<float*>(db.outData), db.outRowBytes, plane.size);
      break;
    default:
      break;
  }
}
