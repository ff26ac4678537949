// Samples of one type from those of another.

#include <cstring>

#include "api/door.h"
#include "api/picture.h"
#include "image/row_bands.h"

namespace {

int integerOf(const unsigned char* sample, int samples) {
  if (samples == ORBEL_UINT8) return *sample;
  std::uint16_t value = 0;
  std::memcpy(&value, sample, sizeof value);
  return value;
}

void putInteger(double value, unsigned char* sample, int samples) {
  const double most = samples == ORBEL_UINT8 ? 255 : 65535;
  const auto level = static_cast<std::uint16_t>(value < most ? value + 0.5 : most);
  const auto byte = static_cast<std::uint8_t>(level);
  if (samples == ORBEL_UINT8) {
    *sample = byte;
  } else {
    std::memcpy(sample, &level, sizeof level);
  }
}

// By integers where both are: floats have no room for the halves between levels.
void convertLine(const orbel_picture& source, const orbel_picture& target, int channel, int y, float* floats) {
  const unsigned char* from = lineOf(source, channel, y);
  unsigned char* to = lineOf(target, channel, y);
  const Conversion reading = conversionOf(source.samples);
  const Conversion writing = conversionOf(target.samples);
  if (source.samples == target.samples) {
    const auto bytes = static_cast<std::size_t>(bytesOf(source.samples));
    for (int x = 0; x < source.width; ++x, from += source.column_step, to += target.column_step) {
      std::memmove(to, from, bytes);
    }
  } else if (source.samples == ORBEL_FLOAT32 || target.samples == ORBEL_FLOAT32) {
    reading.kernels.toFloats(from, source.column_step, floats, source.width, reading.toFloats);
    writing.kernels.fromFloats(floats, to, target.column_step, target.width, writing.fromFloats);
  } else {
    const double scale = writing.fromFloats / reading.fromFloats;
    for (int x = 0; x < source.width; ++x, from += source.column_step, to += target.column_step) {
      putInteger(integerOf(from, source.samples) * scale, to, target.samples);
    }
  }
}

}  // namespace

orbel_status orbel_convert(const orbel_picture* source, const orbel_picture* target) {
  return guarded(nullptr, [&](const orbel_options&) {
    const orbel_picture from = requirePicture(source, "source");
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    constexpr int rows = 16;
    eachBand(from.height, rows, rowBytesFor(from.width), [&](int first, int count, void* scratch) {
      for (int y = first; y < first + count; ++y) {
        for (int c = 0; c < from.channels; ++c) convertLine(from, to, c, y, static_cast<float*>(scratch));
      }
    });
  });
}
