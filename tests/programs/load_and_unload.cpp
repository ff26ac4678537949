// load_and_unload MODULE: a host without threads or the library loads the module, runs it and unloads it, time
// and again. Fails when a thread outlives a run, when the module stays loaded, or when a run fails or changes its mind.
#include <cstdio>
#include <string>
#include <vector>

#include "host/test_host.h"
#include "support/loaded_module.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#endif

// There is no linked entry here: every host is given the loaded one.
PluginMainProc linkedEntry() { return nullptr; }

#if defined(_WIN32)  // nothing detaches
static constexpr int detached = 0;
#else
static std::atomic<int> detached{0};

// In place of the C library's. Nobody can wait for a detached thread: it may still run when its code is unloaded.
extern "C" int pthread_detach(pthread_t thread) noexcept {
  ++detached;
  return reinterpret_cast<int (*)(pthread_t)>(dlsym(RTLD_NEXT, "pthread_detach"))(thread);
}
#endif

namespace {

bool failed = false;

void demand(bool holds, const char* what, int round) {
  if (holds) return;
  std::fprintf(stderr, "load_and_unload: round %d: %s\n", round, what);
  failed = true;
}

bool isAlone(int threads) { return threadCountOnceSettled(threads) == threads; }

// One that a host's fault ends early has started its threads, too.
void run(PluginMainProc entry, bool isCancelled, int threads, int round) {
  static std::vector<std::vector<unsigned char>> first;
  TestHost host(96, 64, 3, 16, entry);
  host.fillWithPattern(1);
  host.play({{fourCharacters("RAD1"), typeFloat, 10}});  // a Gaussian with threads of its own
  host.bufferFault = isCancelled ? &bufferFaults[0] : nullptr;
  host.bufferFaultAt = 2;
  const auto before = host.planes;
  demand((host.run() == 0) != isCancelled, "the run's code", round);
  demand(isAlone(threads), "a thread outlived the run", round);
  demand(detached == 0, "the run left a thread that nobody waits for", round);
  demand(host.allViolations().empty(), "the run broke the interface", round);
  demand((host.planes == before) == isCancelled, "the run's picture", round);
  if (isCancelled) return;
  if (first.empty()) first = host.planes;
  demand(host.planes == first, "another picture than before", round);
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) {
    std::fprintf(stderr, "usage: load_and_unload MODULE\n");
    return 2;
  }
  const int threads = threadCount();
  for (int round = 1; round <= 10 && !failed; ++round) {
    {
      const LoadedModule module(arguments[1]);
      const auto entry = module.procedure<PluginMainProc>("PluginMain");
      demand(isAlone(threads), "loading started a thread", round);
      run(entry, false, threads, round);
      run(entry, round % 2 == 0, threads, round);
    }
    demand(!LoadedModule::isLoaded(arguments[1]), "the module is still loaded", round);
    demand(isAlone(threads), "a thread outlived the module", round);
  }
  return failed ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "load_and_unload: %s\n", error.what());
  return 1;
}
