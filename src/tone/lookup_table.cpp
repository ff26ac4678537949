// Tone curves given as a table.

#include "tone/curves.h"

namespace {

// The entry nearest to v, of entries 0 to last. NaN takes the first.
int nearestEntry(float v, int last) {
  const double rounded = static_cast<double>(v) + 0.5;
  if (!(rounded >= 1.0)) return 0;
  return rounded >= last ? last : static_cast<int>(rounded);
}

}  // namespace

void applyTable(KivImage& target, const float* table, int count) {
  if (table == nullptr || count < 0) return;
  target *= static_cast<float>(count - 0.001);
  for (int y = 0; y < target.size.height; ++y) {
    float* row = target.At(0, 0, y);
    for (int x = 0; x < target.size.width; ++x) row[x] = table[nearestEntry(row[x], count)];
  }
}
