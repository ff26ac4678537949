// The front door: in every layout, taken apart once, and asked for what it refuses. That it gives the plug-in's samples
// is for the plug-in's runs to show.
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cfenv>
#include <cstring>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

#include "api/orbel.h"
#include "image/kiv_image.h"
#include "primitives/primitives.h"
#include "support/loaded_module.h"
#include "support/strong_settings.h"

namespace {

orbel_settings defaults() {
  orbel_settings settings;
  EXPECT_EQ(orbel_settings_init(&settings, sizeof settings), ORBEL_OK);
  return settings;
}

constexpr std::size_t bytesOf(orbel_samples samples) {
  return samples == ORBEL_UINT8 ? 1 : samples == ORBEL_FLOAT32 ? 4 : 2;
}

std::size_t bytesIn(const orbel_picture& picture) { return bytesOf(static_cast<orbel_samples>(picture.samples)); }

// Pixel i, row by row.
unsigned char* sampleOf(const orbel_picture& p, int channel, int i) {
  return static_cast<unsigned char*>(p.base[channel]) + i % p.width * p.column_step + i / p.width * p.row_step;
}
void copyChannel(const orbel_picture& from, int channel, const orbel_picture& to, int toChannel) {
  for (int i = 0; i < from.width * from.height; ++i) {
    std::memcpy(sampleOf(to, toChannel, i), sampleOf(from, channel, i), bytesIn(from));
  }
}

// A picture and its samples.
struct Owned {
  std::vector<unsigned char> samples;
  orbel_picture picture;

  Owned(orbel_samples type, int width, int height, int channels, unsigned seed = 1)
      : samples(bytesOf(type) * static_cast<std::size_t>(width * height * channels)) {
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(bytesOf(type)) * channels * width;
    orbel_picture_interleaved(&picture, sizeof picture, type, width, height, channels, samples.data(), row);
    const double white = type == ORBEL_UINT8 ? 255 : type == ORBEL_UINT16 ? 65535 : 32768;
    std::mt19937 random(seed);
    for (int i = 0; i < channels * width * height; ++i) {
      const int pixel = i / channels;
      const double part = 0.2 + 0.6 * (pixel % width > pixel / width) + 1e-4 * static_cast<double>(random() % 1000);
      const auto real = static_cast<float>(part);
      const auto level = static_cast<std::uint16_t>(part * white);
      const void* const sample = type == ORBEL_FLOAT32 ? static_cast<const void*>(&real) : &level;
      std::memcpy(sampleOf(picture, i % channels, pixel), sample, bytesOf(type));
    }
  }
  Owned(const Owned& other) : samples(other.samples), picture(other.picture) {
    for (void*& base : picture.base) {
      const auto at = static_cast<unsigned char*>(base) - other.samples.data();
      if (base != nullptr) base = samples.data() + at;
    }
  }
  Owned& operator=(const Owned&) = delete;

