#include "api/picture.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "api/door.h"

namespace {

[[noreturn]] void refuse(const char* name, const std::string& reason) {
  throw Refusal{ORBEL_BAD_PICTURE, std::string(name) + ": " + reason};
}

// Whether so many rows and columns at these steps lie within the address space.
bool spans(std::int64_t rows, std::ptrdiff_t rowStep, int columns, std::ptrdiff_t columnStep) {
  const double bytes = std::abs(static_cast<double>(rows) * static_cast<double>(rowStep)) +
                       std::abs(static_cast<double>(columns) * static_cast<double>(columnStep));
  return bytes < static_cast<double>(std::numeric_limits<std::ptrdiff_t>::max());
}

// The widest picture whose line of floats, rounded up, has a size in 32 bits; and the highest, to have one limit.
constexpr int longestSide = (std::numeric_limits<std::int32_t>::max() - 63) / 4;

orbel_status describe(orbel_picture* picture, std::size_t size, orbel_samples samples, std::int32_t width,
                      std::int32_t height, std::int32_t channels, void* pixels, std::ptrdiff_t rowStep,
                      bool interleaved) {
  if (channels < 1 || channels > ORBEL_CHANNELS || samples < ORBEL_UINT8 || samples > ORBEL_FLOAT32) {
    return ORBEL_BAD_ARGUMENT;
  }
  if (const orbel_status status = initRecord(picture, size); status != ORBEL_OK) return status;
  const std::ptrdiff_t bytes = bytesOf(samples);
  if (!spans(std::int64_t{height} * (interleaved ? 1 : channels), rowStep, 0, 0)) return ORBEL_BAD_ARGUMENT;
  const std::ptrdiff_t step = interleaved ? bytes : rowStep * height;
  picture->width = width;
  picture->height = height;
  picture->channels = channels;
  picture->samples = samples;
  for (int i = 0; i < channels && pixels != nullptr; ++i) {
    picture->base[i] = static_cast<unsigned char*>(pixels) + i * step;
  }
  picture->column_step = interleaved ? bytes * channels : bytes;
  picture->row_step = rowStep;
  return ORBEL_OK;
}

}  // namespace

int bytesOf(int samples) {
  return samples == ORBEL_UINT8 ? 1 : samples == ORBEL_FLOAT32 ? static_cast<int>(sizeof(float)) : 2;
}

int coloursOf(const orbel_picture& picture) { return picture.channels < 3 ? 1 : 3; }
bool hasAlpha(const orbel_picture& picture) { return picture.channels % 2 == 0; }

Conversion conversionOf(int samples) {
  const SampleKernels& kernels = sampleKernels();
  switch (samples) {
    case ORBEL_UINT8:
      return {kernels.bytes, double{1.0F / 255.0F}, 255};
    case ORBEL_UINT16:
      return {kernels.file16, 1.0 / 65535, 65535};
    case ORBEL_UINT16_HOST:
      return {kernels.host16, 1.0 / 32768, 32768};
    default:
      return {kernels.floats, 1, 1};
  }
}

orbel_picture requireShape(const orbel_picture* picture, const char* name) {
  const orbel_picture p = requireRecord(picture, name);
  if (p.width < 1 || p.height < 1 || p.width > longestSide || p.height > longestSide) {
    refuse(name, "width and height must be 1 to " + std::to_string(longestSide));
  }
  if (p.channels < 1 || p.channels > ORBEL_CHANNELS) refuse(name, "channels must be 1 to 4");
  if (p.samples < ORBEL_UINT8 || p.samples > ORBEL_FLOAT32) refuse(name, "samples is none of the four types");
  return p;
}

orbel_picture requirePicture(const orbel_picture* picture, const char* name) {
  const orbel_picture p = requireShape(picture, name);
  for (int i = 0; i < p.channels; ++i) {
    if (p.base[i] == nullptr) refuse(name, "base[" + std::to_string(i) + "] is null");
  }
  if ((p.column_step == 0 && p.width > 1) || (p.row_step == 0 && p.height > 1)) {
    refuse(name, "column_step and row_step must not be 0");
  }
  if (!spans(p.height, p.row_step, p.width, p.column_step)) refuse(name, "a step is too large");
  return p;
}

void requireAlike(const orbel_picture& source, const orbel_picture& target) {
  if (source.width != target.width || source.height != target.height) refuse("target", "its size differs");
  if (source.channels != target.channels) refuse("target", "its channels differ");
  const bool liesAlike = bytesOf(source.samples) == bytesOf(target.samples) &&
                         (source.width == 1 || source.column_step == target.column_step) &&
                         (source.height == 1 || source.row_step == target.row_step);
  for (int i = 0; i < source.channels; ++i) {
    if (source.base[i] == target.base[i] && !liesAlike) {
      refuse("target", "it begins where the source does, and goes on elsewhere");
    }
  }
}

void copyLine(const orbel_picture& source, const orbel_picture& target, int channel, int y) {
  const auto bytes = static_cast<std::size_t>(bytesOf(source.samples));
  const unsigned char* from = lineOf(source, channel, y);
  unsigned char* to = lineOf(target, channel, y);
  for (int x = 0; x < source.width; ++x, from += source.column_step, to += target.column_step) {
    std::memmove(to, from, bytes);  // they may be one picture
  }
}

PictureLines::PictureLines(const orbel_picture& picture)
    : picture_(picture), conversion_(conversionOf(picture.samples)) {}

void PictureLines::read(int y, float* const* colours) const {
  for (int c = 0; c < coloursOf(picture_); ++c) readChannel(c, y, colours[c]);
}

void PictureLines::readChannel(int channel, int y, float* to) const {
  conversion_.kernels.toFloats(lineOf(picture_, channel, y), picture_.column_step, to, picture_.width,
                               conversion_.toFloats);
}

void PictureLines::writeChannel(int channel, int y, const float* from) const {
  conversion_.kernels.fromFloats(from, lineOf(picture_, channel, y), picture_.column_step, picture_.width,
                                 conversion_.fromFloats);
}

orbel_status orbel_picture_interleaved(orbel_picture* picture, size_t size, orbel_samples samples, int32_t width,
                                       int32_t height, int32_t channels, void* pixels, ptrdiff_t row_step) {
  return describe(picture, size, samples, width, height, channels, pixels, row_step, true);
}

orbel_status orbel_picture_planar(orbel_picture* picture, size_t size, orbel_samples samples, int32_t width,
                                  int32_t height, int32_t channels, void* pixels, ptrdiff_t row_step) {
  return describe(picture, size, samples, width, height, channels, pixels, row_step, false);
}
