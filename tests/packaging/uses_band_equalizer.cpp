// Doubles the finest band of a bright spot through the installed library; ends with 0 when the spot came out brighter
// and the flat parts as they were.
#include <equalizer/band_equalizer.h>
#include <host/ps_database.h>
#include <image/kiv_image.h>

int main() {
  KivImage image(64, 64, 3);
  for (int plane = 0; plane < 3; ++plane) {
    for (int y = 0; y < 64; ++y) {
      auto* const row = reinterpret_cast<float*>(reinterpret_cast<char*>(image.planes[plane]) + y * image.stride);
      for (int x = 0; x < 64; ++x) row[x] = x == 32 && y == 32 ? 0.5F : 0.25F;
    }
  }
  OrbelBandEqualizerGuiParams params{};
  for (int band = 0; band < 5; ++band) {
    params.contrast[band] = band == 0 ? 200.0F : 100.0F;
    params.radius[band] = 3.0F;
  }
  params.factor = 100.0F;
  params.lumi = 1;
  PS_Database exchange{};
  OrbelBandEqualizer(exchange, params, image);
  const auto sample = [&](int x, int y) {
    return *reinterpret_cast<float*>(reinterpret_cast<char*>(image.planes[1]) + y * image.stride + 4 * x);
  };
  const bool flat = sample(0, 0) > 0.2499F && sample(0, 0) < 0.2501F;
  return flat && sample(32, 32) > 0.7F ? 0 : 1;
}
