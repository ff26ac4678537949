// Copies: between interleaved and planar images, one value over a line, and transposition in tiles that stay in the
// cache.

#include <string.h>

#include "primitives/regions.h"

namespace ROW {
namespace {

template <typename Sample>
void splitLine(const Sample* __restrict src, Sample* __restrict dst0, Sample* __restrict dst1, Sample* __restrict dst2,
               int width) {
  for (std::ptrdiff_t x = 0; x < width; ++x) {
    store(dst0 + x, load<Sample>(src + 3 * x));
    store(dst1 + x, load<Sample>(src + 3 * x + 1));
    store(dst2 + x, load<Sample>(src + 3 * x + 2));
  }
}

template <typename Sample>
void joinLine(const Sample* __restrict src0, const Sample* __restrict src1, const Sample* __restrict src2,
              Sample* __restrict dst, int width) {
  for (std::ptrdiff_t x = 0; x < width; ++x) {
    store(dst + 3 * x, load<Sample>(src0 + x));
    store(dst + 3 * x + 1, load<Sample>(src1 + x));
    store(dst + 3 * x + 2, load<Sample>(src2 + x));
  }
}

template <typename Sample>
IppStatus split(const Sample* src, int srcStep, Sample* const dst[3], int dstStep, IppiSize size) {
  if (isNull(dst)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkRegion(size, src, dst[0], dst[1], dst[2]));
  for (int y = 0; y < size.height; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * dstStep;
    splitLine(advance(src, std::ptrdiff_t{y} * srcStep), advance(dst[0], row), advance(dst[1], row),
              advance(dst[2], row), size.width);
  }
  return ippStsNoErr;
}

template <typename Sample>
IppStatus join(const Sample* const src[3], int srcStep, Sample* dst, int dstStep, IppiSize size) {
  if (isNull(src)) return ippStsNullPtrErr;
  RETURN_UNLESS_OK(checkRegion(size, src[0], src[1], src[2], dst));
  for (int y = 0; y < size.height; ++y) {
    const std::ptrdiff_t row = std::ptrdiff_t{y} * srcStep;
    joinLine(advance(src[0], row), advance(src[1], row), advance(src[2], row),
             advance(dst, std::ptrdiff_t{y} * dstStep), size.width);
  }
  return ippStsNoErr;
}

// A plane by its rows, for code that walks in two directions.
template <typename Sample>
struct Rows {
  Sample* first;
  std::ptrdiff_t step;
  Sample* at(int x, int y) const { return advance(first, y * step) + x; }
};

constexpr int block = 4;             // a block of 4 x 4 samples is turned over in registers
constexpr int tileSize = 8 * block;  // a tile is turned over block by block
struct Block {
  Floats4 rows[block];
};

template <typename Sample>
Block loadBlock(Rows<Sample> from, int x, int y) {
  return {{load<Floats4>(from.at(x, y)), load<Floats4>(from.at(x, y + 1)), load<Floats4>(from.at(x, y + 2)),
           load<Floats4>(from.at(x, y + 3))}};
}

void storeBlock(Rows<float> to, int x, int y, const Block& samples) {
  for (int i = 0; i < block; ++i) store(to.at(x, y + i), samples.rows[i]);
}

Block turned(const Block& b) {
  const Floats4 low01 = __builtin_shufflevector(b.rows[0], b.rows[1], 0, 4, 1, 5);
  const Floats4 high01 = __builtin_shufflevector(b.rows[0], b.rows[1], 2, 6, 3, 7);
  const Floats4 low23 = __builtin_shufflevector(b.rows[2], b.rows[3], 0, 4, 1, 5);
  const Floats4 high23 = __builtin_shufflevector(b.rows[2], b.rows[3], 2, 6, 3, 7);
  return {{__builtin_shufflevector(low01, low23, 0, 1, 4, 5), __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
           __builtin_shufflevector(high01, high23, 0, 1, 4, 5), __builtin_shufflevector(high01, high23, 2, 3, 6, 7)}};
}

int lesser(int a, int b) { return a < b ? a : b; }

// Calls visit(x0, y0, x1, y1) for each tile of a region.
template <typename Visit>
void eachTile(IppiSize size, Visit visit) {
  for (int y0 = 0; y0 < size.height; y0 += lesser(tileSize, size.height - y0)) {
    for (int x0 = 0; x0 < size.width; x0 += lesser(tileSize, size.width - x0)) {
      visit(x0, y0, x0 + lesser(tileSize, size.width - x0), y0 + lesser(tileSize, size.height - y0));
    }
  }
}

void transpose(Rows<const float> src, Rows<float> dst, IppiSize size) {
  eachTile(size, [&](int x0, int y0, int x1, int y1) {
    int y = y0;
    for (; y <= y1 - block; y += block) {
      int x = x0;
      for (; x <= x1 - block; x += block) storeBlock(dst, y, x, turned(loadBlock(src, x, y)));
      for (; x < x1; ++x) {
        for (int i = 0; i < block; ++i) store(dst.at(y + i, x), load<float>(src.at(x, y + i)));
      }
    }
    for (; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) store(dst.at(y, x), load<float>(src.at(x, y)));
    }
  });
}

// Samples above the diagonal change places with those below it, block by block. Tiles below it are left out by x alone.
void transposeInPlace(Rows<float> image, int side) {
  eachTile({side, side}, [&](int x0, int y0, int x1, int y1) {
    int y = y0;
    for (; y <= y1 - block; y += block) {
      int x = x0 > y ? x0 : y;
      for (; x <= x1 - block; x += block) {
        const Block above = turned(loadBlock(image, x, y));
        const Block below = turned(loadBlock(image, y, x));
        storeBlock(image, y, x, above);
        storeBlock(image, x, y, below);
      }
      for (; x < x1; ++x) {
        for (int i = 0; i < block; ++i) {
          const float above = load<float>(image.at(x, y + i));
          store(image.at(x, y + i), load<float>(image.at(y + i, x)));
          store(image.at(y + i, x), above);
        }
      }
    }
    for (; y < y1; ++y) {
      for (int x = x0 > y ? x0 : y; x < x1; ++x) {
        const float above = load<float>(image.at(x, y));
        store(image.at(x, y), load<float>(image.at(y, x)));
        store(image.at(y, x), above);
      }
    }
  });
}

}  // namespace

