// module_speed MODULE [ROUNDS [WIDTH HEIGHT]]: how long a module takes for a picture, without the time of its host, and
// the fastest and the middle of the rounds. A program of its own, since it runs on Windows too: bench/side_by_side.sh.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "host/script_keys.h"
#include "host/test_host.h"
#include "support/loaded_module.h"

PluginMainProc linkedEntry() { return nullptr; }

namespace {

using Clock = std::chrono::steady_clock;

Clock::duration hostTime;
OSErr (*hostAdvance)() = nullptr;

OSErr timedAdvance() {
  const auto start = Clock::now();
  const OSErr code = hostAdvance();
  hostTime += Clock::now() - start;
  return code;
}

// Of Start, in seconds. Negative when it failed.
double run(PluginMainProc entry, int width, int height) {
  TestHost host(width, height, 3, 16, entry);
  host.fillWithPattern(1);
  Script script;
  for (int band = 0; band < 5; ++band) script.push_back({scriptKeys[band].code, typeFloat, 130});
  host.play(script);
  hostAdvance = host.record.advanceState;
  host.record.advanceState = timedAdvance;
  hostTime = {};
  host.call(filterSelectorPrepare);
  const auto start = Clock::now();
  const std::int16_t result = host.call(filterSelectorStart);
  const std::chrono::duration<double> seconds = Clock::now() - start - hostTime;
  return result == noErr ? seconds.count() : -1;
}

}  // namespace

int main(int count, char** arguments) try {
  if (count < 2 || count == 4 || count > 5) {
    std::fprintf(stderr, "usage: module_speed MODULE [ROUNDS [WIDTH HEIGHT]]\n");
    return 2;
  }
  const int rounds = count > 2 ? std::atoi(arguments[2]) : 3;
  const int width = count > 3 ? std::atoi(arguments[3]) : 6000;
  const int height = count > 3 ? std::atoi(arguments[4]) : 4000;
  const LoadedModule module(arguments[1]);
  std::vector<double> seconds;
  for (int i = 0; i < rounds; ++i) {
    seconds.push_back(run(module.procedure<PluginMainProc>("PluginMain"), width, height));
    if (seconds.back() < 0) throw std::runtime_error("the run failed");
  }
  if (seconds.empty()) throw std::runtime_error("no rounds");
  std::sort(seconds.begin(), seconds.end());
  std::printf("%d x %d, 16 bits: fastest %.3f s, middle %.3f s of %d\n", width, height, seconds.front(),
              seconds[seconds.size() / 2], rounds);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "module_speed: %s\n", error.what());
  return 1;
}
