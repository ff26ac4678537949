// Operations and kernels on every kind of target, compared with a naive form bit for bit; what lies beside the target
// must not change.
#pragma once

#include <functional>
#include <type_traits>
#include <vector>

#include "support/each_row_test.h"
#include "support/images.h"

// Random samples, with those among them that take a branch of their own.
inline KivImage trickyImage(int width, int height, int channels, unsigned seed) {
  KivImage image = randomImage(width, height, channels, seed);
  constexpr float special[] = {0.0F, -0.0F, 0.5F, 1.0F, 1e-40F, 1e30F, -1e30F, INFINITY, -INFINITY, NAN};
  unsigned at = seed;
  for (const float value : special) {
    at = at * 7 + 3;
    const int x = static_cast<int>(at % static_cast<unsigned>(width));
    const int y = static_cast<int>(at / 64 % static_cast<unsigned>(height));
    *image.At(static_cast<int>(at % static_cast<unsigned>(channels)), x, y) = value;
  }
  return image;
}

// sample(a, b) of plane i of a and plane i of b, or b's only plane.
template <typename Sample>
KivImage combined(const KivImage& a, const KivImage& b, Sample sample) {
  return imageOf(a.size, a.channels,
                 [&](int p, int x, int y) { return sample(*a.At(p, x, y), *b.At(b.channels > 1 ? p : 0, x, y)); });
}

template <typename Sample>
KivImage mapped(const KivImage& a, Sample sample) {
  return combined(a, a, [&](float v, float) { return sample(v); });
}

// run(target, a, b) onto a fresh image, a view, wrapped samples, and onto either operand. A run that doesn't allocate
// starts from a copy of a.
template <typename Run>
void expectInEveryTarget(const KivImage& a, const KivImage& b, const KivImage& expected, Run run,
                         bool allocates = true) {
  const int width = a.size.width;
  const int height = a.size.height;
  const int channels = a.channels;
  KivImage fresh;
  if (!allocates) fresh = a;
  run(fresh, a, b);
  EXPECT_TRUE(sameBits(fresh, expected)) << "fresh";

  KivImage parent = randomImage(width + 5, height + 4, channels, 99);
  const KivImage before = randomImage(width + 5, height + 4, channels, 99);
  KivImage view = parent.ROI(3, 2, width, height);
  if (!allocates) view = a;
  run(view, a, b);
  EXPECT_TRUE(sameBits(view, expected)) << "view";
  view = a;
  run(view, view, b);
  EXPECT_TRUE(sameBits(view, expected)) << "onto the first operand";
  view = before.ROI(3, 2, width, height);
  EXPECT_TRUE(sameBits(parent, before)) << "beside the view";

  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height * channels);
  std::vector<float> samples(count + 1, 42.0F);
  KivImage wrapped(samples.data(), a.size, channels);
  if (!allocates) wrapped = a;
  run(wrapped, a, b);
  EXPECT_TRUE(sameBits(wrapped, expected)) << "wrapped";
  EXPECT_EQ(samples.back(), 42.0F);

  if (&a == &b) return;
  KivImage second;
  second = b;
  run(second, a, second);
  EXPECT_TRUE(sameBits(second, expected)) << "onto the second operand";
}

// The same for run(target, src), and for run(target) in place.
template <typename Run>
void expectInEveryTarget(const KivImage& src, const KivImage& expected, Run run) {
  expectInEveryTarget(src, src, expected,
                      [&](KivImage& target, const KivImage& from, const KivImage&) { run(target, from); });
  if constexpr (std::is_invocable_v<Run, KivImage&>) {
    KivImage image = copyOf(src);
    run(image);
    EXPECT_TRUE(sameBits(image, expected)) << "in place";
  }
}

// The status that it throws, or 0.
template <typename Operation>
int thrownStatus(Operation operation) {
  try {
    operation();
  } catch (const int status) {
    return status;
  }
  return 0;
}

// An operation of one source by name, and what it does to a sample. run is for expectInEveryTarget, in both forms.
struct NamedOperation {
  template <typename Run>
  NamedOperation(const char* called, Run run, float (*formula)(float))
      : name(called),
        toTarget(run),
        expectInTargets(
            [run](const KivImage& src, const KivImage& expected) { expectInEveryTarget(src, expected, run); }),
        sample(formula) {}
  const char* name;
  std::function<void(KivImage& target, const KivImage& src)> toTarget;
  std::function<void(const KivImage& src, const KivImage& expected)> expectInTargets;
  float (*sample)(float);
};

// A kernel of two inputs on planes of one row step, and its formula.
struct PlaneKernel {
  const char* name;
  std::function<void(float* dst, float* a, float* b, int height, int width, int step)> run;
  float (*sample)(float a, float b);
};

// With the same parameters at every call.
template <typename Function, typename... Parameters>
PlaneKernel planeKernel(const char* name, Function function, float (*sample)(float, float), Parameters... parameters) {
  const auto run = [=](float* dst, float* a, float* b, int height, int width, int step) {
    function(dst, a, b, height, width, step, parameters...);
  };
  return {name, run, sample};
}

// Every width up to two and a half of the widest vectors, at an odd column of a wider image; on every row of bodies.
template <std::size_t count>
void expectFormulasBitForBit(const PlaneKernel (&kernels)[count]) {
  constexpr int height = 20;
  constexpr int column = 3;
  for (int i = 0; i < static_cast<int>(count) * 40; ++i) {
    const PlaneKernel& kernel = kernels[i / 40];
    const int width = 1 + i % 40;
    KivImage a = trickyImage(width + 5, height + 1, 1, static_cast<unsigned>(width));
    KivImage b = trickyImage(width + 5, height + 1, 1, static_cast<unsigned>(width) + 100);
    const KivImage result = combined(a, b, kernel.sample);
    KivImage other = randomImage(width + 5, height + 1, 1, 7);
    for (const KivImage* target : {&other, &a, &b}) {
      KivImage expected = copyOf(*target);
      expected.ROI(column, 0, width, height) = result.ROI(column, 0, width, height);
      onEachRow([&] {
        KivImage dst = copyOf(*target);
        float* const out = dst.At(0, column, 0);
        kernel.run(out, target == &a ? out : a.At(0, column, 0), target == &b ? out : b.At(0, column, 0), height, width,
                   dst.stride / 4);
        EXPECT_TRUE(sameBits(dst, expected)) << kernel.name << (target == &other ? "" : ", onto an input");
      });
    }
  }
}

inline float limitedToUnit(float v) { return std::min(std::max(0.0F, v), 1.0F); }  // NaN becomes 0
