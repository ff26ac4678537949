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
void convertLine(const PictureLines& from, const PictureLines& to, int channel, int y, float* floats) {
  const orbel_picture& source = from.picture();
  const orbel_picture& target = to.picture();
  if (source.samples == target.samples) {
    copyLine(source, target, channel, y);
  } else if (source.samples == ORBEL_FLOAT32 || target.samples == ORBEL_FLOAT32) {
    from.readChannel(channel, y, floats);
    to.writeChannel(channel, y, floats);
  } else {
    const double scale = conversionOf(target.samples).fromFloats / conversionOf(source.samples).fromFloats;
    const unsigned char* read = lineOf(source, channel, y);
    unsigned char* written = lineOf(target, channel, y);
    for (int x = 0; x < source.width; ++x, read += source.column_step, written += target.column_step) {
      putInteger(integerOf(read, source.samples) * scale, written, target.samples);
    }
  }
}

}  // namespace

orbel_status orbel_convert(const orbel_picture* source, const orbel_picture* target) {
  return guarded(nullptr, [&](const orbel_options&) {
    const orbel_picture from = requirePicture(source, "source");
    const orbel_picture to = requirePicture(target, "target");
    requireAlike(from, to);
    const PictureLines read(from);
    const PictureLines written(to);
    constexpr int rows = 16;
    eachBand(from.height, rows, rowBytesFor(from.width), [&](int first, int count, void* scratch) {
      for (int y = first; y < first + count; ++y) {
        for (int c = 0; c < from.channels; ++c) convertLine(read, written, c, y, static_cast<float*>(scratch));
      }
    });
  });
}