  std::vector<float> floats() const {
    std::vector<float> values(samples.size() / sizeof(float));
    std::memcpy(values.data(), samples.data(), samples.size());
    return values;
  }
};

std::vector<unsigned char> equalized(const orbel_settings& settings, const Owned& source,
                                     const orbel_options* options = nullptr) {
  const Owned target(source);
  EXPECT_EQ(orbel_equalize(&settings, &target.picture, &target.picture, options), ORBEL_OK);
  return target.samples;
}

// Grey is what three equal colours come to; alpha stays; any layout and any second picture hold the same samples.
TEST(FrontDoor, TakesPicturesAsTheyLie) {
  for (const orbel_samples type : {ORBEL_UINT8, ORBEL_UINT16, ORBEL_FLOAT32}) {
    for (const int channels : {1, 2, 3, 4}) {
      for (const bool luminance : {true, false}) {
        const int w = 61;
        const int h = 45;
        const orbel_settings settings = strongSettings(luminance);
        const Owned source(type, w, h, channels);
        const Owned expected(source);
        const Owned rgb(type, w, h, 3);
        for (int c = 0; c < 3; ++c) copyChannel(source.picture, channels < 3 ? 0 : c, rgb.picture, c);
        ASSERT_EQ(orbel_equalize(&settings, &rgb.picture, &rgb.picture, nullptr), ORBEL_OK);
        for (int c = 0; c < (channels < 3 ? 1 : 3); ++c) copyChannel(rgb.picture, c, expected.picture, c);
        EXPECT_EQ(equalized(settings, source), expected.samples) << type << ", " << channels << " channels";

        // From planes at odd addresses, upside down, into columns from right to left.
        std::vector<unsigned char> planes(source.samples.size() + 1);
        std::vector<unsigned char> columns(source.samples.size());
        const auto bytes = static_cast<std::ptrdiff_t>(bytesOf(type));
        orbel_picture from;
        orbel_picture to;
        orbel_picture_planar(&from, sizeof from, type, w, h, channels, planes.data() + 1, bytes * w);
        orbel_picture_interleaved(&to, sizeof to, type, h, w, channels, columns.data(), bytes * h * channels);
        std::swap(to.width, to.height);
        std::swap(to.column_step, to.row_step);
        for (int c = 0; c < channels; ++c) {
          from.base[c] = sampleOf(from, c, (h - 1) * w);
          to.base[c] = sampleOf(to, c, w - 1);
        }
        from.row_step = -from.row_step;
        to.column_step = -to.column_step;
        const Owned upright(type, w, h, channels);
        for (int c = 0; c < channels; ++c) copyChannel(source.picture, c, from, c);
        ASSERT_EQ(orbel_equalize(&settings, &from, &to, nullptr), ORBEL_OK);
        for (int c = 0; c < channels; ++c) copyChannel(to, c, upright.picture, c);
        EXPECT_EQ(upright.samples, expected.samples);
      }
    }
  }
}

TEST(FrontDoor, GivesEveryLevelBackInItsOwnTypeAndInAnother) {
  Owned all(ORBEL_UINT16, 256, 256, 1);
  for (int i = 0; i < 65536; ++i) {
    const auto level = static_cast<std::uint16_t>(i);
    std::memcpy(all.samples.data() + 2 * i, &level, 2);
  }
  const orbel_settings neutral = defaults();
  EXPECT_EQ(equalized(neutral, all), all.samples);
  const Owned floats(ORBEL_FLOAT32, 256, 256, 1);
  const Owned bytes(ORBEL_UINT8, 256, 256, 1);
  ASSERT_EQ(orbel_equalize(&neutral, &all.picture, &floats.picture, nullptr), ORBEL_OK);
  const Owned plain(floats);
  ASSERT_EQ(orbel_convert(&all.picture, &plain.picture), ORBEL_OK);
  for (const Owned* const deep : {static_cast<const Owned*>(&all), &plain}) {
    ASSERT_EQ(orbel_convert(&deep->picture, &bytes.picture), ORBEL_OK);
    for (int i = 0; i < 65536; ++i) {
      ASSERT_NEAR(bytes.samples[static_cast<std::size_t>(i)], i / 257.0, 0.5001);
    }
  }
  const Owned back(all);
  ASSERT_EQ(orbel_convert(&floats.picture, &back.picture), ORBEL_OK);
  EXPECT_EQ(back.samples, all.samples);
}

// By the formula, from a run in full, on floats: original * (1 - weight) + result * weight.
TEST(FrontDoor, BlendsByMixAndMask) {
  const Owned source(ORBEL_FLOAT32, 50, 40, 3);
  const Owned mask(ORBEL_UINT8, 50, 40, 1, 5);
  orbel_settings settings = strongSettings(true);
  Owned full(source);
  full.samples = equalized(settings, source);
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.mask = &mask.picture;
  settings.mix = 70;
  Owned blended(source);
  blended.samples = equalized(settings, source, &options);
  const std::vector<float> before = source.floats();
  const std::vector<float> after = full.floats();
  const std::vector<float> between = blended.floats();
  for (std::size_t i = 0; i < before.size(); ++i) {
    const float weight = static_cast<float>(mask.samples[i / 3]) / 255.0F * 0.7F;
    EXPECT_NEAR(between[i], before[i] * (1 - weight) + after[i] * weight, 1e-6);
  }
  settings.mix = 0;
  EXPECT_EQ(equalized(settings, source, &options), source.samples);
}

// A part of a picture, of its own address.
orbel_picture partOf(const orbel_picture& whole, const KivRect& part) {
  orbel_picture p = whole;
  p.width = part.width;
  p.height = part.height;
  for (int c = 0; c < p.channels; ++c) p.base[c] = sampleOf(whole, c, part.y * whole.width + part.x);
  return p;
}

// Whole, by a look's parts in any order, and from lines that come some at a time; with and without a reference edge,
// above, at and below the picture's size.
TEST(FrontDoor, WeighsAStackAsAWholeRunDoes) {
  for (const orbel_samples type : {ORBEL_UINT8, ORBEL_FLOAT32}) {
    for (const auto& [size, edge] : {std::pair{IppiSize{150, 90}, 0},
                                     {IppiSize{30, 50}, 0},
                                     {IppiSize{150, 90}, 67},
                                     {IppiSize{150, 90}, 150},
                                     {IppiSize{41, 70}, 113},
                                     {IppiSize{30, 150}, 50}}) {
      for (const bool luminance : {true, false}) {
        orbel_settings first = strongSettings(luminance);
        first.reference_edge = edge;
        const Owned source(type, size.width, size.height, 4);
        orbel_stack* stack = nullptr;
        ASSERT_EQ(orbel_stack_create(&first, &source.picture, nullptr, &stack), ORBEL_OK);
        orbel_settings second = first;
        for (orbel_band& band : second.bands) band.gain += 60;
        second.residual = 105;
        second.half = 1;
        second.mix = 60;
        second.overlay = 0;
        for (const orbel_settings& settings : {first, second, first}) {
          const Owned target(type, size.width, size.height, 4, 9);
          ASSERT_EQ(orbel_stack_weigh(stack, &settings, &source.picture, &target.picture, nullptr), ORBEL_OK);
          EXPECT_EQ(target.samples, equalized(settings, source));
        }
        if (edge != 0) {
          orbel_stack* begun = nullptr;
          ASSERT_EQ(orbel_stack_begin(&first, &source.picture, nullptr, &begun), ORBEL_OK);
          for (int y = 0, height = 1; y < size.height; y += height, height = std::min(y % 7 + 1, size.height - y)) {
            const orbel_picture lines = partOf(source.picture, {0, y, size.width, height});
            ASSERT_EQ(orbel_stack_add(begun, &lines, nullptr), ORBEL_OK);
          }
          EXPECT_EQ(orbel_stack_add(begun, &source.picture, nullptr), ORBEL_BAD_ARGUMENT);
          std::swap(stack, begun);
          orbel_stack_free(begun);
        }
        orbel_look* look = nullptr;
        ASSERT_EQ(orbel_look_create(stack, &first, nullptr, &look), ORBEL_OK);
        const Owned parts(source);
        const int left = size.width / 3;
        for (const KivRect& part :
             {KivRect{left, 0, size.width - left, size.height}, {0, 20, left, size.height - 20}, {0, 0, left, 20}}) {
          const orbel_picture place = partOf(parts.picture, part);
          ASSERT_EQ(orbel_look_render(look, part.x, part.y, &place, &place, nullptr), ORBEL_OK);
        }
        EXPECT_EQ(parts.samples, equalized(first, source));
        EXPECT_EQ(orbel_look_render(look, 1, 0, &source.picture, &source.picture, nullptr), ORBEL_BAD_PICTURE);
        orbel_look_free(look);
        second.bands[4].radius += 1;
        EXPECT_EQ(orbel_look_create(stack, &second, nullptr, &look), ORBEL_BAD_SETTING);
        orbel_stack_free(stack);
      }
    }
  }
}

// In another size a look gives the result in that size: here reduced by a whole number, in either form.
TEST(FrontDoor, LooksInOtherSizesAreTheResultReduced) {
  for (const int form : {ORBEL_PYRAMID, ORBEL_WAVELETS}) {
    const int by = 4;
    const Owned source(ORBEL_FLOAT32, 320, 280, 1);
    const auto reduced = [&](const std::vector<float>& whole) {
      const Owned small(ORBEL_FLOAT32, 320 / by, 280 / by, 1);
      for (int i = 0; i < 320 * 280; ++i) {
        float* const to =
            reinterpret_cast<float*>(sampleOf(small.picture, 0, i / 320 / by * (320 / by) + i % 320 / by));
        *to = (i / 320 % by == 0 && i % by == 0 ? 0 : *to) + whole[static_cast<std::size_t>(i)] / (by * by);
      }
      return small;
    };
    orbel_settings settings = strongSettings(true);
    settings.reference_edge = 160;
    settings.form = form;
    settings.overlay = 0;
    orbel_stack* stack = nullptr;
    orbel_look* look = nullptr;
    ASSERT_EQ(orbel_stack_create(&settings, &source.picture, nullptr, &stack), ORBEL_OK);
    ASSERT_EQ(orbel_look_create_in_size(stack, &settings, 320 / by, 280 / by, nullptr, &look), ORBEL_OK);
    const Owned small = reduced(source.floats());
    ASSERT_EQ(orbel_look_render(look, 0, 0, &small.picture, &small.picture, nullptr), ORBEL_OK);
    Owned whole(source);
    whole.samples = equalized(settings, source);
    const std::vector<float> expected = reduced(whole.floats()).floats();
    const std::vector<float> found = small.floats();
    double sum = 0;
    for (std::size_t i = 0; i < found.size(); ++i) sum += 255 * std::abs(found[i] - expected[i]);
    EXPECT_LE(sum / static_cast<double>(found.size()), 0.6) << form;
    orbel_look_free(look);
    orbel_stack_free(stack);
  }
}

double valueOf(const orbel_picture& p, int channel, int i) {
  const unsigned char* const sample = sampleOf(p, channel, i);
  if (p.samples == ORBEL_UINT8) return *sample / 255.0;
  if (p.samples == ORBEL_FLOAT32) {
    float value = 0;
    std::memcpy(&value, sample, sizeof value);
    return value;
  }
  std::uint16_t level = 0;
  std::memcpy(&level, sample, sizeof level);
  return level / (p.samples == ORBEL_UINT16 ? 65535.0 : 32768.0);
}

// What of sample j is in sample i of a line of `from` samples that was made `to` long.
double coverage(int from, int to, int i, int j) {
  const double step = static_cast<double>(from) / to;
  return std::max(0.0, std::min((i + 1) * step, j + 1.0) - std::max(i * step, static_cast<double>(j))) / step;
}

// By the formula, over all samples of the source; and in parts, by any number of threads, to the bit.
TEST(FrontDoor, ReducesByAreaMeans) {
  const int w = 61;
  const int h = 45;
  for (const auto& [type, into, size, channels] : {std::tuple{ORBEL_UINT8, ORBEL_UINT8, IppiSize{14, 9}, 3},
                                                   {ORBEL_UINT8, ORBEL_FLOAT32, {60, 44}, 4},
                                                   {ORBEL_UINT16, ORBEL_UINT16, {1, 1}, 2},
                                                   {ORBEL_UINT16_HOST, ORBEL_UINT8, {61, 20}, 1},
                                                   {ORBEL_FLOAT32, ORBEL_FLOAT32, {17, 45}, 4},
                                                   {ORBEL_FLOAT32, ORBEL_UINT16_HOST, {30, 31}, 3}}) {
    const Owned source(type, w, h, channels);
    const Owned whole(into, size.width, size.height, channels, 9);
    ASSERT_EQ(orbel_reduce(&source.picture, size.width, size.height, 0, 0, &whole.picture, nullptr), ORBEL_OK);
    const double white = into == ORBEL_UINT8 ? 255 : into == ORBEL_UINT16 ? 65535 : 32768;
    const double rounding = into == ORBEL_FLOAT32 ? 0 : 0.5 / white;
    for (int i = 0; i < size.width * size.height * channels; ++i) {
      const int pixel = i / channels;
      double mean = 0;
      for (int from = 0; from < w * h; ++from) {
        mean += coverage(w, size.width, pixel % size.width, from % w) *
                coverage(h, size.height, pixel / size.width, from / w) * valueOf(source.picture, i % channels, from);
      }
      ASSERT_NEAR(valueOf(whole.picture, i % channels, pixel), mean, rounding + 1e-6) << size.width << ", " << i;
    }
    orbel_options options;
    orbel_options_init(&options, sizeof options);
    for (const int threads : {1, 2, 5}) {
      options.threads = threads;
      const Owned parts(into, size.width, size.height, channels, 10);
      const int left = size.width / 3;
      const int top = size.height / 2;
      for (const KivRect& part :
           {KivRect{left, 0, size.width - left, size.height}, {0, top, left, size.height - top}, {0, 0, left, top}}) {
        if (part.width == 0 || part.height == 0) continue;
        const orbel_picture place = partOf(parts.picture, part);
        ASSERT_EQ(orbel_reduce(&source.picture, size.width, size.height, part.x, part.y, &place, &options), ORBEL_OK);
      }
      EXPECT_EQ(parts.samples, whole.samples) << size.width;
    }
  }
}

// Of a picture as large as this one there is no more in memory than the part of the result covers.
TEST(FrontDoor, ReducesWhatThereIsOfAPicture) {
  const std::ptrdiff_t columnStep = 4096;
  const Owned covered(ORBEL_UINT8, 30 * columnStep, 20, 1);
  orbel_picture alone = covered.picture;
  alone.width = 30;
  alone.column_step = columnStep;
  orbel_picture large = alone;
  large.width = large.height = 8000;
  const auto before = static_cast<std::uintptr_t>(4000 * large.column_step + 4000 * large.row_step);
  large.base[0] = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(alone.base[0]) - before);
  const Owned expected(ORBEL_FLOAT32, 3, 2, 1);
  const Owned found(ORBEL_FLOAT32, 3, 2, 1, 9);
  ASSERT_EQ(orbel_reduce(&alone, 3, 2, 0, 0, &expected.picture, nullptr), ORBEL_OK);
  ASSERT_EQ(orbel_reduce(&large, 800, 800, 400, 400, &found.picture, nullptr), ORBEL_OK);
  EXPECT_EQ(found.samples, expected.samples);
}

