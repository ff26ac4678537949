// The front door while each call for memory is refused in turn, by itself and with all that follow.
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "api/orbel.h"

namespace {

std::atomic<int> asked{INT_MIN};  // below 0 until the first that is refused
std::atomic<int> refused{0};

}  // namespace

void* operator new(std::size_t bytes) {
  const int index = asked == INT_MIN ? INT_MIN : asked.fetch_add(1);
  void* const block = index >= 0 && index < refused ? nullptr : std::malloc(bytes);
  return block != nullptr ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

TEST(FrontDoor, LeavesTheTargetAloneWithoutMemory) {
  orbel_settings settings;
  orbel_settings_init(&settings, sizeof settings);
  settings.luminance = 0;
  settings.mix = 50;
  const std::vector<unsigned char> untouched(60 * 40 * 3, 99);
  // Blocks that are refused in a row; a reference edge below the picture's, above it, and none.
  for (const auto& [inARow, edge] : {std::pair{1, 0}, {INT_MAX, 0}, {1, 45}, {1, 70}}) {
    settings.reference_edge = edge;
    bool isEnough = false;
    for (int first = 0; !isEnough; ++first) {
      std::vector<unsigned char> samples = untouched;
      for (std::size_t i = 0; i < samples.size(); i += 2) samples[i] = 11;
      std::vector<unsigned char> result = untouched;
      orbel_picture source;
      orbel_picture target;
      orbel_picture_interleaved(&source, sizeof source, ORBEL_UINT8, 60, 40, 3, samples.data(), 180);
      orbel_picture_interleaved(&target, sizeof target, ORBEL_UINT8, 60, 40, 3, result.data(), 180);
      orbel_stack* stack = nullptr;
      refused = inARow;
      asked = -first;
      // An exception that leaves these calls ends the test.
      const orbel_status status = orbel_equalize(&settings, &source, &target, nullptr);
      isEnough = asked <= 0;
      asked = -first;
      orbel_stack_create(&settings, &source, nullptr, &stack);
      asked = INT_MIN;
      orbel_stack_free(stack);
      EXPECT_TRUE(status == ORBEL_OK || (status == ORBEL_NO_MEMORY && result == untouched)) << "block " << first;
    }
  }
}

}  // namespace
