// door_hashes [COUNT]: runs of random pictures and settings through the front door, a line with a digest of every
// sample for each. Fails where a run does.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "api/orbel.h"
#include "programs/hashes.h"

namespace {

orbel_settings anySettings() {
  orbel_settings s;
  orbel_settings_init(&s, sizeof s);
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    s.bands[i].gain = chance(20) ? 100 : below(5000) / 10.0 - 100;
    s.bands[i].radius = chance(10) ? 0 : below(90) / 10.0;
    s.bands[i].threshold = chance(10) ? 0 : below(2560) / 10.0;
    s.bands[i].threshold = s.bands[i].threshold > 255 ? 255 : s.bands[i].threshold;
    s.bands[i].edges = chance(60) ? 1 : 0;
  }
  s.residual = chance(50) ? 100 : below(3000) / 10.0 - 50;
  s.mix = chance(70) ? 100 : below(1001) / 10.0;
  s.half = chance(20) ? 1 : 0;
  s.luminance = chance(60) ? 1 : 0;
  s.overlay = chance(10) ? below(5) : 0;
  s.reference_edge = chance(50) ? 0 : 40 + below(200);
  s.form = chance(40) ? ORBEL_WAVELETS : ORBEL_PYRAMID;
  s.limit = chance(40) ? 1 : 0;
  return s;
}

const std::size_t sampleBytes[] = {1, 2, 2, 4};

// Smooth parts, steps and noise; floats beyond black and white, too, and now and then what is no colour.
void fill(unsigned char* at, const orbel_picture* p) {
  const bool special = p->samples == ORBEL_FLOAT32 && chance(25);
  for (std::int32_t y = 0; y < p->height; ++y) {
    for (std::int32_t x = 0; x < p->width; ++x) {
      for (std::int32_t c = 0; c < p->channels; ++c) {
        const double v = (x * 3 + y * 2 + c * 40) % 160 / 255.0 + (x / 7 + y / 5) % 3 * 0.1 + below(1000) / 6000.0;
        if (p->samples == ORBEL_UINT8) *at = static_cast<unsigned char>(v * 255);
        std::uint16_t word = std::uint16_t(v * (p->samples == ORBEL_UINT16 ? 65535 : 32768));
        if (p->samples == ORBEL_UINT16 || p->samples == ORBEL_UINT16_HOST) std::memcpy(at, &word, sizeof word);
        float number = float(v * 1.3 - 0.1);
        if (special) number = orSpecial(number);
        if (p->samples == ORBEL_FLOAT32) std::memcpy(at, &number, sizeof number);
        at += sampleBytes[p->samples];
      }
    }
  }
}

unsigned long long digest(const unsigned char* at, const orbel_picture* p) {
  const std::size_t samples = std::size_t(p->width) * std::size_t(p->height) * std::size_t(p->channels);
  const std::size_t bytes = samples * sampleBytes[p->samples];
  Digest digest;
  if (p->samples == ORBEL_FLOAT32) {
    digest.addFloats(at, bytes);
  } else {
    digest.add(at, bytes);
  }
  return digest.value();
}

orbel_picture describe(std::int32_t samples, std::int32_t width, std::int32_t height, std::int32_t channels,
                       unsigned char* at) {
  orbel_picture p;
  orbel_picture_interleaved(&p, sizeof p, orbel_samples(samples), width, height, channels, at,
                            std::ptrdiff_t{width} * channels * std::ptrdiff_t(sampleBytes[samples]));
  return p;
}

// A whole run, or a part of a look in some size.
orbel_status equalize(const orbel_settings* s, const orbel_picture* source, const orbel_picture* target) {
  if (s->reference_edge == 0 || chance(60)) return orbel_equalize(s, source, target, nullptr);
  orbel_stack* stack = nullptr;
  orbel_look* look = nullptr;
  orbel_status status = orbel_stack_create(s, source, nullptr, &stack);
  if (status == ORBEL_OK) {
    const std::int32_t width = source->width + below(40);
    const std::int32_t height = source->height + below(40);
    status = orbel_look_create_in_size(stack, s, width, height, nullptr, &look);
  }
  if (status == ORBEL_OK) status = orbel_look_render(look, 0, 0, source, target, nullptr);
  orbel_look_free(look);
  orbel_stack_free(stack);
  return status;
}

}  // namespace

int main(int count, char** arguments) {
  const int runs = count > 1 ? std::atoi(arguments[1]) : 320;
  int failures = 0;
  for (int i = 0; i < runs; ++i) {
    const orbel_settings settings = anySettings();
    const std::int32_t width = 1 + below(chance(20) ? 40 : 230);
    const std::int32_t height = 1 + below(chance(20) ? 40 : 170);
    const std::int32_t channels = 1 + below(ORBEL_CHANNELS);
    std::vector<unsigned char> from(std::size_t(width * height * channels) * 4);
    std::vector<unsigned char> to(from.size());
    const orbel_picture source = describe(below(4), width, height, channels, from.data());
    const orbel_picture target = describe(chance(60) ? source.samples : below(4), width, height, channels, to.data());
    fill(from.data(), &source);
    const orbel_status status = equalize(&settings, &source, &target);
    if (status == ORBEL_OK) {
      std::printf("%d %dx%dx%d %016llx\n", i, width, height, channels, digest(to.data(), &target));
    } else {
      std::fprintf(stderr, "run %d: %s\n", i, orbel_status_text(status));
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
