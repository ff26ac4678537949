#include "equalizer/look.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "equalizer/equalizer_kernels.h"
#include "equalizer/luminance.h"
#include "equalizer/progress.h"
#include "image/row_bands.h"
#include "tone/colour_kernels.h"

namespace {

constexpr int rec601 = 2;  // selector of the luminance weights

constexpr double workOfASample = 8;  // of a line, in taps

// The rows that a line takes: the colours, the luminance, what became of each plane, and the result's scratch.
constexpr int rowsOfScratch = mostColours + 1;
constexpr int rowsOfLine = mostColours + 1 + mostColours + rowsOfScratch;

std::size_t bytesOfFloats(int count) { return static_cast<std::size_t>(count) * sizeof(float); }

// Addresses of lines in scratch.
template <std::size_t count>
std::array<float*, count> linesAt(float* first, int rowBytes) {
  std::array<float*, count> lines{};
  for (std::size_t i = 0; i < count; ++i) lines[i] = floatsAt(first, static_cast<std::int64_t>(i) * rowBytes);
  return lines;
}

// write(y, colours, luminance, what became of each plane, rows of scratch) for each line.
template <typename Write>
void eachLine(const Look& look, const KivRect& part, const PlaneLines& lines, Progress* progress, Write write) {
  const int rowBytes = rowBytesFor(part.width);
  const std::int64_t lookBytes = look.scratchBytes(part.width);
  if (progress != nullptr) progress->commit();
  eachBand(part.height, look.bandRows(), lookBytes + lineBytes(part.width), [&](int first, int count, void* scratch) {
    float* const own = floatsAt(scratch, lookBytes);
    const auto rows = linesAt<rowsOfLine>(own, rowBytes);
    float* const* const colours = rows.data();
    float* const luminance = rows[mostColours];
    float* const* const after = &rows[mostColours + 1];
    const KivRect band = {part.x, part.y + first, part.width, count};
    look.prepare(band, scratch);
    for (int i = 0; i < count; ++i) {
      lines.read(first + i, colours, luminance);
      for (int plane = 0; plane < lines.planes().count(); ++plane) {
        look.line(plane, i, band, lines.plane(plane, colours, luminance), after[plane], scratch);
      }
      write(first + i, colours, luminance, after, &rows[rowsOfLine - rowsOfScratch]);
    }
  });
}

}  // namespace

void PlaneLines::read(int y, float* const* colours, float* luminance) const {
  static const LuminanceWeights weights = luminanceWeights(rec601);
  lines_.read(y, colours);
  for (int i = planes_.colours; i < mostColours; ++i) std::memcpy(colours[i], colours[0], bytesOfFloats(width_));
  if (planes_.luminance) {
    colourKernels().weightedSumLine(luminance, colours[0], colours[1], colours[2], width_, weights.values);
  }
}

double linesWork(IppiSize size) { return workOfASample * size.width * size.height; }

std::int64_t lineBytes(int width) { return std::int64_t{rowsOfLine} * rowBytesFor(width); }

void putTogether(const Look& look, const KivRect& part, const PlaneLines& lines, const Finish& finish,
                 ResultLines& result, Progress* progress) {
  const EqualizerKernels& kernels = equalizerKernels();
  const Planes& planes = lines.planes();
  eachLine(look, part, lines, progress,
           [&](int y, float* const* colours, const float* luminance, float* const* after, float* const* scratch) {
             const bool addsChange = planes.luminance || finish.limited;
             if (planes.luminance && finish.limited) {
               kernels.addLimitedLine(colours[0], colours[1], colours[2], luminance, after[0], mostColours, part.width);
             } else if (planes.luminance) {
               kernels.addChangeLine(colours[0], colours[1], colours[2], luminance, after[0], 1.0F, part.width);
             }
             for (int c = 0; !planes.luminance && finish.limited && c < planes.colours; ++c) {
               kernels.addLimitedLine(colours[c], nullptr, nullptr, colours[c], after[c], 1, part.width);
             }
             float* const* const changed = addsChange ? colours : after;
             for (int c = 0; finish.half && c < planes.colours; ++c) {
               for (int x = 0; x < part.width; ++x) changed[c][x] += 0.5F;
             }
             result.write(y, changed, scratch);
             if (progress != nullptr) progress->add(linesWork({part.width, 1}));
           });
}

void putPlanesTogether(const Look& look, const KivRect& part, const PlaneLines& lines, ResultLines& result) {
  eachLine(look, part, lines, nullptr,
           [&](int y, float* const*, const float*, float* const* after, float* const* scratch) {
             result.write(y, after, scratch);
           });
}

void WholeLook::line(int plane, int i, const KivRect& part, const float*, float* to, const void*) const {
  std::memcpy(to, planes_.At(plane, part.x, part.y + i), bytesOfFloats(part.width));
}
