// The hot lines of high-pass and unsharp masking. The order of the operations is the definition of the results.

#include "filters/unsharp_kernels.h"

#include "primitives/regions.h"

namespace ROW {
namespace {

// What the blur took away, brighter and darker parts limited one by one.
Floats detail(Floats src, Floats blurred) {
  const Floats brighter = limitedToUnit(src - blurred);
  const Floats darker = 1.0F - limitedToUnit((1.0F - blurred) + src);
  return brighter - darker;
}

void highPassLine(float* dst, const float* a, const float* b, int width) {
  mapLine2(a, b, dst, width, 1.0F, [](Floats va, Floats vb) { return (va - vb) + 0.5F; });
}

void unsharpLine(float* dst, const float* src, const float* blurred, int width, float amount) {
  mapLine2(src, blurred, dst, width, 1.0F,
           [amount](Floats s, Floats b) { return limitedToUnit(s + detail(s, b) * amount); });
}

void gatedUnsharpLine(float* dst, const float* src, const float* blurred, int width, float amount, float threshold) {
  mapLine2(src, blurred, dst, width, 1.0F, [amount, threshold](Floats s, Floats b) {
    const Floats difference = s - b;
    const Ints strong = (difference > threshold) | (difference < -threshold);
    return select(strong, limitedToUnit(detail(s, b) * amount + s), s);
  });
}

}  // namespace

extern const UnsharpKernels unsharpKernels = {highPassLine, unsharpLine, gatedUnsharpLine};

}  // namespace ROW
