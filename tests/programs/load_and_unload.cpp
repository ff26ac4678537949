// load_and_unload MODULE: a host without threads, OpenMP or the library loads the module, runs it and unloads it, time
// and again. Fails when a thread outlives a run, when the module stays loaded, or when a run fails or changes its mind.
#include <cstdio>
#include <string>
#include <vector>

#include "host/test_host.h"
#include "support/loaded_module.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>

#include <atomic>
#endif

// There is no linked entry here: every host is given the loaded one.
PluginMainProc linkedEntry() { return nullptr; }

#if !defined(_WIN32)
namespace {
std::atomic<int> detached{0};
}

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

// The Windows module has it linked in.
bool hasOpenMp() {
#if defined(_WIN32)
  return false;
#else
  bool found = false;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        const std::string name = info->dlpi_name;
        for (const char* part : {"libgomp", "libomp"}) {
          if (name.find(part) != std::string::npos) *static_cast<bool*>(data) = true;
        }
        return 0;
      },
      &found);
  return found;
#endif
}

bool isAlone(int threads) { return threadCountOnceSettled(threads) == threads; }

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) {
    std::fprintf(stderr, "usage: load_and_unload MODULE\n");
    return 2;
  }
  demand(!hasOpenMp(), "OpenMP is here before the module", 0);
  const int threads = threadCount();
  std::vector<std::vector<unsigned char>> first;
  for (int round = 1; round <= 10 && !failed; ++round) {
    {
      const LoadedModule module(arguments[1]);
      demand(isAlone(threads), "loading started a thread", round);
      for (int run = 0; run < 2; ++run) {
        TestHost host(96, 64, 3, 16, module.procedure<PluginMainProc>("PluginMain"));
        host.fillWithPattern(1);
        host.play({{fourCharacters("RAD1"), typeFloat, 10}});  // a Gaussian with threads of its own
        const auto before = host.planes;
        demand(host.run() == 0, "the run failed", round);
        demand(isAlone(threads), "a thread outlived the run", round);
#if !defined(_WIN32)
        demand(detached == 0, "the run left a thread that nobody waits for", round);
#endif
        host.checkFences();
        demand(host.violations.empty(), "the run broke the interface", round);
        demand(host.planes != before, "the run changed nothing", round);
        if (first.empty()) first = host.planes;
        demand(host.planes == first, "another picture than before", round);
      }
    }
    demand(!LoadedModule::isLoaded(arguments[1]), "the module is still loaded", round);
    demand(isAlone(threads), "a thread outlived the module", round);
  }
  return failed ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "load_and_unload: %s\n", error.what());
  return 1;
}
