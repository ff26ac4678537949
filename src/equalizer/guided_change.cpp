#include "equalizer/guided_change.h"

#include <algorithm>
#include <array>

#include "image/row_bands.h"

namespace {

constexpr int side = 3;
constexpr float epsilon = 0.01F * 0.01F;

// Sums down a square's three lines, of a plane p and its change c.
struct ColumnSums {
  float* p;
  float* c;
  float* pp;
  float* cp;
};

}  // namespace

// Single precision does: what a variance of samples up to 1 loses, some 1e-7, is far below epsilon.
KivImage guidedChange(const KivImage& change, const KivImage& planes) {
  const int width = planes.size.width;
  const int height = planes.size.height;
  const int count = planes.channels;
  KivImage guided(planes.size, 2 * count);
  const int rowBytes = rowBytesFor(width + 2);
  constexpr int bandRows = 16;
  eachBand(height, bandRows, std::int64_t{4} * rowBytes, [&](int first, int rows, void* scratch) {
    const ColumnSums sums = {floatsAt(scratch, 0), floatsAt(scratch, rowBytes),
                             floatsAt(scratch, std::int64_t{2} * rowBytes),
                             floatsAt(scratch, std::int64_t{3} * rowBytes)};
    for (int plane = 0; plane < count; ++plane) {
      for (int y = first; y < first + rows; ++y) {
        std::array<const float*, side> p{};
        std::array<const float*, side> c{};
        for (int j = 0; j < side; ++j) {
          const int line = std::clamp(y + j - 1, 0, height - 1);
          p[static_cast<std::size_t>(j)] = planes.At(plane, 0, line);
          c[static_cast<std::size_t>(j)] = change.At(plane, 0, line);
        }
        for (int x = 0; x < width; ++x) {
          sums.p[x + 1] = p[0][x] + p[1][x] + p[2][x];
          sums.c[x + 1] = c[0][x] + c[1][x] + c[2][x];
          sums.pp[x + 1] = p[0][x] * p[0][x] + p[1][x] * p[1][x] + p[2][x] * p[2][x];
          sums.cp[x + 1] = c[0][x] * p[0][x] + c[1][x] * p[1][x] + c[2][x] * p[2][x];
        }
        for (float* const row : {sums.p, sums.c, sums.pp, sums.cp}) {
          row[0] = row[1];
          row[width + 1] = row[width];
        }
        float* const b = guided.At(plane, 0, y);
        float* const a = guided.At(count + plane, 0, y);
        constexpr float share = 1.0F / (side * side);
        for (int x = 0; x < width; ++x) {
          const auto mean = [x](const float* row) { return (row[x] + row[x + 1] + row[x + 2]) * share; };
          const float meanP = mean(sums.p);
          const float meanC = mean(sums.c);
          const float variance = mean(sums.pp) - meanP * meanP;
          const float covariance = mean(sums.cp) - meanC * meanP;
          a[x] = covariance / (std::max(variance, 0.0F) + epsilon);
          b[x] = meanC - a[x] * meanP;
        }
      }
    }
  });
  return guided;
}

double guidedChangeBytes(IppiSize size, int planes, int threads) {
  const double row = rowBytesFor(size.width);
  return 2 * planes * row * size.height + threads * 4 * row;
}
