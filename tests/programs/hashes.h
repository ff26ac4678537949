// For programs that write digests of random runs, so that builds for two processors can be compared: the same numbers
// at random everywhere, and a digest that counts all samples that are no numbers as one, since their sign and payload
// aren't held.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

// xorshift, Marsaglia 2003.
inline std::uint32_t bits() {
  static std::uint32_t state = 1;
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

inline std::int32_t below(std::int32_t end) { return std::int32_t(bits() % std::uint32_t(end)); }
inline bool chance(std::int32_t percent) { return below(100) < percent; }

// What is no colour, now and then.
inline float orSpecial(float number) {
  constexpr float odd[] = {NAN, INFINITY, -INFINITY, 1e30F, -1e30F, 1e-40F, -0.0F};
  return chance(1) ? odd[below(7)] : number;
}

// FNV-1a, 64 bits.
class Digest {
 public:
  void add(const void* data, std::size_t bytes) {
    const auto* at = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < bytes; ++i) value_ = (value_ ^ at[i]) * 0x100000001B3;
  }
  void addFloats(const void* data, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; i += sizeof(float)) {
      float sample = 0;
      std::memcpy(&sample, static_cast<const unsigned char*>(data) + i, sizeof sample);
      std::uint32_t number = 0xFFFFFFFF;
      if (!std::isnan(sample)) std::memcpy(&number, &sample, sizeof number);
      add(&number, sizeof number);
    }
  }
  unsigned long long value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};
