// orbel:band-equalizer in GEGL's own graphs: the samples that the front door gives, whatever the picture is stored as,
// and nothing worse than an unchanged picture, whatever it is set to.
#include <gegl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "api/orbel.h"

namespace {

using Samples = std::vector<float>;

template <typename T>
struct Unref {
  void operator()(T* object) const { g_object_unref(object); }
};
using Buffer = std::unique_ptr<GeglBuffer, Unref<GeglBuffer>>;

int channelsOf(const Babl* format) { return babl_format_get_n_components(format); }

Buffer pictureOf(const Babl* format, const GeglRectangle& extent, unsigned seed) {
  Buffer buffer(gegl_buffer_new(&extent, format));
  std::mt19937 random(seed);
  std::vector<unsigned char> bytes;
  const Babl* const type = babl_format_get_type(format, 0);
  for (int i = 0; i < extent.width * extent.height * channelsOf(format); ++i) {
    const auto step = static_cast<std::size_t>(i) / 40 % 3 * 15000 + random() % 20000;
    const auto append = [&](const auto& sample) {
      const auto* const raw = reinterpret_cast<const unsigned char*>(&sample);
      bytes.insert(bytes.end(), raw, raw + sizeof sample);
    };
    if (type == babl_type("u8")) append(static_cast<guint8>(step >> 8));
    if (type == babl_type("u16")) append(static_cast<guint16>(step));
    if (type == babl_type("float")) append(static_cast<float>(step) / 50000 - 0.1F);
  }
  gegl_buffer_set(buffer.get(), &extent, 0, format, bytes.data(), GEGL_AUTO_ROWSTRIDE);
  return buffer;
}

Samples samplesOf(GeglBuffer* buffer, const GeglRectangle& area, const Babl* format) {
  Samples samples(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) *
                  static_cast<std::size_t>(channelsOf(format)));
  gegl_buffer_get(buffer, &area, 1, format, samples.data(), GEGL_AUTO_ROWSTRIDE, GEGL_ABYSS_NONE);
  return samples;
}

// A source and the operation after it.
class Graph {
 public:
  explicit Graph(GeglBuffer* input) : source_(child("gegl:buffer-source")) {
    gegl_node_set(source_, "buffer", input, nullptr);
    gegl_node_connect_to(source_, "output", equalizer_, "input");
  }
  explicit Graph(const char* endless) : source_(child(endless)) {
    gegl_node_connect_to(source_, "output", equalizer_, "input");
  }
  ~Graph() { g_object_unref(graph_); }
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  void input(GeglBuffer* other) { gegl_node_set(source_, "buffer", other, nullptr); }
  void set(const orbel_settings& settings) {
    for (int i = 0; i < ORBEL_BANDS; ++i) {
      const std::string band = "-" + std::to_string(i + 1);
      gegl_node_set(equalizer_, ("gain" + band).c_str(), settings.bands[i].gain, nullptr);
      gegl_node_set(equalizer_, ("radius" + band).c_str(), settings.bands[i].radius, nullptr);
      gegl_node_set(equalizer_, ("threshold" + band).c_str(), settings.bands[i].threshold, nullptr);
      gegl_node_set(equalizer_, ("edges" + band).c_str(), settings.bands[i].edges, nullptr);
    }
    gegl_node_set(equalizer_, "residual", settings.residual, "mix", settings.mix, "half", settings.half, "luminance",
                  settings.luminance, "reference-edge", settings.reference_edge, "form", settings.form, "limit",
                  settings.limit, nullptr);
  }
  template <typename Value>
  void set(const char* property, Value value) {
    gegl_node_set(equalizer_, property, value, nullptr);
  }
  Samples result(const GeglRectangle& area, const Babl* format) { return blit(equalizer_, area, format); }
  Samples original(const GeglRectangle& area, const Babl* format) { return blit(source_, area, format); }

 private:
  GeglNode* child(const char* operation) { return gegl_node_new_child(graph_, "operation", operation, nullptr); }
  static Samples blit(GeglNode* node, const GeglRectangle& area, const Babl* format) {
    Samples samples(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) *
                    static_cast<std::size_t>(channelsOf(format)));
    gegl_node_blit(node, 1, &area, format, samples.data(), GEGL_AUTO_ROWSTRIDE, GEGL_BLIT_DEFAULT);
    return samples;
  }

  GeglNode* graph_ = gegl_node_new();
  GeglNode* equalizer_ = child("orbel:band-equalizer");
  GeglNode* source_;
};

Samples equalized(const orbel_settings& settings, orbel_samples type, const void* pixels, const GeglRectangle& area,
                  int channels) {
  const int bytes = type == ORBEL_UINT8 ? 1 : type == ORBEL_UINT16 ? 2 : 4;
  Samples result(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) *
                 static_cast<std::size_t>(channels));
  orbel_picture source;
  orbel_picture target;
  orbel_picture_interleaved(&source, sizeof source, type, area.width, area.height, channels, const_cast<void*>(pixels),
                            static_cast<std::ptrdiff_t>(area.width) * channels * bytes);
  orbel_picture_interleaved(&target, sizeof target, ORBEL_FLOAT32, area.width, area.height, channels, result.data(),
                            static_cast<std::ptrdiff_t>(area.width) * channels * 4);
  EXPECT_EQ(orbel_equalize(&settings, &source, &target, nullptr), ORBEL_OK);
  return result;
}

