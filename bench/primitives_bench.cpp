// Speed of the neighbourhood primitives, in pixels of the larger image per second: each with every row of bodies that
// the machine can run, on images in and beyond the cache.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "pictures.h"

namespace {

// Times filter() on the row of bodies of the second argument, and checks afterwards that it has kept the mean.
template <typename Filter>
void run(benchmark::State& state, const KivImage& src, const KivImage& dst, const KivImage& larger, Filter filter) {
  const BenchRow row(state, state.range(1));
  if (!row.isThere()) return;
  for (auto _ : state) {
    if (filter() != ippStsNoErr) state.SkipWithError("refused");
    benchmark::ClobberMemory();
  }
  if (!(std::abs(mean(src) - mean(dst)) < 0.002)) state.SkipWithError("the mean was not kept");
  countPixels(state, larger.size);
}

void resize(benchmark::State& state, IppiSize from, IppiSize to) {
  KivImage src(from.width, from.height, 1);
  KivImage dst(to.width, to.height, 1);
  randomise(src);
  int specSize = 0;
  int initSize = 0;
  int bufferSize = 0;
  ippiResizeGetSize_32f(from, to, ippLinear, 0, &specSize, &initSize);
  std::vector<unsigned char> spec(static_cast<std::size_t>(specSize));
  ippiResizeLinearInit_32f(from, to, spec.data());
  ippiResizeGetBufferSize_8u(spec.data(), to, 1, &bufferSize);
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  run(state, src, dst, from.width > to.width ? src : dst, [&] {
    return ippiResizeLinear_32f_C1R(src.planes[0], src.stride, dst.planes[0], dst.stride, {0, 0}, to, ippBorderRepl,
                                    nullptr, spec.data(), buffer.data());
  });
}

void ResizeHalving(benchmark::State& state) {
  const IppiSize size = sizeOf(state.range(0));
  resize(state, size, {size.width / 2, size.height / 2});
}
void ResizeDoubling(benchmark::State& state) {
  const IppiSize size = sizeOf(state.range(0));
  resize(state, {size.width / 2, size.height / 2}, size);
}

constexpr int kernelSize = 25;
constexpr float sigma = 3.0F;

void GaussianBand(benchmark::State& state) {
  const IppiSize size = sizeOf(state.range(0));
  KivImage src(size.width, size.height, 1);
  KivImage dst(size.width, size.height, 1);
  randomise(src);
  std::int64_t specSize = 0;
  std::int64_t initSize = 0;
  std::int64_t bufferSize = 0;
  ippiFilterGaussianGetSpecSize_L(kernelSize, ipp32f, 1, &specSize, &initSize);
  ippiFilterGaussianGetBufferSize_L(size.width, size.height, kernelSize, ipp32f, ippBorderRepl, 1, &bufferSize);
  std::vector<unsigned char> spec(static_cast<std::size_t>(specSize));
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  ippiFilterGaussianInit_L(size.width, size.height, kernelSize, ippBorderRepl, ipp32f, 1, spec.data(), buffer.data(),
                           sigma);
  run(state, src, dst, dst, [&] {
    return ippiFilterGaussian_32f_C1R_L(src.planes[0], src.stride, dst.planes[0], dst.stride, size.width, size.height,
                                        ippBorderRepl, nullptr, spec.data(), buffer.data());
  });
}

void GaussianBorder(benchmark::State& state) {
  const IppiSize size = sizeOf(state.range(0));
  KivImage src(size.width, size.height, 1);
  KivImage dst(size.width, size.height, 1);
  randomise(src);
  int specSize = 0;
  int bufferSize = 0;
  ippiFilterGaussianGetBufferSize(size, kernelSize, ipp32f, 1, &specSize, &bufferSize);
  std::vector<unsigned char> spec(static_cast<std::size_t>(specSize));
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  ippiFilterGaussianInit(size, kernelSize, ippBorderRepl, ipp32f, 1, spec.data(), buffer.data(), sigma);
  run(state, src, dst, dst, [&] {
    return ippiFilterGaussianBorder_32f_C1R(src.planes[0], src.stride, dst.planes[0], dst.stride, size, 0.0F,
                                            spec.data(), buffer.data());
  });
}

// The same time at every mask is the point.
void BoxFilter(benchmark::State& state, bool inPlace) {
  const IppiSize size = sizeOf(state.range(0));
  const auto side = static_cast<int>(state.range(2));
  KivImage src(size.width, size.height, 1);
  KivImage dst(size.width, size.height, 1);
  randomise(src);
  randomise(dst);
  int bufferSize = 0;
  ippiFilterBoxBorderGetBufferSize(size, {side, side}, ipp32f, 1, &bufferSize);
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  const KivImage& from = inPlace ? dst : src;
  run(state, src, dst, dst, [&] {
    return ippiFilterBoxBorder_32f_C1R(from.planes[0], from.stride, dst.planes[0], dst.stride, size, {side, side},
                                       ippBorderRepl, nullptr, buffer.data());
  });
}

void eachSizeAndRow(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"megapixels", "row"})->ArgsProduct({{1, 6, 24}, {0, 1, 2, 3, 4}})->Unit(benchmark::kMillisecond);
}
BENCHMARK(ResizeHalving)->Apply(eachSizeAndRow);
BENCHMARK(ResizeDoubling)->Apply(eachSizeAndRow);
BENCHMARK(GaussianBand)->Apply(eachSizeAndRow);
BENCHMARK(GaussianBorder)->Apply(eachSizeAndRow);

void eachSizeRowAndMask(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"megapixels", "row", "mask"})
      ->ArgsProduct({{1, 6}, {0, 1, 2, 3, 4}, {3, 25, 201}})
      ->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(BoxFilter, separate, false)->Apply(eachSizeRowAndMask);
BENCHMARK_CAPTURE(BoxFilter, inPlace, true)->Apply(eachSizeRowAndMask);

}  // namespace
