// Speed of the image's blurs, in pixels of all planes per second. Time is the wall's: some of them work on threads.

#include <benchmark/benchmark.h>

#include <cmath>

#include "pictures.h"

namespace {

constexpr IppiSize sixMegapixels = {3000, 2000};

// Times blur(src, dst), and checks afterwards that it has kept the mean.
template <typename Blur>
void run(benchmark::State& state, int planes, Blur blur) {
  KivImage src(sixMegapixels, planes);
  KivImage dst(sixMegapixels, planes);
  randomise(src);
  for (auto _ : state) blur(src, dst);
  if (!(std::abs(mean(src) - mean(dst)) < 0.002)) state.SkipWithError("the mean was not kept");
  countPixels(state, sixMegapixels, planes);
}

void BoxBlur(benchmark::State& state) {
  const auto radius = static_cast<int>(state.range(0));
  const auto planes = static_cast<int>(state.range(1));
  run(state, planes, [=](const KivImage& src, KivImage& dst) { dst.Box_Blur(src, radius); });
}
BENCHMARK(BoxBlur)
    ->ArgNames({"radius", "planes"})
    ->ArgsProduct({{1, 12, 100}, {1, 3}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void GaussBlur(benchmark::State& state) {
  const auto sigma = static_cast<float>(state.range(0));
  run(state, 1, [=](const KivImage& src, KivImage& dst) { dst.Gauss_Blur(src, sigma, 4, true); });
}
BENCHMARK(GaussBlur)->ArgName("sigma")->Arg(1)->Arg(3)->Arg(20)->Unit(benchmark::kMillisecond)->UseRealTime();

// From 3 to 4 the image is reduced.
void GaussBlurDecimate(benchmark::State& state) {
  const auto sigma = static_cast<float>(state.range(0));
  run(state, 1, [=](const KivImage& src, KivImage& dst) { dst.GaussBlurDecimate(src, sigma, 4); });
}
BENCHMARK(GaussBlurDecimate)
    ->ArgName("sigma")
    ->Arg(1)
    ->Arg(3)
    ->Arg(4)
    ->Arg(20)
    ->Arg(100)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void GaussianBoxBlur(benchmark::State& state) {
  const auto sigma = static_cast<float>(state.range(0));
  run(state, 1, [=](const KivImage& src, KivImage& dst) { dst.Gaussian_Box_Blur(src, sigma, 3); });
}
BENCHMARK(GaussianBoxBlur)->ArgName("sigma")->Arg(3)->Arg(20)->Unit(benchmark::kMillisecond)->UseRealTime();

void GaussianIirBlur(benchmark::State& state) {
  const auto sigma = static_cast<double>(state.range(0));
  run(state, 1, [=](const KivImage& src, KivImage& dst) { dst.Gaussian_IIR_Blur(src, sigma); });
}
BENCHMARK(GaussianIirBlur)->ArgName("sigma")->Arg(1)->Arg(3)->Arg(50)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