IppStatus ippiCopy_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  RETURN_UNLESS_OK(checkRegion(roiSize, src, dst));
  const std::size_t bytes = static_cast<std::size_t>(roiSize.width) * sizeof(float);
  // memmove: source and target may be the same image.
  eachRow(src, srcStep, dst, dstStep, roiSize, [bytes](const float* s, float* d) { memmove(d, s, bytes); });
  return ippStsNoErr;
}

IppStatus ippiCopy_32f_C3P3R(const float* src, int srcStep, float* const dst[3], int dstStep, IppiSize roiSize) {
  return split(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiCopy_16u_C3P3R(const unsigned short* src, int srcStep, unsigned short* const dst[3], int dstStep,
                             IppiSize roiSize) {
  return split(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiCopy_8u_C3P3R(const unsigned char* src, int srcStep, unsigned char* const dst[3], int dstStep,
                            IppiSize roiSize) {
  return split(src, srcStep, dst, dstStep, roiSize);
}

IppStatus ippiCopy_32f_P3C3R(const float* const src[3], int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  return join(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiCopy_16u_P3C3R(const unsigned short* const src[3], int srcStep, unsigned short* dst, int dstStep,
                             IppiSize roiSize) {
  return join(src, srcStep, dst, dstStep, roiSize);
}
IppStatus ippiCopy_8u_P3C3R(const unsigned char* const src[3], int srcStep, unsigned char* dst, int dstStep,
                            IppiSize roiSize) {
  return join(src, srcStep, dst, dstStep, roiSize);
}

IppStatus ippsSet_8u(unsigned char value, unsigned char* dst, int len) {
  RETURN_UNLESS_OK(checkRegion({len, 1}, dst));
  memset(dst, value, static_cast<std::size_t>(len));
  return ippStsNoErr;
}

IppStatus ippiTranspose_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, IppiSize roiSize) {
  RETURN_UNLESS_OK(checkRegion(roiSize, src, dst));
  if (src != dst || srcStep != dstStep) {
    transpose({src, srcStep}, {dst, dstStep}, roiSize);
    return ippStsNoErr;
  }
  if (roiSize.width != roiSize.height) return ippStsSizeErr;
  transposeInPlace({dst, dstStep}, roiSize.width);
  return ippStsNoErr;
}

}  // namespace ROW
