// Speed of the neighbourhood primitives, in pixels of the larger image per second: each with every row of bodies that
// the machine can run, on images in and beyond the cache.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "primitives/primitives.h"

namespace {

struct Image {
  Image(int width, int height) : size{width, height}, samples(ippiMalloc_32f_C1(width, height, &step)) {}
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { ippiFree(samples); }

  void randomise() {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> values(0.0F, 1.0F);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) row(y)[x] = values(random);
    }
  }
  double mean() const {
    double sum = 0.0;
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) sum += static_cast<double>(row(y)[x]);
    }
    return sum / size.width / size.height;
  }
  float* row(int y) const { return samples + static_cast<std::ptrdiff_t>(y) * (step / 4); }

  IppiSize size;
  std::int32_t step = 0;
  float* samples;
};

// 1, 6 and 24 megapixels.
IppiSize sizeOf(std::int64_t megapixels) {
  if (megapixels == 1) return {1250, 800};
  return megapixels == 6 ? IppiSize{3000, 2000} : IppiSize{6000, 4000};
}

// Times filter() on the row of bodies of the second argument, and checks afterwards that it has kept the mean.
template <typename Filter>
void run(benchmark::State& state, const Image& src, const Image& dst, const Image& larger, Filter filter) {
  ippInit();
  if (state.range(1) > ippJumpIndexForMergedLibs) {
    state.SkipWithError("this machine lacks the row's instructions");
    return;
  }
  ippJumpIndexForMergedLibs = static_cast<std::int32_t>(state.range(1));
  for (auto _ : state) {
    if (filter() != ippStsNoErr) state.SkipWithError("refused");
    benchmark::ClobberMemory();
  }
  if (!(std::abs(src.mean() - dst.mean()) < 0.002)) state.SkipWithError("the mean was not kept");
  ippInit();
  state.counters["pixels/s"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * larger.size.width * larger.size.height, benchmark::Counter::kIsRate);
}

void resize(benchmark::State& state, IppiSize from, IppiSize to) {
  Image src(from.width, from.height);
  Image dst(to.width, to.height);
  src.randomise();
  int specSize = 0;
  int initSize = 0;
  int bufferSize = 0;
  ippiResizeGetSize_32f(from, to, ippLinear, 0, &specSize, &initSize);
  std::vector<unsigned char> spec(static_cast<std::size_t>(specSize));
  ippiResizeLinearInit_32f(from, to, spec.data());
  ippiResizeGetBufferSize_8u(spec.data(), to, 1, &bufferSize);
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  run(state, src, dst, from.width > to.width ? src : dst, [&] {
    return ippiResizeLinear_32f_C1R(src.samples, src.step, dst.samples, dst.step, {0, 0}, to, ippBorderRepl, nullptr,
                                    spec.data(), buffer.data());
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
  Image src(size.width, size.height);
  Image dst(size.width, size.height);
  src.randomise();
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
    return ippiFilterGaussian_32f_C1R_L(src.samples, src.step, dst.samples, dst.step, size.width, size.height,
                                        ippBorderRepl, nullptr, spec.data(), buffer.data());
  });
}

void GaussianBorder(benchmark::State& state) {
  const IppiSize size = sizeOf(state.range(0));
  Image src(size.width, size.height);
  Image dst(size.width, size.height);
  src.randomise();
  int specSize = 0;
  int bufferSize = 0;
  ippiFilterGaussianGetBufferSize(size, kernelSize, ipp32f, 1, &specSize, &bufferSize);
  std::vector<unsigned char> spec(static_cast<std::size_t>(specSize));
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  ippiFilterGaussianInit(size, kernelSize, ippBorderRepl, ipp32f, 1, spec.data(), buffer.data(), sigma);
  run(state, src, dst, dst, [&] {
    return ippiFilterGaussianBorder_32f_C1R(src.samples, src.step, dst.samples, dst.step, size, 0.0F, spec.data(),
                                            buffer.data());
  });
}

// The same time at every mask is the point.
void BoxFilter(benchmark::State& state, bool inPlace) {
  const IppiSize size = sizeOf(state.range(0));
  const auto side = static_cast<int>(state.range(2));
  Image src(size.width, size.height);
  Image dst(size.width, size.height);
  src.randomise();
  dst.randomise();
  int bufferSize = 0;
  ippiFilterBoxBorderGetBufferSize(size, {side, side}, ipp32f, 1, &bufferSize);
  std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferSize));
  const Image& from = inPlace ? dst : src;
  run(state, src, dst, dst, [&] {
    return ippiFilterBoxBorder_32f_C1R(from.samples, from.step, dst.samples, dst.step, size, {side, side},
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
