// KivImage: resampling, transposition, margins and circular shifts.

#include <cmath>

#include "image/kiv_image.h"
#include "image/resizer.h"

void KivImage::Resize(const KivImage& src, int width, int height) { Resize(src, IppiSize{width, height}); }

void KivImage::Resize(const KivImage& src, IppiSize dstSize) {
  if (channels == 0) Init(dstSize, src.channels);
  const Resizer resizer(src.size, dstSize);
  if (!resizer.isServed()) return;
  for (int i = 0; i < src.channels; ++i) resizer.plane(src.planes[i], src.stride, planes[i], stride);
}

void KivImage::Transpose(const KivImage& src) {
  if (channels == 0) Init(src.size.height, src.size.width, src.channels);
  for (int i = 0; i < channels; ++i) {
    ippiTranspose_32f_C1R(src.planes[i], src.stride, planes[i], stride, src.size);
  }
}

void KivImage::Pad(const KivImage& src, int margin) {
  for (int i = 0; i < channels; ++i) {
    ippiCopyReplicateBorder_32f_C1R(src.planes[i], src.stride, src.size, planes[i], stride, size, margin, margin);
  }
}

void KivImage::Pad(int margin) {
  const KivImage inner = Sub_Section(margin);
  for (int i = 0; i < channels; ++i) {
    ippiCopyReplicateBorder_32f_C1IR(inner.planes[i], stride, inner.size, size, margin, margin);
  }
}

void KivImage::FftShift() {
  shift(static_cast<int>(std::floor(size.width * 0.5)), static_cast<int>(std::floor(size.height * 0.5)));
}

void KivImage::IfftShift() {
  shift(static_cast<int>(std::ceil(size.width * 0.5)), static_cast<int>(std::ceil(size.height * 0.5)));
}

void KivImage::shift(int dx, int dy) {
  const int w = size.width;
  const int h = size.height;
  KivImage shifted(size, 1);
  const auto copy = [](KivImage to, const KivImage& from) { to.Copy(from); };
  copy(shifted.ROI(0, 0, w, dy), ROI(0, h - dy, w, dy));
  copy(shifted.ROI(0, dy, w, h - dy), ROI(0, 0, w, h - dy));
  copy(ROI(0, 0, dx, h), shifted.ROI(w - dx, 0, dx, h));
  copy(ROI(dx, 0, w - dx, h), shifted.ROI(0, 0, w - dx, h));
}
