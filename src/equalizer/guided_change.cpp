#include "equalizer/guided_change.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "equalizer/area_mean.h"
#include "image/row_bands.h"

namespace {

constexpr int side = 3;
constexpr float epsilon = 0.001F;
constexpr int rounds = 5;

// Sums down a square's three lines, of a plane p and its change c.
struct ColumnSums {
  float* p;
  float* c;
  float* pp;
  float* cp;
};

// What of a line's sample gets to each neighbour when it is enlarged to `to` samples and reduced again, on average.
float softness(int from, int to) {
  const AreaMean mean(to, from);
  double aside = 0;
  for (int i = 0; i < from; ++i) {
    for (int j = mean.first(i); j < mean.end(i); ++j) {
      const double distance = std::abs((j + 0.5) * from / to - 0.5 - i);
      aside += static_cast<double>(mean.weight(i, j)) * std::min(distance, 1.0);
    }
  }
  return static_cast<float>(aside / (2.0 * from));
}

// to = from under (q, 1 - 2 q, q) each way, the edges going on; to has one plane.
void soften(KivImage& to, const KivImage& from, int plane, float qAcross, float qDown) {
  const int width = from.size.width;
  const int last = from.size.height - 1;
  eachBand(from.size.height, 16, rowBytesFor(width), [&](int first, int rows, void* scratch) {
    auto* const down = static_cast<float*>(scratch);
    for (int y = first; y < first + rows; ++y) {
      const float* const above = from.At(plane, 0, std::max(y - 1, 0));
      const float* const here = from.At(plane, 0, y);
      const float* const below = from.At(plane, 0, std::min(y + 1, last));
      float* const line = to.At(0, 0, y);
      for (int x = 0; x < width; ++x) down[x] = here[x] * (1 - 2 * qDown) + (above[x] + below[x]) * qDown;
      for (int x = 1; x < width - 1; ++x) line[x] = down[x] * (1 - 2 * qAcross) + (down[x - 1] + down[x + 1]) * qAcross;
      for (const int x : {0, width - 1}) {
        const float neighbours = down[std::max(x - 1, 0)] + down[std::min(x + 1, width - 1)];
        line[x] = down[x] * (1 - 2 * qAcross) + neighbours * qAcross;
      }
    }
  });
}

// b is made up for what interpolation softens.
void makeUp(KivImage& guided, const KivImage& change, const KivImage& planes, IppiSize picture) {
  const IppiSize size = planes.size;
  const int count = planes.channels;
  const float qAcross = softness(size.width, picture.width);
  const float qDown = softness(size.height, picture.height);
  KivImage softA(size, 1);
  KivImage softB(size, 1);
  for (int plane = 0; plane < count; ++plane) {
    soften(softA, guided, count + plane, qAcross, qDown);
    for (int round = 0; round < rounds; ++round) {
      soften(softB, guided, plane, qAcross, qDown);
      eachIndex(size.height, [&](int y) {
        float* const b = guided.At(plane, 0, y);
        const float* const c = change.At(plane, 0, y);
        const float* const p = planes.At(plane, 0, y);
        const float* const a = softA.At(0, 0, y);
        const float* const soft = softB.At(0, 0, y);
        for (int x = 0; x < size.width; ++x) b[x] += c[x] - (a[x] * p[x] + soft[x]);
      });
    }
  }
}

}  // namespace

// Single precision does: what a variance of samples up to 1 loses, some 1e-7, is far below epsilon.
KivImage guidedChange(const KivImage& change, const KivImage& planes, IppiSize picture) {
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
  makeUp(guided, change, planes, picture);
  return guided;
}

double guidedChangeBytes(IppiSize size, int planes, int threads) {
  const double row = rowBytesFor(size.width);
  return (2.0 * planes + 2) * row * size.height + threads * 4 * row;
}
