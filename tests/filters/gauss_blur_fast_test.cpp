#include <cmath>

#include "image/scratch.h"
#include "support/images.h"

namespace {

// One filter call over the whole plane.
KivImage wholeCall(const KivImage& src, float sigma, int factor) {
  const int kernel = 2 * static_cast<int>(std::ceil(static_cast<float>(factor) * sigma)) + 1;
  const IppiSize size = src.size;
  std::int64_t specSize = 0;
  std::int64_t initSize = 0;
  std::int64_t bufferSize = 0;
  ippiFilterGaussianGetSpecSize_L(kernel, ipp32f, 1, &specSize, &initSize);
  ippiFilterGaussianGetBufferSize_L(size.width, size.height, kernel, ipp32f, ippBorderRepl, 1, &bufferSize);
  const Scratch spec = makeScratch(specSize);
  const Scratch init = makeScratch(initSize);
  const Scratch buffer = makeScratch(bufferSize);
  ippiFilterGaussianInit_L(size.width, size.height, kernel, ippBorderRepl, ipp32f, 1, spec.get(), init.get(), sigma);
  KivImage dst(size, 1);
  EXPECT_EQ(ippiFilterGaussian_32f_C1R_L(src.planes[0], src.stride, dst.planes[0], dst.stride, size.width, size.height,
                                         ippBorderRepl, nullptr, spec.get(), buffer.get()),
            ippStsNoErr);
  return dst;
}

TEST(GaussBlurFast, EqualsOneCallOverTheWholeOfPlane0) {
  const struct {
    int width, height;
    float sigma;
    int factor;
  } cases[] = {{300, 41, 3, 4},   // strips of 64 columns, the last of 108
               {1100, 9, 2, 4},   // of 128
               {150, 40, 20, 4},  // a kernel that reaches beyond its neighbours
               {33, 100, 7.5F, 4},
               {20, 12, 3, 4},
               {1, 50, 1, 4},
               {50, 1, 1, 4},
               {1, 1, 2, 4},
               {31, 97, 0.1F, 4},
               // 3 sigma rounds to 1 in single precision, and lies above it before
               {31, 24, 0.33333334F, 3}};
  for (const auto& c : cases) {
    const KivImage parent = randomImage(c.width + 5, c.height + 3, 2, 1);
    const KivImage src = parent.ROI(2, 1, c.width, c.height);
    KivImage target = randomImage(c.width, c.height, 2, 2);
    KivImage expected = copyOf(target);
    expected.Plane(0) = wholeCall(src, c.sigma, c.factor);
    target.GaussBlurFast(src, c.sigma, c.factor);
    EXPECT_TRUE(sameBits(target, expected)) << c.sigma;
  }
}

TEST(GaussBlurFast, LeavesTheTargetWhereTheKernelIsRefused) {
  KivImage target = randomImage(9, 9, 1, 2);
  for (const auto blur : {&KivImage::GaussBlurFast, &KivImage::GaussBlurDecimate}) {
    for (const float sigma : {0.0F, -1.0F, NAN}) (target.*blur)(randomImage(9, 9, 1, 1), sigma, 4);
    (target.*blur)(randomImage(9, 9, 1, 1), -1.0F, -4);
    (target.*blur)(flatImage({2, 2}, 1, 1.0F), -1.0F, -4);
  }
  target.GaussBlurDecimate(target, 0.0F, 4);
  EXPECT_TRUE(sameBits(target, randomImage(9, 9, 1, 2)));
}

}  // namespace
