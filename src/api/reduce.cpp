// A picture reduced by area means: of lines first, and then along the line, as the equalizer reduces its planes.

#include <string>

#include "api/door.h"
#include "api/picture.h"
#include "equalizer/area_mean.h"
#include "image/row_bands.h"

namespace {

constexpr int bandRows = 4;  // of the result: their lines of the source are in the cache for the next channel

constexpr int rowsOfScratch = 3;  // a line of the source, a sum of lines, and a line of the result

void requireSide(const char* name, std::int32_t side, std::int32_t most) {
  if (side >= 1 && side <= most) return;
  throw Refusal{ORBEL_BAD_ARGUMENT,
                std::string(name) + " is " + std::to_string(side) + "; it must be 1 to " + std::to_string(most)};
}

void requireTarget(const orbel_picture& source, const orbel_picture& target, IppiSize whole, std::int32_t column,
                   std::int32_t row) {
  const auto refuse = [](const char* reason) { throw Refusal{ORBEL_BAD_PICTURE, std::string("target: ") + reason}; };
  if (target.channels != source.channels) refuse("its channels differ");
  if (column < 0 || row < 0 || target.width > whole.width - column || target.height > whole.height - row) {
    refuse("it reaches beyond the reduced picture");
  }
  for (int c = 0; c < source.channels; ++c) {
    if (target.base[c] == source.base[c]) refuse("it begins where the source does");
  }
}

orbel_picture columnsOf(orbel_picture picture, int first, int end) {
  for (int c = 0; c < picture.channels; ++c) {
    picture.base[c] = static_cast<unsigned char*>(picture.base[c]) + first * picture.column_step;
  }
  picture.width = end - first;
  return picture;
}

}  // namespace

orbel_status orbel_reduce(const orbel_picture* source, int32_t width, int32_t height, int32_t column, int32_t row,
                          const orbel_picture* target, const orbel_options* options) {
  return guarded(options, [&](const orbel_options&) {
    const orbel_picture from = requirePicture(source, "source");
    requireSide("width", width, from.width);
    requireSide("height", height, from.height);
    const orbel_picture to = requirePicture(target, "target");
    requireTarget(from, to, {width, height}, column, row);
    const AreaMean across(from.width, width);
    const AreaMean down(from.height, height);
    const int left = across.first(column);
    const PictureLines read(columnsOf(from, left, across.end(column + to.width - 1)));
    const PictureLines written(to);
    const int covered = read.picture().width;
    const int rowBytes = rowBytesFor(from.width);
    eachBand(to.height, bandRows, std::int64_t{rowsOfScratch} * rowBytes, [&](int first, int count, void* scratch) {
      float* const line = floatsAt(scratch, 0);
      float* const sum = floatsAt(scratch, rowBytes);
      float* const result = floatsAt(scratch, std::int64_t{2} * rowBytes);
      for (int c = 0; c < from.channels; ++c) {
        int lineRead = -1;
        for (int y = first; y < first + count; ++y) {
          for (int j = down.first(row + y); j < down.end(row + y); ++j) {
            if (j != lineRead) read.readChannel(c, j, line + left);
            lineRead = j;
            down.addLine(row + y, j, line + left, covered, sum + left);
          }
          across.reduce(sum, column, to.width, result);
          written.writeChannel(c, y, result);
        }
      }
    });
  });
}
