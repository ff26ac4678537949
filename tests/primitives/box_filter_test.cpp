#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "primitives/neighbourhood.h"

namespace {

using Source = std::function<float(int x, int y)>;

struct Box {
  IppiSize mask;
  unsigned border;
  float value;

  int left() const { return (mask.width - 1) / 2; }
  int top() const { return (mask.height - 1) / 2; }
  int right() const { return mask.width - 1 - left(); }
  int bottom() const { return mask.height - 1 - top(); }
};

Source extended(const Plane<float>& src, const Box& box) {
  return [&src, box](int x, int y) {
    const Position column = continued(x, src.width(), box.border, 64, box.left(), box.right());
    const Position row = continued(y, src.height(), box.border, 16, box.top(), box.bottom());
    return column.isConstant || row.isConstant ? box.value : src.at(column.n, row.n);
  };
}

// The sums of one row, in the order that defines them.
std::vector<float> rowSums(const std::vector<float>& s, int width, int mask) {
  const auto at = [&](int x) { return s[static_cast<std::size_t>(x)]; };
  const auto pair = [&](int x) { return at(x) + at(x + 1); };
  const auto four = [&](int x) { return pair(x) + pair(x + 2); };
  std::vector<float> h;
  for (int x = 0; x < width; ++x) {
    float sum = 0.0F;
    if (mask == 1) {
      sum = at(x);
    } else if (mask == 3) {
      sum = pair(x) + at(x + 2);
    } else if (mask == 5) {
      sum = ((pair(x) + at(x + 2)) + at(x + 3)) + at(x + 4);
    } else if (mask == 7) {
      sum = ((((pair(x) + at(x + 2)) + at(x + 3)) + at(x + 4)) + at(x + 5)) + at(x + 6);
    } else if (x >= 4) {
      sum = (h[static_cast<std::size_t>(x - 4)] - four(x - 4)) + four(x - 4 + mask);
    } else if (mask % 4 == 2) {
      sum = pair(x);
      for (int i = 2; i < mask; i += 2) sum = sum + pair(x + i);
    } else {
      sum = four(x);
      const int whole = mask / 4 * 4;
      for (int i = 4; i < whole; i += 4) sum = sum + four(x + i);
      if (mask % 4 == 1) sum = sum + at(x + whole);
      if (mask % 4 == 3) sum = sum + (pair(x + whole) + at(x + whole + 2));
    }
    h.push_back(sum);
  }
  return h;
}

// One part of the region: sums start anew.
void filterPart(const Source& source, Plane<float>& dst, const Box& box, int x0, int y0, int width, int height) {
  if (width < 1 || height < 1) return;
  const int m = box.mask.height;
  const float inverse = 1.0F / (static_cast<float>(box.mask.width) * static_cast<float>(m));
  std::vector<std::vector<float>> h;
  for (int y = y0 - box.top(); y < y0 + height + box.bottom(); ++y) {
    std::vector<float> row;
    for (int x = x0 - box.left(); x < x0 + width + box.right(); ++x) row.push_back(source(x, y));
    h.push_back(rowSums(row, width, box.mask.width));
  }
  for (int x = 0; x < width; ++x) {
    const auto sum = [&](int r) { return h[static_cast<std::size_t>(r)][static_cast<std::size_t>(x)]; };
    float accumulator = sum(0);
    for (int r = 1; r < m - 1; ++r) accumulator = accumulator + sum(r);
    for (int y = 0; y < height; ++y) {
      const float total = m == 1 ? sum(y) : accumulator + sum(y + m - 1);
      dst.at(x0 + x, y0 + y) = total * inverse;
      accumulator = total - sum(y);
    }
  }
}

Plane<float> expected(const Plane<float>& src, Plane<float> dst, const Box& box) {
  const int w = src.width();
  const int h = src.height();
  const Source source = extended(src, box);
  if (box.mask.width == 1 && box.mask.height == 1) {
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) dst.at(x, y) = src.at(x, y);
    }
  } else if (box.border == ippBorderInMem || w <= box.mask.width || h <= box.mask.height) {
    filterPart(source, dst, box, 0, 0, w, h);
  } else {
    const int left = (box.border & 64) != 0 ? 0 : box.left();
    const int right = (box.border & 128) != 0 ? 0 : box.right();
    const int top = (box.border & 16) != 0 ? 0 : box.top();
    const int bottom = (box.border & 32) != 0 ? 0 : box.bottom();
    filterPart(source, dst, box, left, top, w - left - right, h - top - bottom);
    filterPart(source, dst, box, 0, 0, w, top);
    filterPart(source, dst, box, 0, h - bottom, w, bottom);
    filterPart(source, dst, box, 0, top, left, h - top - bottom);
    filterPart(source, dst, box, w - right, top, right, h - top - bottom);
  }
  return dst;
}

FencedMemory bufferFor(const Plane<float>& src, const Box& box) {
  int size = 0;
  EXPECT_EQ(ippiFilterBoxBorderGetBufferSize(src.size(), box.mask, ipp32f, 1, &size), ippStsNoErr);
  return FencedMemory(size, static_cast<std::size_t>(src.width() % 5));
}

IppStatus filter(const float* src, int srcStep, Plane<float>& dst, const Box& box, const FencedMemory& buffer) {
  const float* const value = (box.border & 15) == ippBorderConst ? &box.value : nullptr;
  return ippiFilterBoxBorder_32f_C1R(src, srcStep, dst.first(), dst.step(), dst.size(), box.mask, box.border, value,
                                     buffer.get());
}

