// Blocks of samples between the host's buffers, interleaved or of one plane, and a KivImage at its full stride. Other
// than the filter run's plane conversion they keep the scale of their primitives: 8 bits become 0 to 1, 16 bits stay at
// 0 to 32768 and are the caller's to scale.
//
// block has one plane, or three for pixels of three samples. tmp has interleave scratch planes at the host's sample
// type, of the block's size at least and with rows of tmpStep bytes; one plane doesn't need them, nor do 32 bits. Steps
// are in bytes. Nothing is allocated or thrown; statuses of the primitives aren't looked at.
#pragma once

#include <cstdint>

#include "image/kiv_image.h"

void FromPS8(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave);
void FromPS16(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave);
void FromPS32(KivImage& block, void** tmp, int tmpStep, void* src, int srcStep, int interleave);

// 8 bits round to nearest. 16 bits round to nearest with one plane and towards zero with three. 32 bits pass as they
// are.
void ToPS8(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave);
void ToPS16(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave);
void ToPS32(KivImage& block, void** tmp, int tmpStep, void* dst, int dstStep, int interleave);

// ---- The primitives by the sample's type ----

inline IppStatus IppiConvert(const unsigned char* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  return ippiScale_8u32f_C1R(src, srcStep, dst, dstStep, size, 0.0F, 1.0F);
}
inline IppStatus IppiConvert(const unsigned short* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  return ippiConvert_16u32f_C1R(src, srcStep, dst, dstStep, size);
}
inline IppStatus IppiConvert(const float* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  return ippiCopy_32f_C1R(src, srcStep, dst, dstStep, size);
}
// To nearest, whatever the mode.
inline IppStatus IppiConvert(const float* src, int srcStep, unsigned char* dst, int dstStep, IppiSize size,
                             IppRoundMode) {
  return ippiScale_32f8u_C1R(src, srcStep, dst, dstStep, size, 0.0F, 1.0F);
}
inline IppStatus IppiConvert(const float* src, int srcStep, unsigned short* dst, int dstStep, IppiSize size,
                             IppRoundMode mode) {
  return ippiConvert_32f16u_C1R(src, srcStep, dst, dstStep, size, mode);
}
inline IppStatus IppiConvert(const float* src, int srcStep, float* dst, int dstStep, IppiSize size, IppRoundMode) {
  return ippiCopy_32f_C1R(src, srcStep, dst, dstStep, size);
}

inline IppStatus IppiCopyC3P3(unsigned char* src, int srcStep, unsigned char** dst, int dstStep, IppiSize size) {
  return ippiCopy_8u_C3P3R(src, srcStep, dst, dstStep, size);
}
inline IppStatus IppiCopyC3P3(unsigned short* src, int srcStep, unsigned short** dst, int dstStep, IppiSize size) {
  return ippiCopy_16u_C3P3R(src, srcStep, dst, dstStep, size);
}
inline IppStatus IppiCopyC3P3(float* src, int srcStep, float** dst, int dstStep, IppiSize size) {
  return ippiCopy_32f_C3P3R(src, srcStep, dst, dstStep, size);
}

inline IppStatus IppiCopyP3C3(const unsigned char* const* src, int srcStep, unsigned char* dst, int dstStep,
                              IppiSize size) {
  return ippiCopy_8u_P3C3R(src, srcStep, dst, dstStep, size);
}
inline IppStatus IppiCopyP3C3(const unsigned short* const* src, int srcStep, unsigned short* dst, int dstStep,
                              IppiSize size) {
  return ippiCopy_16u_P3C3R(src, srcStep, dst, dstStep, size);
}
inline IppStatus IppiCopyP3C3(const float* const* src, int srcStep, float* dst, int dstStep, IppiSize size) {
  return ippiCopy_32f_P3C3R(src, srcStep, dst, dstStep, size);
}
