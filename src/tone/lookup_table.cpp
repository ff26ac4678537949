// KivImage: tone curves given as a table.

#include "image/kiv_image.h"

namespace {

// The entry nearest to v, of entries 0 to last. NaN takes the first.
int nearestEntry(float v, int last) {
  const double rounded = static_cast<double>(v) + 0.5;
  if (!(rounded >= 1.0)) return 0;
  return rounded >= last ? last : static_cast<int>(rounded);
}

}  // namespace

void KivImage::Apply_Lut(float* table, int count) {
  if (table == nullptr || count < 0) return;
  *this *= static_cast<float>(count - 0.001);
  for (int y = 0; y < size.height; ++y) {
    float* row = At(0, 0, y);
    for (int x = 0; x < size.width; ++x) row[x] = table[nearestEntry(row[x], count)];
  }
}

void KivImage::ApplyLut(KivImage&, float*, float*, int) {}