// Separate and in place, on every row of bodies.
void expectTheFormula(const Plane<float>& src, const Box& box) {
  const Plane<float> target(src.width(), src.height(), src.margin(), 2);
  const Plane<float> separate = expected(src, target, box);
  const Plane<float> inPlace = expected(src, src, box);
  onEachRow([&] {
    const FencedMemory buffer = bufferFor(src, box);
    Plane<float> dst = target;
    EXPECT_EQ(filter(src.first(), src.step(), dst, box, buffer), ippStsNoErr);
    EXPECT_TRUE(sameBits(dst, separate));
    Plane<float> both = src;
    EXPECT_EQ(filter(both.first(), both.step(), both, box, buffer), ippStsNoErr);
    EXPECT_TRUE(sameBits(both, inPlace)) << "in place";
  });
}

constexpr unsigned borders[] = {1, 3, 6, 17, 33, 49, 65, 129, 193, 19, 35, 67, 131, 22, 38, 54, 70, 134, 115, 240, 243};

void expectTheFormula(IppiSize size, IppiSize mask, unsigned border, std::mt19937& random) {
  SCOPED_TRACE(testing::Message() << mask.width << " x " << mask.height << ", border " << border);
  const int margin = std::max({mask.width, mask.height, 4});
  Plane<float> src(size.width, size.height, margin, static_cast<unsigned>(random()));
  // Residues that stay in the sums after it, and samples that no sum is right after.
  constexpr float special[] = {0.5F, 1e8F, -0.0F, 1e-42F, INFINITY, NAN};
  src.at(size.width / 4, size.height / 4) = special[random() % std::size(special)];
  expectTheFormula(src, {mask, border, 0.75F});
}

TEST(BoxFilter, HasTheBitsOfTheGivenSumsOnEveryRowOfBodies) {
  std::mt19937 random(5);
  const auto upTo = [&random](unsigned highest) { return static_cast<int>(random() % highest) + 1; };
  for (int width = 1; width <= 40; ++width) {
    for (int mask = 1; mask <= 13 && !HasFailure(); ++mask) {
      expectTheFormula({width, upTo(40)}, {mask, upTo(13)}, borders[random() % std::size(borders)], random);
    }
  }
  constexpr IppiSize masks[] = {{2, 2}, {4, 4}, {3, 3}, {1, 5}, {6, 1}, {12, 9}, {25, 30}, {41, 2}, {2, 41}};
  constexpr IppiSize sizes[] = {{67, 35}, {26, 31}, {3, 3}, {1, 50}, {50, 1}};
  for (const unsigned border : borders) {
    for (const IppiSize mask : masks) {
      for (const IppiSize size : sizes) {
        if (!HasFailure()) expectTheFormula(size, mask, border, random);
      }
    }
  }
}

TEST(BoxFilter, RefusesInTheGivenOrder) {
  constexpr int most = std::numeric_limits<int>::max();
  int size = 77;
  const auto query = ippiFilterBoxBorderGetBufferSize;
  EXPECT_EQ(query({0, 1}, {0, 0}, 2, 2, nullptr), -8);
  EXPECT_EQ(query({0, 1}, {0, 0}, 2, 2, &size), -6);
  EXPECT_EQ(query({1, -1}, {0, 0}, 2, 2, &size), -6);
  EXPECT_EQ(query({1, 1}, {0, 1}, 2, 2, &size), -33);
  EXPECT_EQ(query({1, 1}, {1, 0}, 2, 2, &size), -33);
  EXPECT_EQ(query({1, 1}, {1, 1}, 2, 2, &size), -59);
  EXPECT_EQ(query({most, most}, {1, 1}, 13, 2, &size), -53);
  for (const int side : {1, 5, 100000, most}) {
    EXPECT_EQ(query({most, most}, {side, side}, 13, 1, &size), -232);
    EXPECT_EQ(query({side, 1}, {most, most}, 13, 4, &size), -232);
  }
  EXPECT_EQ(query({20000, 20000}, {15000, 15000}, 13, 1, &size), -232);
  EXPECT_EQ(size, 77);
  for (const int type : {1, 5, 7, 13}) {
    for (const int channels : {1, 3, 4}) EXPECT_EQ(query({9, 9}, {3, 3}, type, channels, &size), 0);
  }

  const float one = 1.0F;
  float dst = 77.0F;
  unsigned char buffer[1];
  const auto run = ippiFilterBoxBorder_32f_C1R;
  EXPECT_EQ(run(nullptr, 0, &dst, 0, {0, 0}, {0, 0}, 0, nullptr, buffer), -8);
  EXPECT_EQ(run(&one, 0, nullptr, 0, {0, 0}, {0, 0}, 0, nullptr, buffer), -8);
  EXPECT_EQ(run(&one, 0, &dst, 0, {0, 0}, {0, 0}, 0, nullptr, nullptr), -8);
  EXPECT_EQ(run(&one, 0, &dst, 4, {0, 0}, {0, 0}, 0, nullptr, buffer), -16);
  EXPECT_EQ(run(&one, 4, &dst, 0, {0, 0}, {0, 0}, 0, nullptr, buffer), -16);
  EXPECT_EQ(run(&one, 4, &dst, 4, {1, 0}, {0, 0}, 0, nullptr, buffer), -6);
  EXPECT_EQ(run(&one, 4, &dst, 4, {1, 1}, {1, 0}, 0, nullptr, buffer), -33);
  for (const unsigned border : {0U, 2U, 7U, 242U, 256U, 257U, 0x80000001U}) {
    EXPECT_EQ(run(&one, 4, &dst, 4, {1, 1}, {1, 1}, border, nullptr, buffer), -225) << border;
  }
  EXPECT_EQ(run(&one, 4, &dst, 4, {1, 1}, {1, 1}, 6, nullptr, buffer), -8);
  EXPECT_EQ(dst, 77.0F);
}

}  // namespace
