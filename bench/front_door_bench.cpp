// The front door on pictures as files have them: whole runs, and stacks taken apart once and weighed.

#include <benchmark/benchmark.h>

#include <vector>

#include "api/orbel.h"
#include "pictures.h"
#include "support/forced_row.h"

namespace {

// A painted picture in interleaved samples.
struct Interleaved {
  std::vector<unsigned char> samples;
  orbel_picture picture;

  Interleaved(orbel_samples type, std::int64_t megapixels) {
    const IppiSize size = sizeOf(megapixels);
    KivImage image(size, 3);
    paint(image);
    orbel_picture floats;
    orbel_picture_planar(&floats, sizeof floats, ORBEL_FLOAT32, size.width, size.height, 3, image.planes[0],
                         image.stride);
    const std::ptrdiff_t bytes = type == ORBEL_UINT8 ? 1 : type == ORBEL_FLOAT32 ? 4 : 2;
    samples.resize(static_cast<std::size_t>(bytes * 3 * size.width * size.height));
    orbel_picture_interleaved(&picture, sizeof picture, type, size.width, size.height, 3, samples.data(),
                              bytes * 3 * size.width);
    orbel_settings settings;
    orbel_settings_init(&settings, sizeof settings);
    for (orbel_band& band : settings.bands) band.radius = 0;
    orbel_equalize(&settings, &floats, &picture, nullptr);
  }
};

orbel_settings clarity(bool luminance) {
  orbel_settings settings;
  orbel_settings_init(&settings, sizeof settings);
  for (orbel_band& band : settings.bands) band.gain = 130;
  settings.luminance = luminance ? 1 : 0;
  return settings;
}

orbel_options withThreads(std::int64_t threads) {
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.threads = static_cast<std::int32_t>(threads);
  return options;
}

void require(benchmark::State& state, orbel_status status) {
  if (status != ORBEL_OK) state.SkipWithError(orbel_status_text(status));
}

void equalizeInterleaved(benchmark::State& state) {
  const Interleaved source(static_cast<orbel_samples>(state.range(0)), 24);
  const Interleaved target(static_cast<orbel_samples>(state.range(0)), 24);
  const orbel_settings settings = clarity(state.range(1) != 0);
  const orbel_options options = withThreads(state.range(2));
  for (auto _ : state) require(state, orbel_equalize(&settings, &source.picture, &target.picture, &options));
}

void takeApart(benchmark::State& state) {
  const Interleaved source(static_cast<orbel_samples>(state.range(0)), 24);
  const orbel_settings settings = clarity(state.range(1) != 0);
  const orbel_options options = withThreads(state.range(2));
  for (auto _ : state) {
    orbel_stack* stack = nullptr;
    require(state, orbel_stack_create(&settings, &source.picture, &options, &stack));
    orbel_stack_free(stack);
  }
}

void weighAnew(benchmark::State& state) {
  const Interleaved source(static_cast<orbel_samples>(state.range(0)), 24);
  const orbel_settings settings = clarity(state.range(1) != 0);
  const orbel_options options = withThreads(state.range(2));
  orbel_stack* stack = nullptr;
  require(state, orbel_stack_create(&settings, &source.picture, &options, &stack));
  for (auto _ : state) require(state, orbel_stack_weigh(stack, &settings, &source.picture, &source.picture, &options));
  orbel_stack_free(stack);
}

// A picture of a reference size by each form, on one thread and each processor row.
void equalizeByForm(benchmark::State& state) {
  const Interleaved source(ORBEL_UINT8, 1);
  orbel_settings settings = clarity(true);
  for (orbel_band& band : settings.bands) band.edges = 1;
  settings.form = static_cast<std::int32_t>(state.range(0));
  const int row = static_cast<int>(state.range(1));
  if (!ForcedRow::machineHas(row)) return state.SkipWithError("the machine lacks this row");
  const ForcedRow forced(row);
  const orbel_options options = withThreads(1);
  for (auto _ : state) require(state, orbel_equalize(&settings, &source.picture, &source.picture, &options));
}

const std::vector<std::string> arguments = {"samples", "luminance", "threads"};
const std::vector<std::vector<std::int64_t>> all = {{ORBEL_UINT8, ORBEL_UINT16, ORBEL_FLOAT32}, {1, 0}, {1, 2}};
BENCHMARK(equalizeInterleaved)->ArgNames(arguments)->ArgsProduct(all)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(takeApart)->ArgNames(arguments)->ArgsProduct(all)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(weighAnew)->ArgNames(arguments)->ArgsProduct(all)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(equalizeByForm)
    ->ArgNames({"form", "row"})
    ->ArgsProduct({{ORBEL_PYRAMID, ORBEL_WAVELETS}, {0, 3, 4}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