// Raised bands in each form, with a reference edge and without.
std::vector<orbel_settings> manySettings() {
  std::vector<orbel_settings> all;
  for (const int form : {ORBEL_PYRAMID, ORBEL_WAVELETS}) {
    for (const int edge : {0, 100}) {
      orbel_settings settings;
      orbel_settings_init(&settings, sizeof settings);
      for (int i = 0; i < ORBEL_BANDS; ++i) settings.bands[i].gain = 80 + 40 * i;
      settings.form = form;
      settings.reference_edge = edge;
      settings.limit = edge != 0;
      settings.luminance = form == ORBEL_WAVELETS;
      settings.mix = 90;
      all.push_back(settings);
    }
  }
  return all;
}

bool same(const Samples& a, const Samples& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

TEST(Gegl, GivesTheFrontDoorsSamples) {
  struct Case {
    const char* format;
    const char* space;   // null: sRGB
    const char* worked;  // what the engine is handed
    orbel_samples type;
    GeglRectangle extent;
  };
  const Case cases[] = {
      {"R'G'B' u8", nullptr, "R'G'B' u8", ORBEL_UINT8, {0, 0, 131, 277}},
      {"R'G'B'A u8", "Adobish", "R'G'B'A u8", ORBEL_UINT8, {-7, 12, 140, 65}},
      {"Y' u8", nullptr, "Y' u8", ORBEL_UINT8, {3, -129, 33, 300}},
      {"Y'A u8", nullptr, "Y'A u8", ORBEL_UINT8, {0, 0, 50, 40}},
      {"R'G'B' u16", nullptr, "R'G'B' u16", ORBEL_UINT16, {5, 5, 71, 130}},
      {"R'G'B'A u16", "ProPhoto", "R'G'B'A u16", ORBEL_UINT16, {0, 0, 64, 64}},
      {"Y'A u16", nullptr, "Y'A u16", ORBEL_UINT16, {0, 0, 1, 1}},
      {"R'G'B' float", "Rec2020", "R'G'B' float", ORBEL_FLOAT32, {-300, -200, 90, 141}},
      {"R'G'B'A float", nullptr, "R'G'B'A float", ORBEL_FLOAT32, {0, 0, 2, 3}},
      {"Y' float", nullptr, "Y' float", ORBEL_FLOAT32, {0, 0, 300, 1}},
      {"RGB float", "Adobish", "R'G'B' float", ORBEL_FLOAT32, {0, 0, 60, 70}},
      {"RGB u16", nullptr, "R'G'B' float", ORBEL_FLOAT32, {0, 0, 60, 70}},
      {"RaGaBaA float", nullptr, "R'G'B'A float", ORBEL_FLOAT32, {0, 0, 60, 70}},
      {"Y u8", nullptr, "Y' float", ORBEL_FLOAT32, {0, 0, 60, 70}},
      {"R'G'B' u8", nullptr, "R'G'B' u8", ORBEL_UINT8, {0, 0, 1, 1}},
  };
  for (const Case& each : cases) {
    const Babl* const space = each.space != nullptr ? babl_space(each.space) : nullptr;
    const Babl* const worked = babl_format_with_space(each.worked, space);
    const int channels = channelsOf(worked);
    const char* const results[] = {"Y' float", "Y'A float", "R'G'B' float", "R'G'B'A float"};
    const Babl* const result = babl_format_with_space(results[channels - 1], space);
    const Buffer picture = pictureOf(babl_format_with_space(each.format, space), each.extent, 1);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(each.extent.width * each.extent.height) *
                                      static_cast<std::size_t>(babl_format_get_bytes_per_pixel(worked)));
    gegl_buffer_get(picture.get(), &each.extent, 1, worked, pixels.data(), GEGL_AUTO_ROWSTRIDE, GEGL_ABYSS_NONE);
    for (const orbel_settings& settings : manySettings()) {
      Graph graph(picture.get());
      graph.set(settings);
      EXPECT_TRUE(
          same(graph.result(each.extent, result), equalized(settings, each.type, pixels.data(), each.extent, channels)))
          << each.format << ", form " << settings.form << ", reference edge " << settings.reference_edge;
    }
  }
}

TEST(Gegl, TakesWhatIsAskedOfAPlaneWithoutEnd) {
  const Babl* const format = babl_format("R'G'B'A float");
  const GeglRectangle area = {-5, 7, 95, 61};
  Graph graph("gegl:checkerboard");
  const orbel_settings settings = manySettings().back();
  graph.set(settings);
  const Samples board = graph.original(area, format);
  EXPECT_TRUE(same(graph.result(area, format), equalized(settings, ORBEL_FLOAT32, board.data(), area, 4)));
}

