#include "equalizer/band_decomposition.h"

#include <cmath>
#include <cstring>
#include <vector>

#include "equalizer/reference_equalizer.h"
#include "support/images.h"

namespace {

void equalize(KivImage& image, BandSettings s) {
  EqualizeIT(image, image, s.gains, s.radii, s.thresholds, s.edges, levelCount, s.baseGain);
}

KivImage equalized(int width, int height, unsigned seed, const BandSettings& s) {
  KivImage image = randomImage(width, height, 1, seed);
  equalize(image, s);
  return image;
}

BandSettings strongSettings() {
  return {{1.5F, 0.0F, 2.0F, -1.0F, 1.2F},
          {3.0F, 2.1F, 0.7F, 1.0F, 5.0F},
          {1, 0.04F, 0.04F, 0.04F, 0.04F},
          {false, true, false, true, true},
          0.8F};
}

TEST(EqualizeIT, EqualsTheStepsAtEverySize) {
  std::vector<IppiSize> sizes = {{1, 1}, {257, 130}, {301, 200}};
  // A first band of 128 reduced rows ends within the reach of the first Gaussian from the edge, which is 12 rows.
  for (int height = 256; height <= 270; ++height) sizes.push_back({33, height});
  for (int n = 1; n <= 40; ++n) sizes.insert(sizes.end(), {{n, 41 - n}, {n, 50}, {50, n}});
  for (const IppiSize size : sizes) {
    KivImage expected = randomImage(size.width, size.height, 1, 1);
    referenceEqualize(expected, strongSettings());
    ASSERT_TRUE(sameBits(equalized(size.width, size.height, 1, strongSettings()), expected));
  }
}

// What level 1 does with values that are none, or that mean the same as others.
struct Alike {
  const char* name;
  void (*bend)(BandSettings& s);
  void (*like)(BandSettings& s);
};

// The low-pass is the level image itself, as a Gaussian far below a sample's size has it.
void passOn(BandSettings& s) {
  s.edges[1] = false;
  s.radii[1] = 1e-3F;  // all other taps are 0
}
void noEdges(BandSettings& s) { s.edges[1] = false; }
void nothing(BandSettings&) {}

const Alike alikes[] = {
    {"edge byte 2", [](BandSettings& s) { std::memset(&s.edges[1], 2, 1); }, noEdges},
    {"threshold below 0", [](BandSettings& s) { s.thresholds[1] *= -1; }, nothing},
    {"radius 0", [](BandSettings& s) { s.edges[1] = false, s.radii[1] = 0; }, passOn},
    {"radius below 0", [](BandSettings& s) { s.edges[1] = false, s.radii[1] = -3; }, passOn},
    {"radius NaN", [](BandSettings& s) { s.edges[1] = false, s.radii[1] = NAN; }, passOn},
    {"radius 0 with edges", [](BandSettings& s) { s.radii[1] = 0; }, passOn},
    {"threshold 0", [](BandSettings& s) { s.thresholds[1] = 0; }, passOn},
    {"threshold NaN", [](BandSettings& s) { s.thresholds[1] = NAN; }, passOn},
    {"tiny radius", [](BandSettings& s) { s.radii[1] = 1e-25F; }, passOn},
    {"tiny threshold", [](BandSettings& s) { s.thresholds[1] = 1e-25F; }, passOn},
    // the rule comes before the size
    {"endless radius", [](BandSettings& s) { s.thresholds[1] = 0, s.radii[1] = INFINITY; }, passOn}};

TEST(EqualizeIT, GivesTheSameBitsForLevelsThatMeanTheSame) {
  for (const Alike& alike : alikes) {
    BandSettings bent = strongSettings();
    BandSettings like = strongSettings();
    alike.bend(bent);
    alike.like(like);
    EXPECT_TRUE(sameBits(equalized(77, 66, 1, bent), equalized(77, 66, 1, like))) << alike.name;
  }
}

struct Impossible {
  const char* name;
  bool edge;
  float radius;
  IppiSize size = {77, 66};
};

TEST(EqualizeIT, ThrowsBeforeAnyWorkOnAnImpossibleLevel) {
  const Impossible levels[] = {{"window beyond 16 bits", true, 16385},
                               {"block beyond 16 bits", true, 8191.5F},
                               // of a level 4096 samples high
                               {"block too high", true, 7680, {2, 65533}},
                               {"endless window", true, INFINITY},
                               {"endless Gaussian", false, INFINITY},
                               {"kernel beyond 32 bits", false, 4e8F},
                               {"buffer beyond 32 bits", false, 1e8F}};
  for (const auto& [name, edge, radius, size] : levels) {
    SCOPED_TRACE(name);
    BandSettings s;
    s.edges[4] = edge;
    s.radii[4] = radius;
    KivImage image = randomImage(size.width, size.height, 1, 1);
    EXPECT_THROW(equalize(image, s), NO_MEMORY_ERROR);
    EXPECT_TRUE(!edge || sameBits(image, randomImage(size.width, size.height, 1, 1)));
  }
}

}  // namespace