TEST(FrontDoor, GivesBandsThatAddUpToThePicture) {
  for (const int edge : {0, 40, 200}) {
    const Owned source(ORBEL_FLOAT32, 70, 66, 3);
    orbel_settings settings = strongSettings(false);
    settings.reference_edge = edge;
    orbel_stack* stack = nullptr;
    ASSERT_EQ(orbel_stack_create(&settings, &source.picture, nullptr, &stack), ORBEL_OK);
    std::vector<double> sum(70 * 66 * 3);
    for (int band = 0; band <= ORBEL_BANDS; ++band) {
      const Owned part(ORBEL_FLOAT32, 70, 66, 3);
      ASSERT_EQ(orbel_stack_band(stack, band, &source.picture, &part.picture, nullptr), ORBEL_OK);
      const std::vector<float> samples = part.floats();
      for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += samples[i];
    }
    const std::vector<float> expected = source.floats();
    for (std::size_t i = 0; i < sum.size(); ++i) ASSERT_NEAR(sum[i], expected[i], 3e-6);
    orbel_stack_free(stack);
  }
}

TEST(FrontDoor, KeepsTheCallersManners) {
  const Owned source(ORBEL_FLOAT32, 120, 80, 3);
  const orbel_settings settings = strongSettings(true);
  const int threadsBefore = threadCount();
  const auto expected = equalized(settings, source);
  for (const int rounding : {FE_UPWARD, FE_TOWARDZERO}) {
    std::fesetround(rounding);
    const auto samples = equalized(settings, source);
    EXPECT_EQ(std::fegetround(), rounding);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(samples, expected);
  }
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  for (const int threads : {1, 2, 5}) {
    options.threads = threads;
    EXPECT_EQ(equalized(settings, source, &options), expected) << threads;
  }
  // Two at once, and no thread left.
  std::vector<unsigned char> other;
  std::thread beside([&] { other = equalized(settings, source); });
  EXPECT_EQ(equalized(settings, source), expected);
  beside.join();
  EXPECT_EQ(other, expected);
  EXPECT_EQ(threadCountOnceSettled(threadsBefore), threadsBefore);
#if !defined(_WIN32)
  const pid_t child = fork();
  if (child == 0) _exit(equalized(settings, source) == expected ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << "a child's run";
#endif
}

TEST(FrontDoor, CanBeCalledOffUntilItWrites) {
  struct Listener {
    double stopAt;
    double last = -1;
    std::thread::id thread = std::this_thread::get_id();
  };
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.progress = [](void* context, double done) {
    auto& listener = *static_cast<Listener*>(context);
    EXPECT_EQ(listener.thread, std::this_thread::get_id());
    EXPECT_GT(done, listener.last);
    EXPECT_LE(done, 1);
    listener.last = done;
    return done >= listener.stopAt ? 1 : 0;
  };
  orbel_settings settings = strongSettings(false);
  for (const auto& [height, edge, stopAt] : {std::tuple{200, 0, 0.0},
                                             {200, 0, 0.3},
                                             {200, 0, 2.0},
                                             {20, 0, 0.0},
                                             {20, 0, 2.0},
                                             {200, 99, 0.1},
                                             {200, 99, 2.0}}) {
    settings.reference_edge = edge;
    const Owned source(ORBEL_UINT8, 300, height, 3);
    const auto expected = equalized(settings, source);
    Listener listener{stopAt};
    options.context = &listener;
    options.threads = 1;
    const Owned target(source);
    const orbel_status status = orbel_equalize(&settings, &target.picture, &target.picture, &options);
    EXPECT_EQ(status, stopAt > 1 ? ORBEL_OK : ORBEL_CANCELLED);
    EXPECT_EQ(target.samples, stopAt > 1 ? expected : source.samples);
    EXPECT_TRUE(stopAt < 1 || listener.last > 0.98);
  }
  // Within a level, too: a wide Gaussian's.
  orbel_settings_init(&settings, sizeof settings);
  for (orbel_band& band : settings.bands) band.radius = 0;
  settings.bands[0].radius = 40;
  const Owned target(ORBEL_UINT8, 300, 200, 3);
  Listener listener{0.1};
  options.context = &listener;
  EXPECT_EQ(orbel_equalize(&settings, &target.picture, &target.picture, &options), ORBEL_CANCELLED);
  EXPECT_LT(listener.last, 0.5);
}

TEST(FrontDoor, NamesWhatItRefuses) {
  const Owned source(ORBEL_UINT8, 40, 30, 3);
  char message[200];
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.message = message;
  options.message_capacity = sizeof message;
  struct Case {
    orbel_status status;
    const char* says;
    void (*bend)(orbel_settings& settings, orbel_picture& from, orbel_picture& to);
  };
  const Case cases[] = {
      {ORBEL_BAD_ARGUMENT, "settings", [](auto& s, auto&, auto&) { s.size = 8; }},
      {ORBEL_BAD_SETTING, "bands[2].radius is -1", [](auto& s, auto&, auto&) { s.bands[2].radius = -1; }},
      {ORBEL_BAD_SETTING, "bands[0].reserved is 1", [](auto& s, auto&, auto&) { s.bands[0].reserved = 1; }},
      {ORBEL_BAD_SETTING, "bands[4].gain is nan", [](auto& s, auto&, auto&) { s.bands[4].gain = NAN; }},
      {ORBEL_BAD_SETTING, "bands[0].edges is 2", [](auto& s, auto&, auto&) { s.bands[0].edges = 2; }},
      {ORBEL_BAD_SETTING, "mix is 101", [](auto& s, auto&, auto&) { s.mix = 101; }},
      {ORBEL_BAD_SETTING, "reference_edge is -1", [](auto& s, auto&, auto&) { s.reference_edge = -1; }},
      {ORBEL_BAD_PICTURE, "source: width", [](auto&, auto& p, auto&) { p.width = 0; }},
      {ORBEL_BAD_PICTURE, "source: width", [](auto&, auto& p, auto&) { p.width = 1 << 30; }},
      {ORBEL_BAD_PICTURE, "source: channels", [](auto&, auto& p, auto&) { p.channels = 5; }},
      {ORBEL_BAD_PICTURE, "source: base[2]", [](auto&, auto& p, auto&) { p.base[2] = nullptr; }},
      {ORBEL_BAD_PICTURE, "target: it begins",
       [](auto&, auto& p, auto& q) {
         q.base[2] = p.base[2];
         q.samples = ORBEL_FLOAT32;
       }},
      {ORBEL_BAD_PICTURE, "target: its size", [](auto&, auto&, auto& p) { p.height = 29; }},
      {ORBEL_BAD_PICTURE, "target: its channels", [](auto&, auto&, auto& p) { p.channels = 1; }},
      {ORBEL_TOO_LARGE, "bands[1].radius is 9000", [](auto& s, auto&, auto&) { s.bands[1].radius = 9000; }},
  };
  for (const Case& c : cases) {
    orbel_settings settings = defaults();
    const Owned target(source);
    orbel_picture from = source.picture;
    orbel_picture to = target.picture;
    c.bend(settings, from, to);
    EXPECT_EQ(orbel_equalize(&settings, &from, &to, &options), c.status) << c.says;
    EXPECT_EQ(std::string(message).rfind(c.says, 0), 0U) << message;
    EXPECT_EQ(target.samples, source.samples);
  }
  struct Reduction {
    orbel_status status;
    const char* says;
    int width, height, column, row;
    void (*bend)(const orbel_picture& from, orbel_picture& to);
  };
  const Reduction reductions[] = {
      {ORBEL_BAD_ARGUMENT, "width is 0; it must be 1 to 40", 0, 30, 0, 0, [](auto&, auto&) {}},
      {ORBEL_BAD_ARGUMENT, "height is 31; it must be 1 to 30", 40, 31, 0, 0, [](auto&, auto&) {}},
      {ORBEL_BAD_PICTURE, "target: it reaches beyond", 40, 30, -1, 0, [](auto&, auto&) {}},
      {ORBEL_BAD_PICTURE, "target: it reaches beyond", 40, 30, 0, INT32_MAX, [](auto&, auto&) {}},
      {ORBEL_BAD_PICTURE, "target: it reaches beyond", 39, 30, 0, 0, [](auto&, auto&) {}},
      {ORBEL_BAD_PICTURE, "target: its channels", 40, 30, 0, 0, [](auto&, auto& p) { p.channels = 1; }},
      {ORBEL_BAD_PICTURE, "target: base[0]", 40, 30, 0, 0, [](auto&, auto& p) { p.base[0] = nullptr; }},
      {ORBEL_BAD_PICTURE, "target: it begins", 40, 30, 0, 0, [](auto& p, auto& q) { q.base[2] = p.base[2]; }},
  };
  for (const Reduction& r : reductions) {
    const Owned target(source);
    orbel_picture to = target.picture;
    r.bend(source.picture, to);
    EXPECT_EQ(orbel_reduce(&source.picture, r.width, r.height, r.column, r.row, &to, &options), r.status) << r.says;
    EXPECT_EQ(std::string(message).rfind(r.says, 0), 0U) << message;
  }
  orbel_settings settings = defaults();
  EXPECT_EQ(orbel_equalize(&settings, &source.picture, nullptr, &options), ORBEL_BAD_ARGUMENT);
  EXPECT_EQ(orbel_settings_init(&settings, 8), ORBEL_BAD_ARGUMENT);
  EXPECT_EQ(orbel_settings_set(&settings, "CON6", 1), ORBEL_BAD_ARGUMENT);
  EXPECT_EQ(orbel_settings_set(&settings, "WDTH", 1.5), ORBEL_BAD_SETTING);
  EXPECT_EQ(orbel_settings_check(&settings, message, 4), ORBEL_OK);
}

// Radius 3 reaches 12 samples: a Gaussian of 2 * 25 taps on 10 x 3 pixels, then squares of 625 taps on 5 x 2, 3 x 1,
// 2 x 1 and 1 x 1.
TEST(FrontDoor, PlansWhatARunDoes) {
  const Owned source(ORBEL_UINT8, 10, 3, 3);
  orbel_plan plan;
  orbel_plan_init(&plan, sizeof plan);
  orbel_settings settings = defaults();
  ASSERT_EQ(orbel_plan_run(&settings, &source.picture, nullptr, &plan), ORBEL_OK);
  const double taps[] = {1500, 6250, 1875, 1250, 625};
  for (int i = 0; i < ORBEL_BANDS; ++i) EXPECT_EQ(plan.levels[i].taps, taps[i]);
  EXPECT_EQ(plan.taps, 11500);
  EXPECT_EQ(plan.levels[1].window, 12);
  EXPECT_EQ(plan.refused_band, ORBEL_BANDS);
  settings.luminance = 0;
  settings.bands[2].radius = 9000;
  ASSERT_EQ(orbel_plan_run(&settings, &source.picture, nullptr, &plan), ORBEL_TOO_LARGE);
  EXPECT_EQ(plan.refused_band, 2);
  // 65535 - 3 samples, half of them on either side, four times the radius.
  EXPECT_EQ(plan.largest_radius, 8191.5);
  settings.bands[2].radius = plan.largest_radius;
  EXPECT_EQ(orbel_plan_run(&settings, &source.picture, nullptr, &plan), ORBEL_OK);
}

}  // namespace