TEST(Gegl, PartsAreThoseOfTheWhole) {
  const Babl* const format = babl_format("R'G'B' float");
  const GeglRectangle extent = {10, 20, 300, 290};
  const GeglRectangle part = {150, 170, 31, 140};
  const Buffer picture = pictureOf(babl_format("R'G'B' u8"), extent, 2);
  Graph whole(picture.get());
  Graph other(picture.get());
  whole.set("gain-4", 250.0);
  other.set("gain-4", 250.0);
  const Samples all = whole.result(extent, format);
  Samples cut;
  for (int y = 0; y < part.height; ++y) {
    const auto first = all.begin() + 3 * ((y + part.y - extent.y) * extent.width + part.x - extent.x);
    cut.insert(cut.end(), first, first + 3 * part.width);
  }
  EXPECT_TRUE(same(other.result(part, format), cut));
}

// What is kept of the picture before must never show in the next.
TEST(Gegl, ForgetsNothingAndKeepsNothingStale) {
  const Babl* const format = babl_format("R'G'B' float");
  const GeglRectangle extent = {0, 0, 160, 150};
  const GeglRectangle smaller = {0, 0, 150, 160};
  const Buffer picture = pictureOf(babl_format("R'G'B' u8"), extent, 3);
  const Buffer another = pictureOf(babl_format("R'G'B' u8"), smaller, 3);
  Graph kept(picture.get());
  kept.set(manySettings()[3]);
  const auto agrees = [&](GeglBuffer* input, const GeglRectangle& area, const char* property, double value) {
    Graph fresh(input);
    fresh.set(manySettings()[3]);
    kept.set(property, value);
    fresh.set(property, value);
    const bool good = same(kept.result(area, format), fresh.result(area, format));
    kept.set(manySettings()[3]);
    return good;
  };
  EXPECT_TRUE(agrees(picture.get(), extent, "gain-2", 300));
  EXPECT_TRUE(agrees(picture.get(), extent, "radius-3", 9));
  EXPECT_TRUE(agrees(picture.get(), extent, "threshold-2", 100));
  const GeglRectangle dot = {77, 140, 1, 1};
  const guint8 sample[] = {255, 0, 255};
  gegl_buffer_set(picture.get(), &dot, 0, babl_format("R'G'B' u8"), sample, GEGL_AUTO_ROWSTRIDE);
  EXPECT_TRUE(agrees(picture.get(), extent, "gain-3", 200));
  kept.input(another.get());
  EXPECT_TRUE(agrees(another.get(), smaller, "gain-1", 0));
}

TEST(Gegl, TakesAnySettings) {
  const Babl* const format = babl_format("R'G'B'A float");
  std::mt19937 random(4);
  const double odd[] = {
      0, 0.01, -1, 32767, 32768, 1e9, -1e9, 255, 256, std::numeric_limits<double>::infinity(), 100, std::nan(""), 3};
  const auto anything = [&] {
    return random() % 3 == 0 ? odd[random() % std::size(odd)] : static_cast<double>(random() % 4000) / 10;
  };
  g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, gpointer) {}, nullptr);  // values out of range
  for (unsigned run = 0; run < 200; ++run) {
    const GeglRectangle extent = {0, 0, 1 + static_cast<int>(random() % 70), 1 + static_cast<int>(random() % 70)};
    const Buffer picture = pictureOf(babl_format("R'G'B'A u8"), extent, run);
    Graph graph(picture.get());
    for (const char* const band : {"1", "2", "3", "4", "5"}) {
      graph.set((std::string("gain-") + band).c_str(), anything());
      graph.set((std::string("radius-") + band).c_str(), random() % 2 == 0 ? 3.0 : std::min(anything(), 30.0));
      graph.set((std::string("threshold-") + band).c_str(), anything());
      graph.set((std::string("edges-") + band).c_str(), static_cast<gboolean>(random() % 2));
    }
    graph.set("residual", anything());
    graph.set("mix", anything());
    graph.set("reference-edge", static_cast<int>(random() % 4) * 200 - 200);
    graph.set("form", static_cast<int>(random() % 4) - 1);
    for (const char* const flag : {"luminance", "half", "limit", "protect-edges"}) {
      graph.set(flag, static_cast<gboolean>(random() % 2));
    }
    const Samples before = samplesOf(picture.get(), extent, format);
    const Samples after = graph.result(extent, format);
    for (std::size_t i = 3; i < after.size(); i += 4) ASSERT_NEAR(after[i], before[i], 1e-6) << "alpha, run " << run;
    for (const float sample : after) ASSERT_TRUE(std::isfinite(sample)) << "run " << run;
  }
  g_log_set_default_handler(g_log_default_handler, nullptr);
}

}  // namespace

int main(int count, char** words) {
  g_setenv("GEGL_PATH", ORBEL_GEGL_PATH, TRUE);
  testing::InitGoogleTest(&count, words);
  gegl_init(nullptr, nullptr);
  if (!gegl_has_operation("orbel:band-equalizer")) return 1;
  return RUN_ALL_TESTS();
}
