// Speed of what looks at a neighbourhood for its extremes, levels or variance, on six megapixels, in pixels per second.
// Time is the wall's: most of it runs on threads.

#include <benchmark/benchmark.h>

#include <vector>

#include "pictures.h"

namespace {

// Times operation(dst, src) on samples from 0.25 to 0.75, and checks afterwards that the result's lie from low to high.
template <typename Operation>
void run(benchmark::State& state, float low, float high, Operation operation) {
  constexpr int sixMegapixels = 6;
  KivImage src(sizeOf(sixMegapixels), 1);
  randomise(src, 0.25F, 0.75F);
  KivImage dst(src.size, 1);
  for (auto _ : state) operation(dst, src);
  if (!(dst.Min() >= low && dst.Max() <= high)) state.SkipWithError("a sample lies where none can");
  countPixels(state, src.size);
}

void Dilate(benchmark::State& state) {
  const auto side = static_cast<int>(2 * state.range(0) + 1);
  std::vector<unsigned char> mask(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1);
  run(state, 0.5F, 0.75F, [&](KivImage& dst, const KivImage& src) { dst.Dilate(src, mask.data(), side, false); });
}
BENCHMARK(Dilate)->ArgName("radius")->Arg(3)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

void LocalAutoLevels(benchmark::State& state) {
  const auto radius = static_cast<int>(state.range(0));
  run(state, -1.0F, 2.0F, [=](KivImage& dst, const KivImage& src) { dst.LocalAutoLevels(src, radius, true); });
}
BENCHMARK(LocalAutoLevels)->ArgName("radius")->Arg(3)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

void LocalContrast(benchmark::State& state) {
  const auto radius = static_cast<float>(state.range(0));
  run(state, -1.0F, 2.0F,
      [=](KivImage& dst, const KivImage& src) { dst.ApplyLocalContrast(src, radius, 0.5F, 4.0F * radius, 0.5F); });
}
BENCHMARK(LocalContrast)->ArgName("radius")->Arg(3)->Arg(30)->Unit(benchmark::kMillisecond)->UseRealTime();

void LocalLinearFilter(benchmark::State& state) {
  const auto radius = static_cast<int>(state.range(0));
  run(state, 0.2F, 0.8F, [=](KivImage& dst, const KivImage& src) { dst.ApplyLocalLinearFilter(src, radius, 0.01F); });
}
BENCHMARK(LocalLinearFilter)->ArgName("radius")->Arg(3)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
