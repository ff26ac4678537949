// Samples between the host's types and floats.
#include <cstddef>

#include "host/filter_run.h"
#include "image/kiv_image.h"
#include "image/parallel.h"
#include "image/sample_kernels.h"

namespace {

constexpr float scaleFrom8 = 1.0F / 255.0F;  // applied as a multiplication
constexpr float scaleFrom16 = 1.0F / static_cast<float>(white16);

// line(first byte of the source's row y, of the target's) for each row. Steps are in bytes.
template <typename Source, typename Target, typename Line>
void eachPairOfRows(const Source* src, std::ptrdiff_t srcStep, Target* dst, std::ptrdiff_t dstStep, std::int32_t height,
                    std::int32_t width, Line line) {
  if (height < 1 || width < 1) return;
  const auto* const from = reinterpret_cast<const unsigned char*>(src);
  auto* const to = reinterpret_cast<unsigned char*>(dst);
  eachIndex(height, [&](int y) { line(from + y * srcStep, to + y * dstStep); });
}

template <typename Sample>
void fromHost(const SampleKernels::Pair& kernels, float* dst, const Sample* src, std::int32_t height,
              std::int32_t width, std::ptrdiff_t srcStep, std::ptrdiff_t dstStep, float scale) {
  constexpr std::ptrdiff_t sampleBytes = sizeof(Sample);
  constexpr std::ptrdiff_t floatBytes = sizeof(float);
  const auto line = [&](const unsigned char* from, unsigned char* to) {
    kernels.toFloats(from, sampleBytes, reinterpret_cast<float*>(to), width, double{scale});
  };
  eachPairOfRows(src, srcStep * sampleBytes, dst, dstStep * floatBytes, height, width, line);
}

template <typename Sample>
void toHost(const SampleKernels::Pair& kernels, Sample* dst, const float* src, std::int32_t height, std::int32_t width,
            std::ptrdiff_t srcStep, std::ptrdiff_t dstStep, float scale) {
  constexpr std::ptrdiff_t sampleBytes = sizeof(Sample);
  constexpr std::ptrdiff_t floatBytes = sizeof(float);
  const auto line = [&](const unsigned char* from, unsigned char* to) {
    kernels.fromFloats(reinterpret_cast<const float*>(from), to, sampleBytes, width, double{scale});
  };
  eachPairOfRows(src, srcStep * floatBytes, dst, dstStep * sampleBytes, height, width, line);
}

}  // namespace

void ConvertFromUint8Kiv(float* dst, const unsigned char* src, std::int32_t height, std::int32_t width,
                         std::int32_t srcStep, std::int32_t dstStep, float scale) {
  fromHost(sampleKernels().bytes, dst, src, height, width, srcStep, dstStep, scale);
}

void ConvertFromUint16Kiv(float* dst, const unsigned short* src, std::int32_t height, std::int32_t width,
                          std::int32_t srcStep, std::int32_t dstStep, float scale) {
  fromHost(sampleKernels().host16, dst, src, height, width, srcStep, dstStep, scale);
}

void ConvertToUint8Kiv(unsigned char* dst, const float* src, std::int32_t height, std::int32_t width,
                       std::int32_t srcStep, std::int32_t dstStep, float scale) {
  toHost(sampleKernels().bytes, dst, src, height, width, srcStep, dstStep, scale);
}

void ConvertToUint16Kiv(unsigned short* dst, const float* src, std::int32_t height, std::int32_t width,
                        std::int32_t srcStep, std::int32_t dstStep, float scale) {
  toHost(sampleKernels().host16, dst, src, height, width, srcStep, dstStep, scale);
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
