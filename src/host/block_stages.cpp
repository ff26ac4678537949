// The exchange with the host's buffers, strip by strip.

#include "host/block_stages.h"

#include <array>
#include <cstddef>

#include "host/block_exchange.h"
#include "image/block_cut.h"
#include "image/scratch.h"
#include "tone/colour_conversion.h"

namespace {

constexpr int colours = 3;
constexpr float white16 = 32768.0F;

// The exact inverse of YUVtoRGB, rounded: RGBtoYUV and then YUVtoRGB is the identity to single precision.
constexpr float RGBtoYUV[3][4] = {
    {0.299008206F, 0.586997755F, 0.113994039F, 0.0F},
    {-0.169003611F, -0.330989034F, 0.499992645F, 0.0F},
    {0.499992645F, -0.418988118F, -0.081004527F, 0.0F},
};

// What a depth of the host's samples asks for.
struct Depth {
  void* (*newPlane)(int width, int height, int* stride);  // none: scratch is not used
  void (*fromHost)(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave);
  void (*toHost)(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave);
  float scale;  // of the converters' samples
};

template <auto allocate>
void* newPlane(int width, int height, int* stride) {
  return allocate(width, height, stride);
}

const Depth* depthOf(const PS_Database& db) {
  static constexpr Depth depths[] = {
      {newPlane<IppiMalloc8>, FromPS8, ToPS8, 1.0F},
      {newPlane<IppiMalloc16>, FromPS16, ToPS16, white16},
      {nullptr, FromPS32, ToPS32, 1.0F},
  };
  return db.depthCode < 0 || db.depthCode > 2 ? nullptr : &depths[db.depthCode];
}

bool fits(const KivImage& image, const PS_Database& db) {
  return image.channels == db.interleave && (image.channels == 1 || image.channels == colours);
}

// The scratch planes of one block.
struct StripScratch {
  std::array<Scratch, colours> owners;
  void* planes[colours] = {};
  int step = 0;

  void allocate(const Depth& depth, int width) {
    if (depth.newPlane == nullptr) return;
    for (std::size_t i = 0; i < owners.size(); ++i) {
      planes[i] = depth.newPlane(width, BlockCut::stripRows, &step);
      owners[i].reset(planes[i]);
      if (planes[i] == nullptr) throw NO_MEMORY_ERROR();
    }
  }
};

// For all blocks beforehand, so that a failure finds nothing half done.
struct ScratchOfBlocks {
  std::array<StripScratch, BlockCut::mostBlocks> blocks;

  ScratchOfBlocks(const Depth& depth, const BlockCut& cut, const KivImage& image) {
    if (image.channels == 1) return;
    for (int b = 0; b < cut.blocks; ++b) (*this)[b].allocate(depth, image.size.width);
  }

  StripScratch& operator[](int block) { return blocks[static_cast<std::size_t>(block)]; }
};

std::ptrdiff_t bufferOffset(int row, int rowBytes) { return std::ptrdiff_t{row} * rowBytes; }

}  // namespace

void Pre(KivImage&& image, bool toYuv, PS_Database& db) {
  const Depth* const depth = depthOf(db);
  if (depth == nullptr || db.inData == nullptr || !fits(image, db)) return;
  const BlockCut cut(image.size.height);
  ScratchOfBlocks scratch(*depth, cut, image);
  cut.forEachBlock([&](int b) {
    auto* src = static_cast<unsigned char*>(db.inData) + bufferOffset(b * cut.rows, db.inRowBytes);
    const auto fill = [&](KivImage&& strip) {
      depth->fromHost(strip, scratch[b].planes, scratch[b].step, src, db.inRowBytes, db.interleave);
      if (depth->scale != 1.0F) strip /= depth->scale;
      if (toYuv && strip.channels == colours) strip.Color_Twist(RGBtoYUV);
      src += bufferOffset(strip.size.height, db.inRowBytes);
    };
    forEachStrip(fill, cut.block(image, b));
  });
}

void Post(KivImage&& result, KivImage&& base, float blend, bool yuvToRgb, PS_Database& db, bool doBlend) {
  const Depth* const depth = depthOf(db);
  if (depth == nullptr || db.outData == nullptr || !fits(result, db)) return;
  const BlockCut cut(result.size.height);
  ScratchOfBlocks scratch(*depth, cut, result);
  const float rest = 1.0F - blend;
  cut.forEachBlock([&](int b) {
    auto* dst = static_cast<unsigned char*>(db.outData) + bufferOffset(b * cut.rows, db.outRowBytes);
    const auto deliver = [&](KivImage&& strip, KivImage&& baseStrip) {
      if (yuvToRgb && strip.channels == colours) strip.Color_Twist(YUVtoRGB);
      if (doBlend && blend < 1.0F) {
        strip.Threshold_I(1.0F);
        strip *= blend;
        baseStrip *= rest;
        strip += baseStrip;
      }
      if (depth->scale != 1.0F) strip *= depth->scale;
      depth->toHost(strip, scratch[b].planes, scratch[b].step, dst, db.outRowBytes, db.interleave);
      dst += bufferOffset(strip.size.height, db.outRowBytes);
    };
    forEachStrip(deliver, cut.block(result, b), cut.block(base, b));
  });
}
