// Block converters: one form for the integer types, by way of scratch planes, and one for floats, which need none.

#include "host/block_exchange.h"

namespace {

constexpr int colours = 3;

// The scratch table, typed. Null scratch is left to the primitives to refuse.
template <typename Sample>
struct ScratchPlanes {
  Sample* planes[colours] = {};

  ScratchPlanes(void* const* tmp, int count) {
    for (int i = 0; tmp != nullptr && i < colours && i < count; ++i) planes[i] = static_cast<Sample*>(tmp[i]);
  }
};

template <typename Sample>
void fromIntegers(const KivImage& block, void* const* tmp, int tmpStep, void* src, int srcStep, int interleave) {
  auto* const samples = static_cast<Sample*>(src);
  if (block.channels == 1) {
    IppiConvert(samples, srcStep, block.planes[0], block.stride, block.size);
    return;
  }
  ScratchPlanes<Sample> scratch(tmp, interleave);
  IppiCopyC3P3(samples, srcStep, scratch.planes, tmpStep, block.size);
  for (int i = 0; i < colours; ++i) {
    IppiConvert(scratch.planes[i], tmpStep, block.planes[i], block.stride, block.size);
  }
}

template <typename Sample>
void toIntegers(const KivImage& block, void* const* tmp, int tmpStep, void* dst, int dstStep, int interleave) {
  auto* const samples = static_cast<Sample*>(dst);
  if (block.channels == 1) {
    IppiConvert(block.planes[0], block.stride, samples, dstStep, block.size, ippRndNear);
    return;
  }
  const ScratchPlanes<Sample> scratch(tmp, interleave);
  for (int i = 0; i < colours; ++i) {
    IppiConvert(block.planes[i], block.stride, scratch.planes[i], tmpStep, block.size, ippRndZero);
  }
  IppiCopyP3C3(scratch.planes, tmpStep, samples, dstStep, block.size);
}

}  // namespace

void FromPS8(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave) {
  fromIntegers<unsigned char>(block, tmp, tmpStep, src, srcStep, interleave);
}

void FromPS16(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave) {
  fromIntegers<unsigned short>(block, tmp, tmpStep, src, srcStep, interleave);
}

void FromPS32(KivImage& block, void**, int, void* src, int srcStep, int) {
  auto* const samples = static_cast<float*>(src);
  if (block.channels == 1) {
    IppiConvert(samples, srcStep, block.planes[0], block.stride, block.size);
  } else {
    IppiCopyC3P3(samples, srcStep, block.planes, block.stride, block.size);
  }
}

void ToPS8(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave) {
  toIntegers<unsigned char>(block, tmp, tmpStep, dst, dstStep, interleave);
}

void ToPS16(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave) {
  toIntegers<unsigned short>(block, tmp, tmpStep, dst, dstStep, interleave);
}

void ToPS32(KivImage& block, void**, int, void* dst, int dstStep, int) {
  auto* const samples = static_cast<float*>(dst);
  if (block.channels == 1) {
    IppiConvert(block.planes[0], block.stride, samples, dstStep, block.size, ippRndNear);
  } else {
    IppiCopyP3C3(block.planes, block.stride, samples, dstStep, block.size);
  }
}
