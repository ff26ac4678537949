// KivImage: assignment, operators, point-wise functions and reductions, plane by plane on the primitives.

#include "image/allocate_like.h"
#include "image/kiv_image.h"

namespace {

KIV_Generic_Params withConstant(const KivImage& image, float value, KIV_Generic_Params::ConstantOp op) {
  return {0, &image, &image, value, op, nullptr};
}

KIV_Generic_Params withImage(const KivImage& first, const KivImage& second, KIV_Generic_Params::ImageOp op) {
  return {1, &first, &second, 0.0F, nullptr, op};
}

}  // namespace

template <typename PlaneOp>
void KivImage::eachPlane(int count, PlaneOp op) {
  for (int i = 0; i < count; ++i) op(planes[i], i);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): Copy handles it
KivImage& KivImage::operator=(const KivImage& src) {
  Copy(src);
  return *this;
}

void KivImage::Copy(const KivImage& src) {
  if (&src == this) return;  // nor is an empty image to be allocated like itself
  allocateLike(*this, src);
  eachPlane(channels, [&](float* plane, int i) {
    if (src.planes[i] != plane) ippiCopy_32f_C1R(src.planes[i], src.stride, plane, stride, size);
  });
}

KivImage& KivImage::operator=(const KIV_Generic_Params& p) {
  const KivImage& first = *p.first;
  const KivImage& second = *p.second;
  allocateLike(*this, first);
  eachPlane(channels, [&](float* plane, int i) {
    if (p.kind == 0) {
      p.constantOp(first.planes[i], first.stride, p.value, plane, stride, size);
    } else {
      // Second operand first: the primitives compute second - first and second / first of their arguments.
      p.imageOp(second.planes[i], second.stride, first.planes[i], first.stride, plane, stride, size);
    }
  });
  return *this;
}

KIV_Generic_Params KivImage::operator-() const { return withConstant(*this, -1.0F, ippiMulC_32f_C1R); }
KIV_Generic_Params KivImage::operator+(float v) const { return withConstant(*this, v, ippiAddC_32f_C1R); }
KIV_Generic_Params KivImage::operator-(float v) const { return withConstant(*this, v, ippiSubC_32f_C1R); }
KIV_Generic_Params KivImage::operator*(float v) const { return withConstant(*this, v, ippiMulC_32f_C1R); }
KIV_Generic_Params KivImage::operator/(float v) const { return withConstant(*this, v, ippiDivC_32f_C1R); }
KIV_Generic_Params KivImage::operator+(const KivImage& b) const { return withImage(*this, b, ippiAdd_32f_C1R); }
KIV_Generic_Params KivImage::operator-(const KivImage& b) const { return withImage(*this, b, ippiSub_32f_C1R); }
KIV_Generic_Params KivImage::operator*(const KivImage& b) const { return withImage(*this, b, ippiMul_32f_C1R); }
KIV_Generic_Params KivImage::operator/(const KivImage& b) const { return withImage(*this, b, ippiDiv_32f_C1R); }

KivImage& KivImage::operator+=(float v) {
  eachPlane(channels, [&](float* plane, int) { ippiAddC_32f_C1IR(v, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator-=(float v) {
  eachPlane(channels, [&](float* plane, int) { ippiSubC_32f_C1IR(v, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator*=(float v) {
  eachPlane(channels, [&](float* plane, int) { ippiMulC_32f_C1IR(v, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator/=(float v) {
  eachPlane(channels, [&](float* plane, int) { ippiDivC_32f_C1IR(v, plane, stride, size); });
  return *this;
}

KivImage& KivImage::operator+=(const KivImage& b) {
  eachPlane(b.channels, [&](float* plane, int i) { ippiAdd_32f_C1IR(b.planes[i], b.stride, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator-=(const KivImage& b) {
  eachPlane(b.channels, [&](float* plane, int i) { ippiSub_32f_C1IR(b.planes[i], b.stride, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator/=(const KivImage& b) {
  eachPlane(b.channels,
            [&](float* plane, int i) { ippiDiv_32f_C1R(b.planes[i], b.stride, plane, stride, plane, stride, size); });
  return *this;
}
KivImage& KivImage::operator*=(const KivImage& b) {
  if (b.channels > 1) {
    eachPlane(b.channels, [&](float* plane, int i) { ippiMul_32f_C1IR(b.planes[i], b.stride, plane, stride, size); });
    return *this;
  }
  float* ownMask = nullptr;
  eachPlane(channels, [&](float* plane, int) {
    if (plane == b.planes[0]) {
      ownMask = plane;
    } else {
      ippiMul_32f_C1IR(b.planes[0], b.stride, plane, stride, size);
    }
  });
  // The mask itself last: the other planes need it as it was.
  if (ownMask != nullptr) ippiMul_32f_C1IR(ownMask, b.stride, ownMask, stride, size);
  return *this;
}

void KivImage::Sqrt(const KivImage& src) {
  allocateLike(*this, src);
  eachPlane(channels, [&](float* plane, int i) { ippiSqrt_32f_C1R(src.planes[i], src.stride, plane, stride, size); });
}
void KivImage::Sqrt() { Sqrt(*this); }

void KivImage::Exp() {
  eachPlane(channels, [&](float* plane, int) { ippiExp_32f_C1IR(plane, stride, size); });
}

void KivImage::Log(const KivImage& src) {
  allocateLike(*this, src);
  eachPlane(channels, [&](float* plane, int i) { ippiLn_32f_C1R(src.planes[i], src.stride, plane, stride, size); });
}
void KivImage::Log() {
  eachPlane(channels, [&](float* plane, int) { ippiLn_32f_C1IR(plane, stride, size); });
}

void KivImage::Abs(const KivImage& src) {
  allocateLike(*this, src);
  eachPlane(channels, [&](float* plane, int i) { ippiAbs_32f_C1R(src.planes[i], src.stride, plane, stride, size); });
}
void KivImage::Abs() {
  eachPlane(channels, [&](float* plane, int) { ippiAbs_32f_C1IR(plane, stride, size); });
}

float KivImage::Min() const {
  float smallest = 0.0F;
  ippiMin_32f_C1R(planes[0], stride, size, &smallest);
  return smallest;
}
float KivImage::Max() const {
  float largest = 0.0F;
  ippiMax_32f_C1R(planes[0], stride, size, &largest);
  return largest;
}
void KivImage::Min(const KivImage&, int) {}
void KivImage::Max(const KivImage&, int) {}
